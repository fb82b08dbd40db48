# Sourced by ./test and ./run: installs what a bare Debian 12 lacks, through apt, as root or by sudo.

tidewell_packages=(
  build-essential ca-certificates ccache clang cmake lld ninja-build pkg-config
  qt6-base-dev qt6-svg-dev libqt6svg6 libqt6sql6-sqlite qt6-qpa-plugins
  zlib1g-dev libsodium-dev libsqlite3-dev libabsl-dev libgtest-dev libgmock-dev libbenchmark-dev
  libminiupnpc-dev miniupnpd-nftables
  fonts-dejavu-core famfamfam-flag-png)

install_dependencies() {
  local missing=() package as_root=() installed
  # One question for all of them: each costs a walk through dpkg's whole list. Unknown packages make it fail.
  installed=$(dpkg-query -W -f '\n${db:Status-Status} ${Package}\n' "${tidewell_packages[@]}" 2>/dev/null) || true
  for package in "${tidewell_packages[@]}"; do
    [[ $installed$'\n' == *$'\n'"installed $package"$'\n'* ]] || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  echo "Installing: ${missing[*]}"
  "${as_root[@]}" apt-get update -q
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
}
