#!/usr/bin/env bash
# Capture in the Wayland test session (run inside scripts/wayland-session.sh): on Wayland itself
# zelmor's full-screen pictures are grim's (a region's: check-hotkeys.sh); through Xwayland,
# where the desktop shows an X11 client nothing but black, and on a compositor without a screen
# copy protocol (weston), zelmor and zelmor-mcp report why and write no picture and no history
# row.
#   tests/wayland/check-capture.sh BIN_DIR
set -euo pipefail
bin=$1
. "$(dirname "$0")/session-lib.sh"
[ -n "${WAYLAND_DISPLAY:-}" ] || fail "no Wayland session"

# The history as the tool server lists it, and a tool call's answer, in one session.
mcp() {
  printf '%s\n' \
    '{"jsonrpc":"2.0","id":1,"method":"initialize","params":{"protocolVersion":"2025-06-18","capabilities":{},"clientInfo":{"name":"check","version":"1"}}}' \
    '{"jsonrpc":"2.0","method":"notifications/initialized"}' \
    "{\"jsonrpc\":\"2.0\",\"id\":2,\"method\":\"tools/call\",\"params\":{\"name\":\"$1\",\"arguments\":{}}}" |
    timeout 60 "$bin/zelmor-mcp" 2>/dev/null | grep '"id":2'
}

# A capture that cannot see the screen: the log and the tool's answer say why (`reason`), and
# neither a picture nor a history row is left.
capture_fails() {
  local where=$1 reason=$2
  fresh_home
  "$bin/zelmor" --capture-fullscreen >/dev/null 2>&1 &
  local pid=$!
  await grep -q '\[capture\]' "$log" || true
  stop_zelmor "$pid"
  grep -q "\[capture\] failed: .*$reason" "$log" ||
    { echo "not ok - zelmor $where did not say why it cannot capture:" >&2; tail -3 "$log" >&2; exit 1; }
  [ -z "$(pictures)" ] || fail "zelmor $where saved $(pictures)"
  mcp list_history | grep -q '\\"items\\":\[\]' || fail "zelmor $where left a history row"
  echo "ok - zelmor --capture-fullscreen $where says why and saves nothing"

  fresh_home
  local answer
  answer=$(mcp capture_fullscreen)
  grep -q '"isError":true' <<<"$answer" && grep -q "$reason" <<<"$answer" ||
    fail "capture_fullscreen $where answered: $answer"
  [ -z "$(pictures)" ] || fail "capture_fullscreen $where saved $(pictures)"
  mcp list_history | grep -q '\\"items\\":\[\]' || fail "capture_fullscreen $where left a history row"
  echo "ok - zelmor-mcp capture_fullscreen $where says why and saves nothing"
}

native_capture_is_grims() {
  local layout=$1
  fresh_home
  QT_QPA_PLATFORM=wayland "$bin/zelmor" --capture-fullscreen >/dev/null 2>&1 &
  local pid=$! shot=
  await saved || true
  QT_QPA_PLATFORM=wayland stop_zelmor "$pid"
  [ -n "$shot" ] || { echo "not ok - zelmor on Wayland ($layout) saved no picture:" >&2; tail -3 "$log" >&2; exit 1; }
  shot_is_grims || fail "zelmor on Wayland ($layout) saved another picture than grim's"
  echo "ok - zelmor --capture-fullscreen on Wayland ($layout) saves grim's picture"

  # The tool server as a console client may start it: no X server nor session type known.
  fresh_home
  (unset DISPLAY XDG_SESSION_TYPE QT_QPA_PLATFORM && mcp capture_fullscreen >/dev/null)
  shot=$(pictures | head -1)
  [ -n "$shot" ] && [ "$(pixels "$shot")" = "$(pixels "$reference")" ] ||
    fail "zelmor-mcp capture_fullscreen on Wayland ($layout) did not save grim's picture"
  echo "ok - zelmor-mcp capture_fullscreen on Wayland without an X server ($layout) saves grim's picture"
  rm -f "$reference"
}

show_photograph
native_capture_is_grims "one output"
swaymsg -q output HEADLESS-1 scale 2
show_photograph
native_capture_is_grims "one output at scale 2"
swaymsg -q output HEADLESS-1 scale 1
# A smaller second output to the right leaves a band below it that no output shows.
swaymsg -q create_output
swaymsg -q output HEADLESS-2 resolution 1280x720 position 1920 0
show_photograph
native_capture_is_grims "two outputs"
QT_QPA_PLATFORM=xcb capture_fails "through Xwayland" Xwayland

weston --backend=headless-backend.so --socket=wayland-weston --idle-time=0 >/dev/null 2>&1 &
weston=$!
trap 'kill $weston 2>/dev/null' EXIT
await test -S "$XDG_RUNTIME_DIR/wayland-weston" || true
WAYLAND_DISPLAY=wayland-weston QT_QPA_PLATFORM=wayland capture_fails "on weston" wlr-screencopy
