#!/usr/bin/env bash
# Builds the Windows edition with mingw-w64 against ../shared/toolchains, lays it out with
# scripts/dist-windows.sh, and checks it under Wine in a private X session: zelmor-mcp.exe with
# the official MCP client, including the window, input, hotkey and hook paths on the window of
# zelmor-win-probe.exe, and zelmor.exe --capture-fullscreen. Needs the Linux build too (build/,
# for the marker window; ZELMOR_LINUX_BUILD_DIR to change) and the test packages of tests/mcp.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
scripts/install-deps.sh g++-mingw-w64-x86-64-posix wine wine64 qt6-base-dev-tools librsvg2-bin icoutils nsis

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

# The tray program is windowed and the tool server a console program; both carry Zelmor's icon,
# version information and manifest.
check_executable() {
  local exe=$build/dist/Zelmor/$1 subsystem=$2 headers resources
  headers=$(x86_64-w64-mingw32-objdump -p "$exe")
  resources=$(x86_64-w64-mingw32-windres -i "$exe" -O rc)
  grep -q "^Subsystem.*($subsystem)" <<<"$headers" ||
    { echo "not ok - $1: $(grep ^Subsystem <<<"$headers")" >&2; exit 1; }
  for part in '^1 14 /\* RT_GROUP_ICON' '^1 24 /\* RT_MANIFEST' 'PerMonitorV2' 'Microsoft.Windows.Common-Controls' \
    '<activeCodePage[^>]*>UTF-8<' "VALUE \"OriginalFilename\", \"$1\""; do
    grep -q -- "$part" <<<"$resources" || { echo "not ok - $1 has no $part" >&2; exit 1; }
  done
  echo "ok - $1: $subsystem, with icon, manifest and version information"
}
check_executable zelmor.exe "Windows GUI"
check_executable zelmor-mcp.exe "Windows CUI"

work=$(mktemp -d /tmp/zelmor-wine.XXXXXX)
trap 'WINEPREFIX=$work/prefix wineserver -k 2>/dev/null || true; rm -rf "$work"' EXIT
export WINEPREFIX=$work/prefix WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
# Unpacked as a user unpacks it, with the probe beside the programs for their libraries.
cmake -E chdir "$work" cmake -E tar xf "$root/$build/dist/Zelmor-windows.zip"
app=$work/Zelmor
version=$(sed -n 's/^project(Zelmor VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)
cp "$build/bin/zelmor-win-probe.exe" "$app/"
cat >"$work/checks.sh" <<CHECKS
set -euo pipefail
# Made with the display at hand: a prefix made without one reads the screen as black.
wineboot -i >"$work/wineboot.log" 2>&1 ||
  { echo "not ok - wineboot -i failed (\$?):" >&2; tail -20 "$work/wineboot.log" >&2; exit 1; }
node "$root/tests/mcp/sdk_wine.mjs" "$app/zelmor-mcp.exe" "$linux_build/tests/zelmor-test-window" \
  "$app/zelmor-win-probe.exe"
pictures=\$WINEPREFIX/drive_c/users/\$(id -un)/Pictures/Zelmor
# The newest capture, once there is one; at most 60 s, for a busy machine.
newest_picture() {
  for _ in \$(seq 600); do
    ls "\$pictures"/*.png >/dev/null 2>&1 && break
    sleep 0.1
  done
  ls -t "\$pictures"/*.png 2>/dev/null | head -1 | grep . ||
    { echo "not ok - no capture in \$pictures after 60 s" >&2; return 1; }
}
(cd "$app" && timeout 60 wine zelmor.exe --capture-fullscreen >/dev/null 2>&1 &) 2>/dev/null
shot=\$(newest_picture)
echo "ok - zelmor.exe --capture-fullscreen wrote \$(basename "\$shot")"
wineserver -k

# A windowed program has no console of its own; its answers still reach a redirected output.
answer=\$(cd "$app" && wine zelmor.exe --version)
[ "\$answer" = "zelmor $version" ] || { echo "not ok - zelmor.exe --version: \$answer" >&2; exit 1; }
echo "ok - zelmor.exe --version answered \$answer"

# The installer, silently for the current user with the usual profile folders; the program
# then runs from where it went.
wine reg add 'HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders' /v AppData \\
  /t REG_EXPAND_SZ /d '%USERPROFILE%\\AppData\\Roaming' /f >/dev/null
setup=$root/$build/dist/Zelmor-Qt-Setup.exe
uninstall_key='HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Zelmor'
profile=\$WINEPREFIX/drive_c/users/\$(id -un)
installed=\$profile/AppData/Local/Programs/Zelmor
shortcut="\$profile/AppData/Roaming/Microsoft/Windows/Start Menu/Programs/Zelmor.lnk"
wine "\$setup" /S
[ -f "\$installed/zelmor.exe" ] && [ -f "\$installed/translations/qtbase_zh_CN.qm" ] ||
  { echo "not ok - the installer put no program in \$installed" >&2; exit 1; }
[ -f "\$shortcut" ] || { echo "not ok - no Start-menu entry" >&2; exit 1; }
for value in DisplayName DisplayIcon DisplayVersion Publisher UninstallString QuietUninstallString \
  EstimatedSize; do
  wine reg query "\$uninstall_key" /v \$value >/dev/null 2>&1 ||
    { echo "not ok - no \$value in the uninstall entry" >&2; exit 1; }
done
echo "ok - Zelmor-Qt-Setup.exe /S installed into \$installed, with its Start-menu and uninstall entries"
# In Chinese, with Qt's own texts for its dialogs from the installed folder.
roaming=\$profile/AppData/Roaming/Zelmor
mkdir -p "\$roaming"
printf '%s\\n' '[%General]' 'language=zh_CN' >"\$roaming/Zelmor.ini"
rm -f "\$pictures"/*.png "\$roaming/Zelmor/zelmor.log"
(cd "\$installed" && timeout 120 wine zelmor.exe --capture-fullscreen >/dev/null 2>&1 &) 2>/dev/null
shot=\$(newest_picture)
echo "ok - the installed zelmor.exe --capture-fullscreen wrote \$(basename "\$shot")"
grep -q 'actualLocale=zh_CN' "\$roaming/Zelmor/zelmor.log" && ! grep 'no Qt translation' "\$roaming/Zelmor/zelmor.log" ||
  { echo "not ok - no Chinese Qt texts for the installed program:" >&2
    grep -s i18n "\$roaming/Zelmor/zelmor.log" >&2; exit 1; }
echo "ok - the installed program speaks Chinese with Qt's own Chinese texts"
# An upgrade closes the running program first, and keeps the start with Windows that the
# settings row turned on.
run_key='HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Run'
wine reg add "\$run_key" /v Zelmor /d '"C:/users/somebody/zelmor.exe"' /f >/dev/null
wine "\$setup" /S || { echo "not ok - the installer failed over the running program: \$?" >&2; pgrep -af zelmor >&2; tail -3 "\$roaming/Zelmor/zelmor.log" >&2; exit 1; }
wine reg query "\$run_key" /v Zelmor 2>/dev/null | grep -qF 'AppData\\Local\\Programs\\Zelmor\\zelmor.exe' ||
  { echo "not ok - the upgrade dropped the start with Windows" >&2; exit 1; }
! pgrep -f 'zelmor.exe --capture-fullscreen' >/dev/null ||
  { echo "not ok - the program runs on after the upgrade" >&2; exit 1; }
grep -q 'quitting, as another start asked' "\$roaming/Zelmor/zelmor.log" ||
  { echo "not ok - the upgrade ended the program by force instead of asking it to quit" >&2; exit 1; }
echo "ok - Zelmor-Qt-Setup.exe /S installed again over the running program, starting with Windows"
wine "\$installed/uninstall.exe" /S
# The uninstaller goes on from a copy of itself in the temporary folder.
for _ in \$(seq 300); do
  [ -e "\$installed" ] || break
  sleep 0.1
done
[ ! -e "\$installed" ] || { echo "not ok - left behind: \$(ls -R "\$installed")" >&2; exit 1; }
[ ! -e "\$shortcut" ] || { echo "not ok - the Start-menu entry stayed" >&2; exit 1; }
! wine reg query "\$uninstall_key" >/dev/null 2>&1 || { echo "not ok - the uninstall entry stayed" >&2; exit 1; }
! wine reg query "\$run_key" /v Zelmor >/dev/null 2>&1 || { echo "not ok - the start with Windows stayed" >&2; exit 1; }
echo "ok - uninstall.exe /S removed the folder, its entries and the start with Windows"
wineserver -k
CHECKS
scripts/x-session.sh bash "$work/checks.sh"
