#!/usr/bin/env bash
# The desktop portals in the KWin test session (inside scripts/wayland-session.sh --kwin): the
# GlobalShortcuts portal binds zelmor's hotkeys, and F6 pressed on KWin runs the region
# capture, whose picture is the screen's as KDE's Screenshot portal hands it over (a test
# pattern shown full-screen); zelmor asks that portal for no picture before a capture; a
# recording, which one picture at a time cannot feed, says so without asking the portal.
#   tests/wayland/check-kwin.sh BIN_DIR KEYS_HELPER RECORD_HELPER
set -euo pipefail
bin=$1 press=$2 record=$3
. "$(dirname "$0")/session-lib.sh"
export QT_QPA_PLATFORM=wayland
log=$XDG_DATA_HOME/Zelmor/Zelmor/zelmor.log asked=$XDG_RUNTIME_DIR/screenshot-calls
wait_for() { for _ in $(seq "$1"); do eval "$2" && return; sleep 0.1; done; false; }
# zelmor's pictures, not the portal's own copies (which zelmor removes once read).
saved() { shot=$(find "$HOME" -name '*.png' ! -name 'Screenshot_*' ! -path "$TMPDIR/*" | head -1); [ -n "$shot" ]; }
# How closely a picture matches a part ("W:H:X:Y") of the pattern, in dB (identical: inf).
likeness() {
  ffmpeg -v info -i "$1" -i "$pattern" -lavfi "[1]crop=$2[p];[0][p]psnr" -f null - 2>&1 |
    sed -n 's/.*PSNR.* average:\([^ ]*\).*/\1/p' | tail -1
}
matches() { awk -v db="$(likeness "$@")" 'BEGIN { exit !(db == "inf" || db + 0 > 30) }'; }
# Runs a KWin script (JavaScript on KWin's workspace).
kwin_script() {
  printf '%s\n' "$1" >"$TMPDIR/script.js"
  gdbus call --session --dest org.kde.KWin --object-path /Scripting \
    --method org.kde.kwin.Scripting.loadScript "$TMPDIR/script.js" "s$RANDOM" >/dev/null
  gdbus call --session --dest org.kde.KWin --object-path /Scripting \
    --method org.kde.kwin.Scripting.start >/dev/null
}

# Colour bars full-screen: what the screen shows, known without asking KWin.
pattern=$TMPDIR/pattern.png
ffmpeg -v error -f lavfi -i smptebars=size=1920x1080 -frames:v 1 "$pattern"
SDL_VIDEODRIVER=wayland ffplay -v error -noborder -loop 0 "$pattern" >/dev/null 2>&1 &
viewer=$!
sleep 2
kwin_script 'workspace.clientList().forEach(function (c) { if (c.resourceClass == "ffplay") c.fullScreen = true; });'

dbus-monitor --session "interface=org.freedesktop.portal.Screenshot" >"$asked" 2>&1 &
monitor=$!
"$bin/zelmor" >/dev/null 2>&1 &
zelmor=$!
trap '"$bin/zelmor" --quit >/dev/null 2>&1; kill $monitor $viewer; wait $zelmor' EXIT

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

# zelmor makes an overlay ahead at start; F6 is pressed once it is done with that.
wait_for 300 'grep -q "capture overlay prepared" "$log"' || fail "zelmor made no overlay ahead"
"$press" keys 0x75 # F6
# The overlay that shows takes the one made at start; the next is made at once.
wait_for 300 '[ "$(grep -c "capture overlay prepared" "$log")" -ge 2 ]' || true
grep -q "member=Screenshot" "$asked" || { tail -5 "$log" >&2; fail "F6 did not ask the Screenshot portal"; }
sleep 0.5
"$press" drag 300 200 700 400
"$press" keys 0x0D # Return
wait_for 100 saved || { tail -3 "$log" >&2; fail "F6 on KWin saved no picture"; }
matches "$shot" 401:201:300:200 ||
  fail "the region F6 saved is not the screen's (PSNR $(likeness "$shot" 401:201:300:200) dB)"
echo "ok - F6 on KWin saves the region of the screen as KDE's Screenshot portal shows it"

# KDE's dialog of the ScreenCast portal, moved to the middle: its second card is the screen
# (the first makes a new output), then Share or Cancel. Clicked until the portal answered.
cast=$XDG_RUNTIME_DIR/screencast-calls
dbus-monitor --session "interface=org.freedesktop.portal.ScreenCast" >"$cast" 2>&1 &
monitor="$monitor $!"
answer_dialog() {
  for _ in $(seq 40); do
    sleep 1
    eval "$1" && return
    kwin_script 'workspace.clientList().forEach(function (c) {
      if (c.resourceClass == "org.freedesktop.impl.portal.desktop.kde")
        c.frameGeometry = {x: 632, y: 268, width: c.width, height: c.height}; });'
    "$press" drag 1114 514 1114 514 && "$press" drag "$2" 787 "$2" 787
  done
  false
}

"$bin/zelmor" --record-gif
answer_dialog "grep -q 'failed: This desktop gives Zelmor single screenshots' '$log'" 1238 ||
  fail "a recording the user did not let share the screen did not say why it cannot start"
[ "$(grep -c "member=Screenshot" "$asked")" = 1 ] || fail "the recording asked the Screenshot portal"
echo "ok - a recording whose screen cast is refused says it needs more than single pictures"

# 3 s at 10 frames a second of the region at 300,200 400x300. KWin's headless output sends
# the stream no pictures at all (it never repaints for it): a screenshot stands in for a still
# screen, so here every frame is that one.
frames=$TMPDIR/frames
mkdir "$frames"
"$record" 300 200 400 300 "$frames" &
recorder=$!
answer_dialog "grep -q OpenPipeWireRemote '$cast'" 1150 || fail "the ScreenCast portal never answered"
wait $recorder || fail "the recording on KWin failed"
[ "$(ls "$frames" | wc -l)" -gt 1 ] || fail "a 3 s recording at 10 fps has one frame"
for f in "$frames"/*.png; do
  matches "$f" 400:300:300:200 || fail "frame $f is not the screen's"
done
echo "ok - a recording on KWin opens the screen's stream through the ScreenCast portal; its frames are the screen's"

rm "$frames"/*
timeout 60 "$record" 300 200 400 300 "$frames" || fail "a second recording asked again, or failed"
echo "ok - the screen cast the user allowed once serves the next recording without asking"
