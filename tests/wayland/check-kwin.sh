#!/usr/bin/env bash
# The desktop portals in the KWin test session (inside scripts/wayland-session.sh --kwin): the
# GlobalShortcuts portal binds zelmor's hotkeys, and F6 pressed on KWin runs the region
# capture; zelmor asks the Screenshot portal for no picture before a capture, and where the
# portal brings none (its dialog waits for a user here) the capture says why and saves nothing;
# a recording, which one picture at a time cannot feed, says so without asking the portal.
#   tests/wayland/check-kwin.sh BIN_DIR KEYS_HELPER
set -euo pipefail
bin=$1 press=$2
export QT_QPA_PLATFORM=wayland
log=$XDG_DATA_HOME/Zelmor/Zelmor/zelmor.log asked=$XDG_RUNTIME_DIR/screenshot-calls
fail() { echo "not ok - $*" >&2; tail -3 "$log" >&2; exit 1; }
wait_for() { for _ in $(seq "$1"); do eval "$2" && return; sleep 0.1; done; false; }

dbus-monitor --session "interface=org.freedesktop.portal.Screenshot" >"$asked" 2>&1 &
monitor=$!
"$bin/zelmor" >/dev/null 2>&1 &
zelmor=$!
trap '"$bin/zelmor" --quit >/dev/null 2>&1; kill $monitor; wait $zelmor' EXIT

# Plasma's shortcuts of zelmor: (id, name, ..., keys); F6 is Qt's key 0x01000035.
bound() {
  gdbus call --session --dest org.kde.kglobalaccel --object-path /component/zelmor \
    --method org.kde.kglobalaccel.Component.allShortcutInfos default 2>/dev/null
}
wait_for 150 'bound | grep -q "(.1., .Capture region., [^)]*\[16777269\]"' ||
  fail "the region hotkey F6 is not bound through the portal: $(bound)"
echo "ok - the GlobalShortcuts portal binds the region hotkey F6, named as the sheet names it"

grep -q "member=Screenshot" "$asked" && fail "zelmor asked the Screenshot portal at start"
echo "ok - zelmor asks the Screenshot portal for nothing before a capture"

"$press" keys 0x75 # F6
wait_for 450 "grep -q '\[capture\] failed' '$log'" || fail "F6 ended in no capture"
grep -q "member=Screenshot" "$asked" || fail "F6 did not ask the Screenshot portal"
grep -q "\[capture\] failed: The desktop's screenshot portal" "$log" || fail "no reason given"
[ -z "$(find "$HOME" -name '*.png')" ] || fail "a picture was saved: $(find "$HOME" -name '*.png')"
echo "ok - F6 on KWin runs the region capture, which says why the portal brought no picture"

"$bin/zelmor" --record-gif
wait_for 100 "grep -q 'failed: This desktop gives Zelmor single screenshots' '$log'" ||
  fail "the recording did not say why it cannot start"
[ "$(grep -c "member=Screenshot" "$asked")" = 1 ] || fail "the recording asked the Screenshot portal"
echo "ok - a recording says it needs more than single pictures, asking the portal for none"
