#!/usr/bin/env bash
# Hotkeys on sway, which binds them itself (run inside scripts/wayland-session.sh): F6 bound to
# the region switch opens the running Zelmor's overlay; a drag and Return save and copy grim's
# picture of the region.
#   tests/wayland/check-hotkeys.sh BIN_DIR DRAG_HELPER SETTINGS_CHECK
set -euo pipefail
bin=$1 press=$2 settings=$3
. "$(dirname "$0")/session-lib.sh"

QT_QPA_PLATFORM=wayland "$settings" -silent >&2 || fail "the hotkey settings on sway"
echo "ok - Zelmor on sway claims no key, and sway takes the lines its settings give"

show_photograph
fresh_home
swaymsg -q "bindsym --no-repeat F6 exec $bin/zelmor --capture-region"
QT_QPA_PLATFORM=wayland "$bin/zelmor" >/dev/null 2>&1 &
pid=$!
await grep -q 'entering event loop' "$log" || true
wtype -k F6
drag_region_and_save
# Return copied it too: another Wayland program pastes it while Zelmor runs.
wl-paste --type image/png >"$HOME/pasted.png" 2>&1 || true
QT_QPA_PLATFORM=wayland stop_zelmor "$pid"
shot_is_grims "300,200 401x201" ||
  fail "F6 bound in sway, a drag and Return did not save grim's picture of the region"
echo "ok - F6 bound in sway runs the running Zelmor's region capture; a drag and Return save grim's picture"
[ "$(pixels "$HOME/pasted.png")" = "$(pixels "$reference")" ] ||
  fail "the region copied on Wayland does not paste as grim's picture"
echo "ok - the region copied on Wayland pastes into another Wayland program"
