#!/usr/bin/env bash
# Installs every Debian package that building, testing and running Orvantis needs.
# Idempotent: packages already present are left as they are.
#   scripts/install-deps.sh             to build, test and run
#   scripts/install-deps.sh --package   also what scripts/package.sh needs to build the .deb
set -euo pipefail

packages=(
  # toolchain
  build-essential cmake ninja-build pkg-config git
  # core libraries
  libicu-dev nlohmann-json3-dev libplist-dev libcld2-dev libssl-dev libsystemd-dev libcurl4-openssl-dev
  libaspell-dev libgumbo-dev
  # word lists for the language of short selections (each optional at run time)
  aspell-en aspell-de aspell-fr aspell-es aspell-ru aspell-uk
  # loaded at run time with dlopen (at the first translation, the first digest, the first
  # language detection, the first HTML transform):
  # a package of the program must name them, as no linker dependency shows them
  libcurl4 libssl3 libcld2-0 libaspell15 libgumbo1
  # the feedback mail: xdg-email for the mail client, xdg-open for a mailto: link
  xdg-utils
  # tests and benchmarks
  libgtest-dev libgmock-dev libbenchmark-dev
  # user interface
  qt6-base-dev qt6-qpa-plugins libqt6svg6 qt6-svg-dev fonts-dejavu-core
  # desktop backends
  libx11-dev libx11-xcb-dev libxi-dev libxtst-dev libxfixes-dev libxkbfile-dev
  libxkbcommon-dev libxkbcommon-x11-dev libxkbregistry-dev libatspi2.0-dev at-spi2-core
  # the virtual desktop of the end-to-end tests and of the headless run
  xvfb xauth x11-xkb-utils x11-utils x11-apps xdotool xclip xterm trayer imagemagick xbindkeys zenity openbox python3
  dbus-daemon dbus-bin procps
  # gdbus: the end-to-end tests read windows from the accessibility bus with it
  libglib2.0-bin
  # checks of the installed files: menu entry, metadata, manual page, completions
  desktop-file-utils appstream man-db groff-base bsdextrautils file bash-completion zsh
)
if [[ ${1:-} == --package ]]; then
  packages+=(debhelper dpkg-dev lintian)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done

if ((${#missing[@]})); then
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo apt-get update -qq
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
