# shellcheck shell=bash
# shellcheck disable=SC2154 # set by the recipe
# What the recipes in ThirdParty have in common; to be sourced after common.sh and apt.sh. A recipe sets
#
#   here             its folder
#   name, version    of what it builds
#   archive          the file with the sources, and archive_sha256
#   source_package   Debian's source package with that archive, and suites, the array of Debian's suites to ask for it
#   source_variable  the environment variable that may name a folder or archive to use instead
#
# and defines
#
#   usage            prints the help
#   inputs           prints everything that the result depends on, besides the sources and the compiler
#   build            makes the folder $build/prefix from the folder $build/source, telling the file $log
#
# and ends with: recipe "$@". Its result appears as the folder <name>-<version>-<key> only when it is complete.

key() {
  (
    set -e
    "$CXX" -dumpmachine
    "$CXX" --version | head -n 1
    printf '%s\n' "$version"
    cd "$here"
    inputs
    sha256sum <../../tools/lib/recipe.sh
    if [[ -d $source ]]; then
      cd "$source"
      find . -type f -print0 | sort -z | xargs -0 sha256sum
    fi
  ) | sha256sum | cut -c 1-12
}

fetch() {
  local apt=$build/apt suite debian
  debian=$(debian_archive) || fail "found no Debian archive in apt's sources; set $source_variable to $archive"
  say "fetching the sources of $name $version"
  for suite in "${suites[@]}"; do
    rm -rf "$apt"
    private_apt "$apt"
    # a mirror that is some days old will do: what counts is the SHA-256
    apt_options+=(-o Acquire::Check-Valid-Until=false)
    say "deb-src $debian $suite main" >"$apt/sources.list"
    if (cd "$build" && apt-get "${apt_options[@]}" update &&
      apt-get "${apt_options[@]}" source --download-only --tar-only "$source_package") </dev/null >>"$log" 2>&1 &&
      [[ -f $build/$archive ]]; then
      return 0
    fi
  done
  fail_with_log "$log" "could not fetch $archive: check the network, or set $source_variable to that file"
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
  tar -x -f "$tarball" -C "$build/source" --strip-components 1 >>"$log" 2>&1 ||
    fail_with_log "$log" "could not unpack $tarball; run tools/setup, which installs all that it needs"
}

# apply_patch FILE: changes the sources by a patch of the recipe.
apply_patch() {
  patch -d "$build/source" -p 1 --no-backup-if-mismatch <"$here/$1" >>"$log" 2>&1 ||
    fail_with_log "$log" "$1 does not fit these sources; use those of $name $version"
}

# configure ARGUMENT...: runs cmake on the recipe's folder.
configure() {
  cmake -S "$here" -B "$build/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="$CXX" "$@" \
    </dev/null >>"$log" 2>&1 ||
    fail_with_log "$log" "could not configure $name; run tools/setup, which installs all that it needs"
}

compile() {
  run_logged "building $name" "$log" ninja -C "$build/build" ||
    fail_with_log "$log" "could not build $name; run tools/setup, then try again"
}

# Fills the prefix and runs the tests that are installed with it.
install_and_test() {
  cmake --install "$build/build" --prefix "$build/prefix" >>"$log" 2>&1 ||
    fail_with_log "$log" "could not install $name; check the free space of $deps"
  say "running the tests of $name"
  "$build/prefix/tests/run-tests" </dev/null >>"$log" 2>&1 ||
    fail_with_log "$log" "$name was built, but does not pass its own tests; report the log"
}

# recipe OPTION...: the command itself.
recipe() {
  local started lower=${name,,}

  CXX=${CXX:-g++}
  source=${!source_variable:-}
  source=${source:+$(realpath -m "$source")}
  [[ -z $source || -e $source ]] || fail "$source_variable: there is no $source; correct or unset it"
  command -v "$CXX" >/dev/null || fail "there is no compiler $CXX; run tools/setup"

  deps=$(deps_dir)
  prefix=$deps/$lower-$version-$(key)
  log=$prefix.log

  case ${1:-} in
    '') ;;
    --prefix) say "$prefix"; exit ;;
    -h | --help) usage; exit ;;
    *) fail "unknown option $1; see $0 --help" ;;
  esac

  if [[ ! -d $prefix ]]; then
    mkdir -p "$deps" || fail "cannot write to $deps; set OX_DEPS_DIR to another folder"
    exec 9>"$deps/$lower.lock"
    if ! flock -n 9; then
      say "waiting for another build of $name"
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
    build
    chmod 755 "$build/prefix"
    mv -T "$build/prefix" "$prefix"
    say "$name is ready after $((SECONDS - started)) seconds"
  fi
  say "$prefix"
}
