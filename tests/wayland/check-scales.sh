#!/usr/bin/env bash
# Windows of Zelmor on two outputs of different scales in sway (run inside
# scripts/wayland-session.sh): each overlay window shows its own output's frozen picture.
#   tests/wayland/check-scales.sh BIN_DIR PRESS
set -euo pipefail
bin=$1 press=$2
. "$(dirname "$0")/session-lib.sh"
export QT_QPA_PLATFORM=wayland
shots=$(mktemp -d "${TMPDIR:-/tmp}/zelmor-scales.XXXXXX")
grab() { grim -o "$1" "$shots/$2.png"; }

# Whether picture $1 is picture $2 under the overlay's idle shade (a fifth darker), judged on
# the top rows, above the hint; a blank window shows $2 itself, a wrong one another picture.
shaded() {
  python3 - "$shots/$1.png" "$shots/$2.png" <<'PY'
import subprocess, sys
def grey(f):
    return subprocess.run(['ffmpeg', '-v', 'error', '-i', f, '-f', 'rawvideo', '-pix_fmt', 'gray',
                           '-'], capture_output=True, check=True).stdout
a, b = grey(sys.argv[1]), grey(sys.argv[2])
picked = range(0, len(a) * 2 // 5, 7)
sys.exit(0 if len(a) == len(b) and sum(abs(a[i] - b[i] * 0.8) for i in picked) < 6 * len(picked) else 1)
PY
}

swaymsg -q create_output
swaymsg -q output HEADLESS-1 scale 1, output HEADLESS-2 resolution 1280x720 position 1920 0 scale 2
show_photograph
fresh_home
trap '"$bin/zelmor" --quit >/dev/null 2>&1 || true' EXIT
grab HEADLESS-1 desk1 && grab HEADLESS-2 desk2
"$bin/zelmor" --capture-region >/dev/null 2>&1 &
# Each try compares whole pictures: a few seconds' worth, not await's 200.
shows() { for _ in $(seq 20); do grab "$1" "$2" && shaded "$2" "$3" && return 0; sleep 0.2; done; return 1; }
for n in 1 2; do
  shows HEADLESS-$n overlay$n desk$n ||
    fail "the overlay on the output of scale $n does not show that output's frozen picture"
done
echo "ok - on outputs of scales 1 and 2 each overlay window shows its own output's frozen picture"
