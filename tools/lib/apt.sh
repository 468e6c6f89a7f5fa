# shellcheck shell=bash
# Use of Debian's archive through apt with a configuration of its own, so that the machine's stays as it is; to be sourced.

# Prints the archive that this machine installs Debian itself from, as the start of a line of a sources list:
# "[signed-by=...] address". The keyrings are those of the machine's entry and of debian-archive-keyring.
debian_archive() {
  local codename uris address file keyrings=''
  # shellcheck source=/dev/null
  codename=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")
  # apt knows all forms that an entry can have, and tells its addresses even before the first update
  uris=$(apt-get update --print-uris)
  address=$(sed -nE "s#^'(.*/)dists/($codename|stable|oldstable)/main/binary-.*#\1#p" <<<"$uris" | head -n 1)
  [[ -n $address ]] || return 1
  for file in $(grep -rlF "${address%/}" /etc/apt/sources.list /etc/apt/sources.list.d 2>/dev/null |
    xargs -r sed -nE 's/.*[Ss]igned-[Bb]y[:=][[:space:]]*(\/[^],[:space:]]+).*/\1/p' | head -n 1) \
    /usr/share/keyrings/debian-archive-keyring.gpg; do
    if [[ -e $file && ,$keyrings, != *,$file,* ]]; then keyrings=${keyrings:+$keyrings,}$file; fi
  done
  printf '%s%s\n' "${keyrings:+[signed-by=$keyrings] }" "$address"
}

# private_apt FOLDER: makes FOLDER the place for apt's lists, downloads, sources and pins, and sets the array apt_options.
private_apt() {
  mkdir -p "$1"/{lists,cache/archives}/partial "$1"/{sources,preferences}
  : >"$1/sources.list"
  : >"$1/preferences.conf"
  # shellcheck disable=SC2034 # for the caller
  apt_options=(
    -o APT::Sandbox::User=root # the folder may be closed to apt's own user
    -o Dir::Etc::sourcelist="$1/sources.list" -o Dir::Etc::sourceparts="$1/sources"
    -o Dir::Etc::preferences="$1/preferences.conf" -o Dir::Etc::preferencesparts="$1/preferences"
    -o Dir::State::lists="$1/lists" -o Dir::Cache="$1/cache"
  )
}
