#!/usr/bin/env bash
# The region hotkey and its command line to the overlay visible, in the X11 test session and in
# the Wayland one (headless sway), side by side; a benchmark, never a failure. Build first.
#   bench/hotkey-sessions.sh [runs]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bench=$root/build/bench/zelmor-bench-hotkey
runs=${1:-20}
rows() { grep -P '\t' || true; }
x11=$("$root/scripts/x-session.sh" --timeout 900 "$bench" --command "$runs" 2>/dev/null | rows)
wayland=$("$root/scripts/wayland-session.sh" --timeout 900 \
  env QT_QPA_PLATFORM=wayland "$bench" --command "$runs" 2>/dev/null | rows)

echo "To the region overlay visible, $runs runs: median / first / max in ms (missed runs)"
echo "F6: on X11 Zelmor's own grab; on sway a bindsym of the command line"
paste <(echo "$x11") <(echo "$wayland") | awk -F'\t' '
  BEGIN { printf "%-26s%-30s%s\n", "", "X11 (Xvfb)", "Wayland (headless sway)" }
  { label = NR == 1 ? $1 : "F6"
    printf "%-26s%-30s%s\n", label, sprintf("%.0f / %.0f / %.0f (%d)", $2, $3, $4, $5),
           sprintf("%.0f / %.0f / %.0f (%d)", $7, $8, $9, $10) }'
