#!/usr/bin/env bash
# Installs the .deb with apt-get into a fresh minimal Debian 12 (debootstrap, as root, with
# network access to the Debian mirror) and has the installed zelmor take a full-screen capture
# on a private Xvfb. Usage: scripts/check-clean-install.sh path/to/zelmor_*.deb
set -euo pipefail
deb=$(realpath "$1")
[ "$(id -u)" = 0 ] || { echo "run as root" >&2; exit 2; }
command -v debootstrap >/dev/null || apt-get install -y -q debootstrap
root=$(mktemp -d /tmp/zelmor-clean.XXXXXX)
xvfb=
zelmor=
cleanup() {
  for pid in $zelmor $xvfb; do kill "$pid" 2>/dev/null || true; done
  sleep 1
  for m in tmp/.X11-unix dev proc; do umount "$root/$m" 2>/dev/null || true; done
  rm -rf --one-file-system "$root" "$root.log"
}
trap cleanup EXIT

debootstrap --variant=minbase bookworm "$root" http://deb.debian.org/debian >"$root.log" 2>&1
mount -t proc proc "$root/proc"
mount --bind /dev "$root/dev"
mkdir -p "$root/tmp/.X11-unix"
mount --bind /tmp/.X11-unix "$root/tmp/.X11-unix"
cp /etc/resolv.conf "$root/etc/resolv.conf"
cp "$deb" "$root/root/"
chroot "$root" apt-get update -q >/dev/null
chroot "$root" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q "/root/$(basename "$deb")" |
  grep -E 'newly installed|Setting up zelmor'

display=:$((90 + RANDOM % 100))
Xvfb "$display" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
sleep 2
chroot "$root" env DISPLAY="$display" HOME=/root timeout 20 /usr/bin/zelmor --capture-fullscreen \
  >/dev/null 2>&1 &
zelmor=$!
for _ in $(seq 150); do
  shot=$(find "$root/root/Pictures/Zelmor" -name '*.png' 2>/dev/null | head -1 || true)
  [ -n "$shot" ] && break
  sleep 0.1
done
[ -n "$shot" ] || { echo "no capture written" >&2; exit 1; }
echo "the installed zelmor wrote $(basename "$shot")"
