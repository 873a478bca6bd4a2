#!/usr/bin/env bash
# Runs a command inside a private X test session: Xvfb 1920x1080x24, the openbox
# window manager, a trayer tray host, and a D-Bus session with the AT-SPI bus.
# Everything started here is torn down when the command ends, fails or times out.
#   scripts/x-session.sh [--timeout SECONDS] [--bare] COMMAND [ARGS...]
# --bare starts the X server alone: no window manager and no tray host.
set -u

limit=1500
bare=0
while [ $# -gt 0 ]; do
  case "$1" in
    --timeout) limit=$2; shift 2 ;;
    --bare) bare=1; shift ;;
    *) break ;;
  esac
done
[ $# -gt 0 ] || { echo "usage: $0 [--timeout SECONDS] [--bare] COMMAND [ARGS...]" >&2; exit 2; }

# A private session bus: the AT-SPI bus and the FileManager1 service are activated on it.
if [ -z "${ZELMOR_SESSION_BUS:-}" ]; then
  export ZELMOR_SESSION_BUS=1
  flags=(--timeout "$limit")
  [ $bare -eq 1 ] && flags+=(--bare)
  exec dbus-run-session -- "$0" "${flags[@]}" "$@"
fi

pids=()
runtime=$(mktemp -d /tmp/zelmor-xsession.XXXXXX)
cleanup() {
  for ((i=${#pids[@]}-1; i>=0; i--)); do kill "${pids[i]}" 2>/dev/null; done
  for p in "${pids[@]}"; do wait "$p" 2>/dev/null; done
  rm -rf "$runtime"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

# Waits up to 30 s for a condition; a session that cannot start is an error, not a hang,
# and says why with the program's own log.
wait_for() {
  local what=$1 log=$2; shift 2
  for _ in $(seq 600); do "$@" >/dev/null 2>&1 && return 0; sleep 0.05; done
  echo "x-session: $what did not start" >&2; cat "$log" >&2; exit 3
}

chmod 700 "$runtime"
export XDG_RUNTIME_DIR=$runtime/run
mkdir -m 700 "$XDG_RUNTIME_DIR"

# -displayfd picks a free display number, so sessions can run side by side.
exec {dfd}<> <(:)
# -noreset: the server would otherwise reset when its last client leaves, as the probe below
# does, and a window manager connecting in that moment would be turned away.
Xvfb -displayfd "$dfd" -screen 0 1920x1080x24 -nolisten tcp -ac -noreset >"$runtime/xvfb.log" 2>&1 &
pids+=($!)
display=""
for _ in $(seq 300); do
  read -r -t 0.05 display <&"$dfd" && break
  kill -0 "${pids[0]}" 2>/dev/null || break
done
exec {dfd}<&-
[ -n "$display" ] || { echo "x-session: Xvfb did not start" >&2; cat "$runtime/xvfb.log" >&2; exit 3; }
export DISPLAY=:$display
wait_for "the X server" "$runtime/xvfb.log" xdpyinfo

if [ $bare -eq 0 ]; then
  openbox --sm-disable >"$runtime/openbox.log" 2>&1 &
  pids+=($!)
  wait_for "openbox" "$runtime/openbox.log" sh -c "xprop -root _NET_SUPPORTING_WM_CHECK | grep -q 'window id'"

  trayer --edge top --align right --widthtype request --height 24 --SetDockType true \
    --expand false >"$runtime/trayer.log" 2>&1 &
  pids+=($!)
  wait_for "trayer" "$runtime/trayer.log" xdotool search --class trayer
fi

# A Wayland desktop around the developer's shell is not this session's.
unset WAYLAND_DISPLAY
export XDG_SESSION_TYPE=x11

# Starts the accessibility bus, which AT-SPI clients and Qt's bridge expect.
dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.a11y.Bus.GetAddress \
  >/dev/null 2>&1 || echo "x-session: the AT-SPI bus did not answer" >&2

export QT_QPA_PLATFORM=xcb QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 QT_ACCESSIBILITY=1
timeout --kill-after=10 "$limit" "$@"
rc=$?
[ $rc -eq 124 ] && echo "x-session: '$*' timed out after ${limit}s" >&2
exit $rc
