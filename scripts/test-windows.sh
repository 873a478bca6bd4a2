#!/usr/bin/env bash
# Builds the Windows edition with mingw-w64 against ../shared/toolchains, lays it out with
# scripts/dist-windows.sh, and checks it under Wine in a private X session: zelmor-mcp.exe with
# the official MCP client, including the window, input, hotkey and hook paths on the window of
# zelmor-win-probe.exe, and zelmor.exe --capture-fullscreen. Needs the Linux build too (build/,
# for the marker window; ZELMOR_LINUX_BUILD_DIR to change) and the test packages of tests/mcp.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
packages=(g++-mingw-w64-x86-64-posix wine wine64 qt6-base-dev-tools librsvg2-bin)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=()
  [ "$(id -u)" -eq 0 ] || sudo=(sudo)
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

build=${ZELMOR_WIN_BUILD_DIR:-build-win}
linux_build=$(cd "${ZELMOR_LINUX_BUILD_DIR:-build}" && pwd)
toolchain=$build/toolchain/zelmor-win-toolchain
if [ ! -f "$toolchain/mingw-w64.cmake" ]; then
  mkdir -p "$build/toolchain"
  tar xJf ../shared/toolchains/zelmor-win-toolchain.tar.xz -C "$build/toolchain"
fi
cmake -S . -B "$build" -G Ninja -DZELMOR_WERROR=ON \
  -DCMAKE_TOOLCHAIN_FILE="$root/$toolchain/mingw-w64.cmake"
cmake --build "$build" -j "$(nproc)"
scripts/dist-windows.sh "$build" "$toolchain" "$build/dist"

work=$(mktemp -d /tmp/zelmor-wine.XXXXXX)
trap 'WINEPREFIX=$work/prefix wineserver -k 2>/dev/null || true; rm -rf "$work"' EXIT
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
# Unpacked as a user unpacks it, with the probe beside the programs for their libraries.
cmake -E chdir "$work" cmake -E tar xf "$root/$build/dist/Zelmor-windows.zip"
app=$work/Zelmor
cp "$build/bin/zelmor-win-probe.exe" "$app/"
cat >"$work/checks.sh" <<CHECKS
set -euo pipefail
# Made with the display at hand: a prefix made without one reads the screen as black.
wineboot -i >/dev/null 2>&1
node "$root/tests/mcp/sdk_wine.mjs" "$app/zelmor-mcp.exe" "$linux_build/tests/zelmor-test-window" \
  "$app/zelmor-win-probe.exe"
pictures=\$WINEPREFIX/drive_c/users/\$(id -un)/Pictures/Zelmor
(cd "$app" && timeout 60 wine zelmor.exe --capture-fullscreen >/dev/null 2>&1 &) 2>/dev/null
for _ in \$(seq 300); do
  ls "\$pictures"/*.png >/dev/null 2>&1 && break
  sleep 0.1
done
shot=\$(ls -t "\$pictures"/*.png | head -1)
echo "ok - zelmor.exe --capture-fullscreen wrote \$(basename "\$shot")"
wineserver -k
CHECKS
scripts/x-session.sh bash "$work/checks.sh"
