#!/usr/bin/env bash
# The Screenshot portal's picture (inside scripts/wayland-session.sh): zelmor on weston, which
# offers no screen copy, captures through the portal of wlroots, which reads sway's screen; the
# picture saved is grim's of sway.
#   tests/wayland/check-portal.sh BIN_DIR
set -euo pipefail
bin=$1
. "$(dirname "$0")/session-lib.sh"
# The portal starts on demand with sway's display, and needs PipeWire for its screen casts.
dbus-update-activation-environment WAYLAND_DISPLAY XDG_CURRENT_DESKTOP XDG_SESSION_TYPE
pipewire >/dev/null 2>&1 &
wireplumber >/dev/null 2>&1 &
weston --backend=headless-backend.so --width=1920 --height=1080 --socket=wayland-weston \
  --idle-time=0 >/dev/null 2>&1 &
trap 'kill $(jobs -p) 2>/dev/null' EXIT
await test -S "$XDG_RUNTIME_DIR/wayland-weston"
show_photograph
fresh_home
WAYLAND_DISPLAY=wayland-weston QT_QPA_PLATFORM=wayland "$bin/zelmor" --capture-fullscreen \
  >/dev/null 2>&1 &
pid=$!
await saved || await saved || true
stop_zelmor $pid
reference=$(mktemp "${TMPDIR:-/tmp}/zelmor-grim.XXXXXX.png")
grim "$reference"
[ -n "$shot" ] && [ "$(pixels "$shot")" = "$(pixels "$reference")" ] ||
  { echo "not ok - zelmor through the Screenshot portal saved ${shot:-nothing}, not grim's picture" >&2; tail -3 "$log" >&2; exit 1; }
echo "ok - zelmor without screen copy saves the Screenshot portal's picture, grim's"
