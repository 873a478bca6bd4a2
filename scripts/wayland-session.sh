#!/usr/bin/env bash
# Runs a command inside a private Wayland test session: headless sway with one 1920x1080
# output and Xwayland, on a D-Bus session bus of its own (weston is at hand for a compositor
# without the wlr protocols); with --kwin headless KWin instead, with the desktop portal of
# KDE and PipeWire, exiting 77 when KWin cannot start here. sway refuses to run as root, so
# root runs the session and the command as the user zelmor-wl (made when missing), with a
# temporary HOME; any other user runs it as itself. Everything started here is torn down
# when the command ends, fails or times out.
#   scripts/wayland-session.sh [--timeout SECONDS] [--kwin | --kwin-checked] COMMAND [ARGS...]
#   scripts/wayland-session.sh --install   (installs the packages of both sessions, and ends)
# The command sees WAYLAND_DISPLAY, Xwayland's DISPLAY and XDG_SESSION_TYPE=wayland; Qt picks
# its platform plugin from QT_QPA_PLATFORM as the command sets it inside; the caller's, meant
# for the caller's display (the X test session's xcb), stays out, as the portals' backends,
# Qt programs too, would fail with it.
set -u

limit=1500
kwin=
install_only=
while [ $# -gt 0 ]; do
  case "$1" in
    --install) install_only=1; kwin=--kwin; shift ;;
    --timeout) limit=$2; shift 2 ;;
    --kwin|--kwin-checked) kwin=$1; shift ;;
    *) break ;;
  esac
done
[ $# -gt 0 ] || [ -n "$install_only" ] || { echo "usage: $0 [--timeout SECONDS] [--kwin] COMMAND [ARGS...]" >&2; exit 2; }
here=$(cd "$(dirname "$0")" && pwd)

# The packages of the session, installed on demand like the Windows check's.
"$here/install-deps.sh" sway swaybg weston xwayland grim wtype wl-clipboard wayland-utils qt6-wayland dbus zenity \
  ffmpeg python-matplotlib-data
# The portal of wlroots for the Screenshot portal check; PipeWire, which it needs to start.
"$here/install-deps.sh" xdg-desktop-portal-wlr pipewire wireplumber
# KWin and KDE's portal; the portal's dialogs are QML, some of it Plasma's own (in
# plasma-workspace), and PipeWire carries screen casts. The checks show a picture with ffplay.
[ -z "$kwin" ] || "$here/install-deps.sh" kwin-wayland xdg-desktop-portal xdg-desktop-portal-kde \
  qml-module-org-kde-kirigami2 qml-module-qtquick-layouts qml-module-qtquick-controls2 \
  plasma-workspace qml-module-org-kde-pipewire pipewire wireplumber
[ -z "$install_only" ] || exit 0

if [ -z "${ZELMOR_WAYLAND_INNER:-}" ]; then
  base=$(mktemp -d /tmp/zelmor-wlsession.XXXXXX)
  chmod 755 "$base"
  trap 'rm -rf "$base"' EXIT
  as_user=()
  if [ "$(id -u)" -eq 0 ]; then
    user=zelmor-wl
    id -u "$user" >/dev/null 2>&1 ||
      useradd --system --no-create-home --home-dir /nonexistent --shell /usr/sbin/nologin "$user"
    # Reading and searching every folder lets the user reach a checkout in a private folder
    # (CI clones as root, as into /root); files keep their own execute and write permissions.
    as_user=(setpriv --reuid="$user" --regid="$user" --init-groups --reset-env
      --inh-caps=+dac_read_search --ambient-caps=+dac_read_search)
    mkdir "$base/home" "$base/run" "$base/tmp"
    chown "$user:" "$base/home" "$base/run" "$base/tmp"
    # Xwayland's socket folder, which only root can make as it must be.
    [ -d /tmp/.X11-unix ] || install -d -m 1777 /tmp/.X11-unix
  else
    mkdir "$base/home" "$base/run" "$base/tmp"
  fi
  chmod 700 "$base/home" "$base/run" "$base/tmp"
  home=$base/home
  # Plasma's notification service waits a minute for a shell that never comes here, holding the
  # session open; a stand-in that ends at once makes the portal give up on notifying.
  services=$home/data/dbus-1/services
  mkdir -p "$services"
  printf '[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=/bin/false\n' \
    >"$services/org.freedesktop.Notifications.service"
  [ -z "${user:-}" ] || chown -R "$user:" "$home/data"
  # --reset-env drops the caller's environment; what the command needs is passed on here.
  "${as_user[@]}" env -i PATH="$PATH" LANG="${LANG:-C.UTF-8}" ${LC_ALL:+LC_ALL=$LC_ALL} \
    ${ZELMOR_BIN_DIR:+ZELMOR_BIN_DIR=$ZELMOR_BIN_DIR} \
    HOME="$home" XDG_CONFIG_HOME="$home/config" XDG_DATA_HOME="$home/data" \
    XDG_CACHE_HOME="$home/cache" XDG_RUNTIME_DIR="$base/run" TMPDIR="$base/tmp" \
    ZELMOR_WAYLAND_INNER=1 dbus-run-session -- "$here/wayland-session.sh" --timeout "$limit" $kwin "$@"
  exit $?
fi

pids=()
cleanup() {
  for ((i=${#pids[@]}-1; i>=0; i--)); do kill "${pids[i]}" 2>/dev/null; done
  for p in "${pids[@]}"; do wait "$p" 2>/dev/null; done
}
trap cleanup EXIT
trap 'exit 130' INT TERM

if [ -n "$kwin" ]; then
  # kwin_wayland carries a file capability that this sandbox refuses to run; a plain copy has
  # none, and keeps the name, which KWin's own platform plugin checks.
  mkdir "$XDG_RUNTIME_DIR/kwin"
  cp /usr/bin/kwin_wayland "$XDG_RUNTIME_DIR/kwin/kwin_wayland"
  log=$XDG_RUNTIME_DIR/kwin.log
  # Without its permission checks KWin offers the checks its fake input interface; with
  # --kwin-checked it keeps them, as Plasma does, and offers it only to the programs whose
  # desktop files ask for it, such as the portal's backend.
  checks=(env KWIN_WAYLAND_NO_PERMISSION_CHECKS=1)
  [ "$kwin" = --kwin ] || checks=(env)
  "${checks[@]}" "$XDG_RUNTIME_DIR/kwin/kwin_wayland" --virtual --width 1920 --height 1080 --socket wayland-kde \
    >"$log" 2>&1 &
  pids+=($!)
  for _ in $(seq 300); do
    [ -S "$XDG_RUNTIME_DIR/wayland-kde" ] && break
    kill -0 "${pids[0]}" 2>/dev/null || break
    sleep 0.05
  done
  [ -S "$XDG_RUNTIME_DIR/wayland-kde" ] ||
    { echo "wayland-session: KWin did not start here" >&2; cat "$log" >&2; exit 77; }
  export WAYLAND_DISPLAY=wayland-kde XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=KDE
  unset DISPLAY
  # The portal and its backend start on the bus's demand, with this environment.
  dbus-update-activation-environment WAYLAND_DISPLAY XDG_SESSION_TYPE XDG_CURRENT_DESKTOP \
    QT_QPA_PLATFORM=wayland
  for p in pipewire wireplumber; do
    command -v $p >/dev/null && { $p >"$XDG_RUNTIME_DIR/$p.log" 2>&1 & pids+=($!); }
  done
else
log=$XDG_RUNTIME_DIR/sway.log
cat >"$XDG_RUNTIME_DIR/sway.config" <<CONFIG
output HEADLESS-1 resolution 1920x1080 position 0 0 bg #2050a0 solid_color
xwayland enable
exec env > $XDG_RUNTIME_DIR/sway-env
CONFIG
WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman \
  sway --config "$XDG_RUNTIME_DIR/sway.config" >"$log" 2>&1 &
pids+=($!)

# sway writes its children's environment once Xwayland is up; a session that cannot start
# is an error, not a hang, and says why with sway's own log.
for _ in $(seq 600); do
  grep -q '^DISPLAY=' "$XDG_RUNTIME_DIR/sway-env" 2>/dev/null && break
  kill -0 "${pids[0]}" 2>/dev/null || break
  sleep 0.05
done
grep -q '^DISPLAY=' "$XDG_RUNTIME_DIR/sway-env" 2>/dev/null ||
  { echo "wayland-session: sway did not start" >&2; cat "$log" >&2; exit 3; }
export WAYLAND_DISPLAY DISPLAY SWAYSOCK
WAYLAND_DISPLAY=$(sed -n 's/^WAYLAND_DISPLAY=//p' "$XDG_RUNTIME_DIR/sway-env")
DISPLAY=$(sed -n 's/^DISPLAY=//p' "$XDG_RUNTIME_DIR/sway-env")
SWAYSOCK=$(sed -n 's/^SWAYSOCK=//p' "$XDG_RUNTIME_DIR/sway-env")
export XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=sway
fi

timeout --kill-after=10 "$limit" "$@"
rc=$?
[ $rc -eq 124 ] && echo "wayland-session: '$*' timed out after ${limit}s" >&2
exit $rc
