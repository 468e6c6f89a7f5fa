#!/bin/bash
# Fetches PythonQt from Debian, makes it work with Python 2.7 and installs it outside of this source tree.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source-path=SCRIPTDIR source=../../tools/lib/common.sh
. "$here/../../tools/lib/common.sh"
# shellcheck source-path=SCRIPTDIR source=../../tools/lib/apt.sh
. "$here/../../tools/lib/apt.sh"
# shellcheck source-path=SCRIPTDIR source=../../tools/lib/recipe.sh
. "$here/../../tools/lib/recipe.sh"

name=PythonQt
version=4.1.0
archive=pythonqt_$version.orig.tar.gz
archive_sha256=e2792f558e93c0cee313271f1b070d061eb5fe03df074a863c318487320cb133
source_package=pythonqt
suites=(unstable testing) # when unstable has moved on, testing may still have this version
source_variable=OX_PYTHONQT_SOURCE

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

inputs() {
  sha256sum build.sh CMakeLists.txt PythonQtPython2.h python2.patch runtime-classes.patch connections.patch virtual-bases.patch \
    run-tests
  printf '%s\n' "${PYTHONQT_CXXFLAGS:-}"
  dpkg-query -W -f '${Package} ${Version}\n' qtbase5-dev libpython2.7-dev 2>/dev/null || qmake -query QT_VERSION
}

build() {
  apply_patch python2.patch
  apply_patch runtime-classes.patch
  apply_patch connections.patch
  apply_patch virtual-bases.patch
  configure -DCMAKE_CXX_FLAGS="${PYTHONQT_CXXFLAGS:-}" -DPYTHONQT_SOURCE="$build/source"
  compile
  install_and_test
}

recipe "$@"
