#!/usr/bin/env bash
# What tools/test --stress does once all is built: stress.sh PRESET N [ctest arguments]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/../.."

preset=$1 times=$2
shift 2
arguments=("$@")
logs=build/$preset/stress
locales=(C.UTF-8 C de_DE.ISO-8859-1)
run=0 runs='' failed_runs=0

rm -rf "$logs"
mkdir -p "$logs/locales"
localedef -i de_DE -f ISO-8859-1 "$logs/locales/de_DE.ISO-8859-1"
runtime_dir=$(mktemp -d) # not in the build tree, as a socket's path must be short

loops=()
trap 'kill "${loops[@]}" 2>/dev/null || true; rm -rf "$runtime_dir"' EXIT

# Ends with the script of that id even if that is killed in a way that no trap sees.
keep_busy() {
  local script=$1 i
  while kill -0 "$script" 2>/dev/null; do
    for ((i = 0; i < 100000; i++)); do :; done
  done
}

# run_tests VARIATION WHAT [ctest arguments]: runs ctest once, in one of six environments.
run_tests() {
  local variation=$1 what=$2 locale environment log
  shift 2
  locale=${locales[variation % 3]}
  environment=("LC_ALL=$locale" "LOCPATH=$PWD/$logs/locales" "XDG_RUNTIME_DIR=$runtime_dir")
  what+=", LC_ALL=$locale, XDG_RUNTIME_DIR set"
  if ((variation % 2)); then
    environment=(-u XDG_RUNTIME_DIR "${environment[@]:0:2}")
    what=${what%set}unset
  fi
  run=$((run + 1))
  log=$logs/$(printf '%05d' "$run").log
  printf '%d%s: %s: ' "$run" "${runs:+ of $runs}" "$what"
  printf '%s\n\n' "$what" >"$log"
  if env "${environment[@]}" \
    ctest --test-dir "build/$preset" --output-on-failure --no-tests=error -j 2 "${arguments[@]}" "$@" >>"$log" 2>&1; then
    printf 'passed\n'
  else
    printf 'FAILED, see %s\n' "$log"
    failed_runs=$((failed_runs + 1))
  fi
}

# The lines in which ctest tells how a test ended, such as "3/60 Test #12: uiTools ....   Passed    0.50 sec".
ended='^ *[0-9]+/[0-9]+ Test +#[0-9]+: '

# Prints the names of the tests that took less than five seconds in the first run, with "|" between them.
quick_tests() {
  awk -v ended="$ended" '$0 ~ ended && $(NF - 1) < 5 { printf "%s%s", separator, $4; separator = "|" }' "$logs/00001.log"
}

# Prints a line for each test.
summarize() {
  awk -v ended="$ended" '
    $0 ~ ended {
      runs[$4]++
      if (!/ Passed +[0-9.]+ sec$/) {
        failures[$4]++
        logs[$4] = logs[$4] " " FILENAME
      }
    }
    END {
      for (test in runs)
        printf "%s: %d runs, %d failed%s\n", test, runs[test], failures[test], logs[test]
    }' "$logs"/*.log | sort
}

run_tests 0 'all tests, without load'
if [[ ! $(summarize) ]]; then
  cat "$logs/00001.log" >&2
  exit 1
fi
quick=$(quick_tests)
repeats=0
if [[ $quick ]]; then repeats=20; fi
runs=$((1 + times + times * repeats))
for _ in 1 2 3 4; do
  keep_busy $$ &
  loops+=($!)
done
for ((i = 0; i < times; i++)); do
  run_tests "$i" 'all tests'
  for ((j = 0; j < repeats; j++)); do
    run_tests $((repeats * i + j)) 'quick tests' -R "^($quick)\$" # takes the place of an -R before it
  done
done

printf '\n'
summarize
printf '%d of %d runs failed\n' "$failed_runs" "$runs"
((failed_runs == 0))
