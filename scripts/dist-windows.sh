#!/usr/bin/env bash
# Lays out the Windows edition as a user unpacks it, and zips it:
#   scripts/dist-windows.sh BUILD_DIR TOOLCHAIN_DIR [OUT_DIR]
# BUILD_DIR holds the cross-built bin/; TOOLCHAIN_DIR is the unpacked zelmor-win-toolchain.
set -euo pipefail
build=$(cd "$1" && pwd)
toolchain=$(cd "$2" && pwd)
out=${3:-$build/dist}
mkdir -p "$out"
out=$(cd "$out" && pwd)
qt=$toolchain/qt6-mingw
gcc_runtime=$(dirname "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")
rm -rf "$out/Zelmor"
mkdir -p "$out/Zelmor"
cd "$out/Zelmor"
for exe in zelmor.exe zelmor-mcp.exe; do
  x86_64-w64-mingw32-strip -o "$exe" "$build/bin/$exe"
done
cp "$build"/bin/*.qm .
for module in Core Gui Widgets Network Sql Concurrent; do
  cp "$qt/bin/Qt6$module.dll" .
done
for plugin in platforms/qwindows.dll sqldrivers/qsqlite.dll; do
  mkdir -p "$(dirname "$plugin")"
  cp "$qt/plugins/$plugin" "$plugin"
done
for folder in styles imageformats tls; do
  [ -d "$qt/plugins/$folder" ] && cp -r "$qt/plugins/$folder" .
done
cp "$gcc_runtime/libstdc++-6.dll" "$gcc_runtime/libgcc_s_seh-1.dll" .
cp /usr/x86_64-w64-mingw32/lib/libwinpthread-1.dll .
cd "$out"
rm -f Zelmor-windows.zip
cmake -E tar cf Zelmor-windows.zip --format=zip Zelmor
echo "$out/Zelmor-windows.zip"
