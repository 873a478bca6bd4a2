#!/usr/bin/env bash
# Pins, recording and scroll capture with Zelmor on Wayland itself (run inside
# scripts/wayland-session.sh), then the overlay on two outputs at scale 2.
#   tests/wayland/check-record.sh BIN_DIR RECORD_CHECK
set -euo pipefail
bin=$1 record=$2
. "$(dirname "$0")/session-lib.sh"
fail() { echo "not ok - $*" >&2; exit 1; }
wait_for() { for _ in $(seq 200); do "$@" && return 0; sleep 0.05; done; return 1; }
export QT_QPA_PLATFORM=wayland
zelmor() { "$bin/zelmor" "$@" >/dev/null 2>&1; }
shown() { [ "$(grim -t ppm -o "$1" - | md5sum)" != "$2" ]; }

show_photograph
"$record" -silent >&2 || fail "pins, recording and scroll capture on sway"
echo "ok - on sway a pin shows on top, a GIF's frames and a stitched page are grim's pictures"

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

# sway tells no window's place: window capture asks for it on the overlay.
zelmor --capture-window
wait_for eval 'swaymsg -t get_tree | grep -q "\"name\": \"Zelmor capture\""' ||
  fail "window capture without window places opened no overlay"
echo "ok - window capture without window places asks for the window on the overlay"
