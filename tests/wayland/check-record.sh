#!/usr/bin/env bash
# The overlay, pins and recording with zelmor on Wayland itself (run inside
# scripts/wayland-session.sh), on two outputs at scale 2.
#   tests/wayland/check-record.sh BIN_DIR DRAG_HELPER
set -euo pipefail
bin=$1 drag=$2
. "$(dirname "$0")/session-lib.sh"
fail() { echo "not ok - $*" >&2; exit 1; }
wait_for() { for _ in $(seq 200); do "$@" && return 0; sleep 0.05; done; return 1; }
export QT_QPA_PLATFORM=wayland
zelmor() { "$bin/zelmor" "$@" >/dev/null 2>&1; }
shown() { [ "$(grim -t ppm -o "$1" - | md5sum)" != "$2" ]; }

swaymsg -q create_output
swaymsg -q output HEADLESS-1 scale 2, output HEADLESS-2 resolution 1280x720 position 960 0 scale 2
show_photograph
fresh_home
desk1=$(grim -t ppm -o HEADLESS-1 - | md5sum) desk2=$(grim -t ppm -o HEADLESS-2 - | md5sum)
trap "zelmor --quit" EXIT
zelmor --capture-region &
wait_for shown HEADLESS-1 "$desk1" && wait_for shown HEADLESS-2 "$desk2" ||
  fail "the overlay does not cover both outputs"
wtype -s 300 -k Escape
wait_for eval '! shown HEADLESS-1 "$desk1" && ! shown HEADLESS-2 "$desk2"' ||
  fail "Escape on the overlay left an output covered"
echo "ok - the overlay covers each output, and Escape ends it on all"
