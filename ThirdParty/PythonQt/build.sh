#!/bin/bash
# Fetches PythonQt from Debian, makes it work with Python 2.7 and installs it outside of this source tree.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source-path=SCRIPTDIR source=../../tools/lib/common.sh
. "$here/../../tools/lib/common.sh"
# shellcheck source-path=SCRIPTDIR source=../../tools/lib/apt.sh
. "$here/../../tools/lib/apt.sh"

version=4.1.0
archive=pythonqt_$version.orig.tar.gz
archive_sha256=e2792f558e93c0cee313271f1b070d061eb5fe03df074a863c318487320cb133

usage() {
  cat <<USAGE
usage: ThirdParty/PythonQt/build.sh [--prefix]

Builds PythonQt $version for Python 2.7 and Qt 5, unless that is done already, and prints the folder it is installed in.

  --prefix   only print that folder

OX_DEPS_DIR         folder for built dependencies   [~/.cache/KernelServicesRemoteImpl]
OX_PYTHONQT_SOURCE  folder or archive with the sources, used instead of fetching them
PYTHONQT_CXXFLAGS   more compiler options, for instance for a sanitizer; each set gets a folder of its own
CXX                 the compiler                    [g++]
USAGE
}

# Everything that the result depends on.
key() {
  (
    cd "$here"
    sha256sum build.sh CMakeLists.txt PythonQtPython2.h python2.patch run-tests
    "$CXX" -dumpmachine
    "$CXX" --version | head -n 1
    printf '%s\n' "$version" "${PYTHONQT_CXXFLAGS:-}"
    dpkg-query -W -f '${Package} ${Version}\n' qtbase5-dev libpython2.7-dev 2>/dev/null || qmake -query QT_VERSION
    if [[ -d $source ]]; then
      cd "$source"
      find . -type f -print0 | sort -z | xargs -0 sha256sum
    fi
  ) | sha256sum | cut -c 1-12
}

fetch() {
  local apt=$build/apt suite debian
  debian=$(debian_archive) || fail "found no Debian archive in apt's sources; set OX_PYTHONQT_SOURCE to $archive"
  say "fetching the sources of PythonQt $version"
  # unstable first; when it has moved on, testing may still have this version
  for suite in unstable testing; do
    rm -rf "$apt"
    private_apt "$apt"
    # a mirror that is some days old will do: what counts is the SHA-256
    apt_options+=(-o Acquire::Check-Valid-Until=false)
    say "deb-src $debian $suite main" >"$apt/sources.list"
    if (cd "$build" && apt-get "${apt_options[@]}" update &&
      apt-get "${apt_options[@]}" source --download-only --tar-only pythonqt) </dev/null >>"$log" 2>&1 &&
      [[ -f $build/$archive ]]; then
      return 0
    fi
  done
  fail_with_log "$log" "could not fetch $archive: check the network, or set OX_PYTHONQT_SOURCE to that file"
}

unpack() {
  local tarball=$build/$archive
  mkdir "$build/source"
  if [[ -d $source ]]; then
    cp -r "$source/." "$build/source"
    return
  fi
  if [[ -n $source ]]; then
    tarball=$source
  else
    fetch
  fi
  say "$archive_sha256  $tarball" | sha256sum --check --status ||
    fail "$tarball is not the $archive that this recipe is for; get the one with SHA-256 $archive_sha256"
  tar -x -f "$tarball" -C "$build/source" --strip-components 1
}

build() {
  cmake -S "$here" -B "$build/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$CXX" \
    -DCMAKE_CXX_FLAGS="${PYTHONQT_CXXFLAGS:-}" -DPYTHONQT_SOURCE="$build/source" </dev/null >>"$log" 2>&1 ||
    fail_with_log "$log" "could not configure PythonQt; run tools/setup, which installs all that it needs"
  run_logged "building PythonQt" "$log" ninja -C "$build/build" ||
    fail_with_log "$log" "could not build PythonQt; run tools/setup, then try again"
  cmake --install "$build/build" --prefix "$build/prefix" >>"$log" 2>&1 ||
    fail_with_log "$log" "could not install PythonQt; check the free space of $deps"
  say "running the tests of PythonQt"
  "$build/prefix/tests/run-tests" </dev/null >>"$log" 2>&1 ||
    fail_with_log "$log" "PythonQt was built, but does not pass its own tests; report the log"
}

CXX=${CXX:-g++}
source=${OX_PYTHONQT_SOURCE:-}
source=${source:+$(realpath -m "$source")}
[[ -z $source || -e $source ]] || fail "OX_PYTHONQT_SOURCE: there is no $source; correct or unset it"
command -v "$CXX" >/dev/null || fail "there is no compiler $CXX; run tools/setup"

deps=$(deps_dir)
prefix=$deps/pythonqt-$version-$(key)
log=$prefix.log

case ${1:-} in
  '') ;;
  --prefix) say "$prefix"; exit ;;
  -h | --help) usage; exit ;;
  *) fail "unknown option $1; see $0 --help" ;;
esac

if [[ ! -d $prefix ]]; then
  mkdir -p "$deps" || fail "cannot write to $deps; set OX_DEPS_DIR to another folder"
  exec 9>"$deps/pythonqt.lock"
  if ! flock -n 9; then
    say "waiting for another build of PythonQt"
    flock 9
  fi
fi
if [[ ! -d $prefix ]]; then
  rm -rf "$prefix".build.* # of a build that was killed
  build=$(mktemp -d "$prefix.build.XXXXXX")
  trap 'rm -rf "$build"' EXIT
  : >"$log"
  started=$SECONDS
  unpack
  patch -d "$build/source" -p 1 --no-backup-if-mismatch <"$here/python2.patch" >>"$log" 2>&1 ||
    fail_with_log "$log" "python2.patch does not fit these sources; use those of PythonQt $version"
  build
  chmod 755 "$build/prefix"
  mv -T "$build/prefix" "$prefix"
  say "PythonQt is ready after $((SECONDS - started)) seconds"
fi
say "$prefix"
