#!/usr/bin/env bash
# The recording strip on Wayland (run inside scripts/wayland-session.sh): it stands at the top
# edge, above the recorded region and out of it, and its Stop button stops the recording.
#   tests/wayland/check-hud.sh BIN_DIR PRESS
set -euo pipefail
bin=$1 press=$2
. "$(dirname "$0")/session-lib.sh"
export QT_QPA_PLATFORM=wayland
region="600,500 501x301" top="760,12 400x38"
grab() { grim -g "$1" -t ppm - | md5sum; }

fresh_home
show_photograph
desk_region=$(grab "$region") desk_top=$(grab "$top")
"$bin/zelmor" >/dev/null 2>&1 &
zelmor=$!
trap 'stop_zelmor $zelmor' EXIT
await grep -q "entering event loop" "$log" || fail "zelmor did not start"
"$bin/zelmor" --record-gif
await eval 'swaymsg -t get_tree | grep -q "\"name\": \"Zelmor capture\""' || true
"$press" drag 600 500 1100 800
# The overlay's Start button, at the right end of the bar under the region.
"$press" drag 988 828 988 828
# The darkened overlay would pass for the strip.
await eval '! swaymsg -t get_tree | grep -q "\"name\": \"Zelmor capture\""' ||
  fail "the overlay stayed after Start"
await eval '[ "$(grab "$top")" != "$desk_top" ]' ||
  fail "no recording strip at the top edge"
[ "$(grab "$region")" = "$desk_region" ] || fail "the recording strip stands in the recorded region"
echo "ok - the recording strip stands at the top edge, out of the recorded region"

# Stop is the strip's second button.
"$press" drag 886 32 886 32
await eval 'swaymsg -t get_tree | grep -q "\"name\": \"GIF Frame Editor\""' ||
  fail "a click on the strip's Stop did not stop the recording"
echo "ok - a click on the strip's Stop stops the recording"
