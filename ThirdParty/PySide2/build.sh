#!/bin/bash
# Fetches PySide2 from Debian, builds it for Python 2.7 and installs it outside of this source tree.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source-path=SCRIPTDIR source=../../tools/lib/common.sh
. "$here/../../tools/lib/common.sh"
# shellcheck source-path=SCRIPTDIR source=../../tools/lib/apt.sh
. "$here/../../tools/lib/apt.sh"
# shellcheck source-path=SCRIPTDIR source=../../tools/lib/recipe.sh
. "$here/../../tools/lib/recipe.sh"

name=PySide2
version=5.15.8
archive=pyside2_$version.orig.tar.xz
archive_sha256=23436302c8deb5b4cbc769b205d09604e38ba83b40708efccb7bd8c9af6f6b5d
source_package=pyside2
suites=(bookworm)
source_variable=OX_PYSIDE2_SOURCE

usage() {
  cat <<USAGE
usage: ThirdParty/PySide2/build.sh [--prefix]

Builds PySide2 $version for Python 2.7 and Qt 5, unless that is done already, and prints the folder it is installed in.

  --prefix   only print that folder

OX_DEPS_DIR        folder for built dependencies   [~/.cache/KernelServicesRemoteImpl]
OX_PYSIDE2_SOURCE  folder or archive with the sources, used instead of fetching them
CXX                the compiler                    [g++]
USAGE
}

inputs() {
  sha256sum build.sh CMakeLists.txt FindShiboken2.cmake UnityNames.h fixes.patch generate.in tests/*
  dpkg-query -W -f '${Package} ${Version}\n' qtbase5-dev libpython2.7-dev shiboken2 2>/dev/null || qmake -query QT_VERSION
}

build() {
  export LLVM_INSTALL_DIR=/usr/lib/llvm-14 # the generator would take the headers of any clang that it finds
  export PYTHONNOUSERSITE=1                # or numpy, if the user has it there, would become part of the result
  apply_patch fixes.patch
  configure -DPYSIDE2_SOURCE="$build/source"
  compile
  install_and_test
}

recipe "$@"
