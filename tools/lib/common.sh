# shellcheck shell=bash
# Shell helpers for tools/setup and for the recipes in ThirdParty; to be sourced.

say() { printf '%s\n' "$*"; }

fail() {
  printf 'error: %s\n' "$*" >&2
  exit 1
}

# Where downloaded and built dependencies live; never inside the checkout.
deps_dir() { printf '%s\n' "${OX_DEPS_DIR:-${XDG_CACHE_HOME:-${HOME:?set HOME or OX_DEPS_DIR}/.cache}/KernelServicesRemoteImpl}"; }

# run_logged LABEL LOG COMMAND...: appends the command's output to the log and shows only how far it is.
run_logged() {
  local label=$1 log=$2
  shift 2
  "$@" </dev/null 2>&1 | show_progress "$label" "$log"
}

# Understands ninja's "[n/m]", and counts apt-get's steps: each package is fetched, unpacked and set up. A terminal gets
# one line that changes, anything else a line every ten percent.
# (apt-get's own APT::Status-Fd makes its output non-blocking, which breaks installation scripts that write to it.)
show_progress() {
  local label=$1 log=$2 line percent steps=0 all_steps=0 shown=-10
  while IFS= read -r line || [[ -n $line ]]; do
    printf '%s\n' "$line" >>"$log"
    if [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]]; then
      percent=$((100 * BASH_REMATCH[1] / BASH_REMATCH[2]))
    elif [[ $line =~ ^([0-9]+)\ upgraded,\ ([0-9]+)\ newly\ installed ]]; then
      all_steps=$((3 * (BASH_REMATCH[1] + BASH_REMATCH[2])))
      continue
    elif ((all_steps > 0)) && [[ $line =~ ^(Get:|Unpacking |Setting up ) ]]; then
      steps=$((steps + 1))
      percent=$((100 * steps / all_steps))
    else
      continue
    fi
    if [[ -t 1 ]]; then
      printf '\r%s: %d %% ' "$label" "$percent"
      shown=$percent
    elif ((percent >= shown + 10)); then
      say "$label: $percent %"
      shown=$percent
    fi
  done
  if [[ -t 1 ]] && ((shown >= 0)); then printf '\n'; fi
}

# fail_with_log LOG MESSAGE: the end of the log, then one line that says what to do.
fail_with_log() {
  tail -n 20 "$1" >&2
  fail "$2 (full log: $1)"
}
