#!/usr/bin/env bash
# Builds the .deb, validates its desktop entry and metadata, installs it, and has the installed
# program take a full-screen capture. The package goes in with apt-get (and out again) only
# when ZELMOR_PACKAGE_INSTALL=1 and running as root, as in CI; otherwise it is unpacked into a
# temporary folder, which runs the same files.
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d /tmp/zelmor-package.XXXXXX)
installed=0
pid=
cleanup() {
  [ -z "$pid" ] || kill "$pid" 2>/dev/null || true
  [ "$installed" = 0 ] || apt-get remove -y -q zelmor >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "check-package: $*" >&2; exit 1; }

cpack --config "$build/CPackConfig.cmake" -B "$work/out" >"$work/cpack.log" 2>&1 ||
  { cat "$work/cpack.log" >&2; fail "cpack failed"; }
deb=$(ls "$work"/out/zelmor_*.deb)
echo "package: $(basename "$deb"), $(du -k "$deb" | cut -f1) KiB"
dpkg-deb -x "$deb" "$work/root"

id=app.zelmor.Zelmor
desktop-file-validate "$work/root/usr/share/applications/$id.desktop"
appstreamcli validate --no-net "$work/root/usr/share/metainfo/$id.metainfo.xml"
for f in usr/bin/zelmor usr/bin/zelmor-mcp \
  usr/share/zelmor/translations/zelmor_zh_CN.qm usr/share/zelmor/translations/zelmor_en_US.qm \
  usr/share/icons/hicolor/scalable/apps/$id.svg usr/share/icons/hicolor/64x64/apps/$id.png; do
  [ -f "$work/root/$f" ] || fail "missing /$f"
done
# Starting with the session is a setting that is stored only.
! find "$work/root" -path '*autostart*' | grep -q . || fail "the package holds an autostart entry"

bin=$work/root/usr/bin/zelmor
if [ "${ZELMOR_PACKAGE_INSTALL:-0}" = 1 ] && [ "$(id -u)" = 0 ]; then
  DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "$deb" >"$work/apt.log" 2>&1 ||
    { cat "$work/apt.log" >&2; fail "apt-get install failed"; }
  installed=1
  bin=/usr/bin/zelmor
  echo "installed with apt-get"
fi

home=$work/home
mkdir -p "$home" "$work/run"
chmod 700 "$work/run"
HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share \
  XDG_CACHE_HOME=$home/.cache XDG_RUNTIME_DIR=$work/run "$bin" --capture-fullscreen \
  >"$work/zelmor.log" 2>&1 &
pid=$!
for _ in $(seq 300); do
  shot=$(find "$home/Pictures/Zelmor" -name '*.png' 2>/dev/null | head -1 || true)
  [ -n "$shot" ] && break
  kill -0 "$pid" 2>/dev/null || { cat "$work/zelmor.log" >&2; fail "zelmor exited"; }
  sleep 0.1
done
[ -n "$shot" ] || { cat "$work/zelmor.log" >&2; fail "no capture written"; }
[ "$(head -c 8 "$shot" | od -An -tx1 | tr -d ' \n')" = 89504e470d0a1a0a ] || fail "$shot is no PNG"
echo "capture written by $bin: $(basename "$shot")"
