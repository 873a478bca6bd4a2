#!/usr/bin/env bash
# Installs every Debian package that building, running and testing Zelmor need, or only
# the packages named: scripts/install-deps.sh [PACKAGE...]
# Safe to re-run: apt-get runs only when something is missing.
set -euo pipefail

packages=("$@")
[ $# -gt 0 ] || packages=(
  # build
  g++ make cmake ninja-build ccache pkg-config clang-format git
  clang libclang-rt-14-dev
  qt6-base-dev qt6-base-dev-tools qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools
  qt6-svg-dev libqt6svg6 libqt6sql6-sqlite libqt6concurrent6 qt6-translations-l10n libgl-dev
  libxcb1-dev libxcb-xtest0-dev libxcb-record0-dev libxcb-randr0-dev libxcb-xinput-dev
  libxcb-keysyms1-dev libxcb-shm0-dev libxcb-xfixes0-dev libxcb-xkb-dev libx11-dev libx11-xcb-dev
  libxkbcommon-dev libatspi2.0-dev
  # the Wayland backend: the client library and wayland-scanner for the protocol code
  libwayland-dev libwayland-bin wayland-protocols
  # the screen's stream from the desktop's ScreenCast portal (KDE, GNOME)
  libpipewire-0.3-dev
  # recorded frames are kept compressed with zstd
  libzstd-dev
  # local text recognition: the engine's header to build, the engine and its languages to run
  libtesseract-dev tesseract-ocr-eng tesseract-ocr-chi-sim
  # the .deb and the checks of its desktop entry and metadata
  dpkg-dev desktop-file-utils appstream
  # run and test
  fonts-dejavu-core fonts-liberation2 fonts-noto-cjk fonts-noto-color-emoji at-spi2-core dbus dbus-x11 xvfb xauth x11-utils openbox trayer
  xdotool xclip xdg-utils xcompmgr
  # the Wayland test session: headless sway with Xwayland, Qt's Wayland plugin, a reference grab
  sway swaybg xwayland grim wtype wl-clipboard wayland-utils qt6-wayland weston zenity
  # programs of other makers that the scroll capture is checked on: a pager and a GTK text view
  xterm less zenity
  # independent GIF readers for the encoder tests, and the benchmark's reference encoder
  gifsicle ffmpeg
  # a photograph for the scroll stitching tests
  python-matplotlib-data
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
"${sudo[@]}" apt-get update -q >&2
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends \
  "${missing[@]}" >&2
