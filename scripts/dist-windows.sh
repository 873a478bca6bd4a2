#!/usr/bin/env bash
# Lays out the Windows edition as a user unpacks it, zips it, and wraps it in the installer:
#   scripts/dist-windows.sh BUILD_DIR TOOLCHAIN_DIR [OUT_DIR]
# BUILD_DIR holds the cross-built bin/; TOOLCHAIN_DIR is the unpacked zelmor-win-toolchain.
# OUT_DIR gets the release's two downloads, Zelmor-Qt-Setup.exe and Zelmor-windows.zip.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
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
mkdir translations
cp "$build"/bin/*.qm .
# Qt's own texts, for its dialogs and standard buttons; the same Qt version as the toolchain's.
for qm in "$build"/bin/zelmor_*.qm; do
  locale=$(basename "$qm" .qm)
  locale=${locale#zelmor_}
  qt_qm=/usr/share/qt6/translations/qtbase_$locale.qm
  [ -f "$qt_qm" ] && cp "$qt_qm" translations/
done
cp "$root/LICENSE" LICENSE.txt
libraries=()
for module in Core Gui Widgets Network Sql Concurrent; do
  libraries+=("$qt/bin/Qt6$module.dll")
done
for plugin in platforms/qwindows.dll sqldrivers/qsqlite.dll; do
  libraries+=("$qt/plugins/$plugin")
done
for folder in styles imageformats tls; do
  [ -d "$qt/plugins/$folder" ] && libraries+=("$qt/plugins/$folder"/*.dll)
done
libraries+=("$gcc_runtime/libstdc++-6.dll" "$gcc_runtime/libgcc_s_seh-1.dll"
  /usr/x86_64-w64-mingw32/lib/libwinpthread-1.dll)
# Copies without their symbols: nothing on a user's machine reads them.
for library in "${libraries[@]}"; do
  case $library in
    "$qt"/plugins/*) target=${library#"$qt"/plugins/} ;;
    *) target=$(basename "$library") ;;
  esac
  mkdir -p "$(dirname "$target")"
  x86_64-w64-mingw32-strip --strip-unneeded -o "$target" "$library"
done
cd "$out"
rm -f Zelmor-windows.zip
cmake -E tar cf Zelmor-windows.zip --format=zip Zelmor
echo "$out/Zelmor-windows.zip"

# The installer installs and removes exactly these files.
files=$build/installer-files
mkdir -p "$files"
(
  cd Zelmor
  previous=
  find . -type f | sed 's|^\./||' | sort | while read -r file; do
    dir=$(dirname "$file")
    if [ "$dir" != "$previous" ]; then
      if [ "$dir" = . ]; then
        echo "SetOutPath \"\$INSTDIR\""
      else
        echo "SetOutPath \"\$INSTDIR\\${dir//\//\\}\""
      fi
      previous=$dir
    fi
    echo "File \"$PWD/$file\""
  done >"$files/install-files.nsh"
  {
    find . -type f | sed 's|^\./||; s|/|\\|g; s|.*|Delete "$INSTDIR\\&"|'
    find . -mindepth 1 -type d | sort -r | sed 's|^\./||; s|/|\\|g; s|.*|RMDir "$INSTDIR\\&"|'
  } >"$files/uninstall-files.nsh"
)

version=$(sed -n 's/^project(Zelmor VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
size_kb=$(du -sk Zelmor | cut -f1)
makensis -V2 -INPUTCHARSET UTF8 -DVERSION="$version" -DSIZE_KB="$size_kb" -DSOURCE="$out/Zelmor" -DFILES="$files" \
  -DICON="$build/resources/zelmor.ico" -DOUTFILE="$out/Zelmor-Qt-Setup.exe" \
  "$root/packaging/windows/installer.nsi"
echo "$out/Zelmor-Qt-Setup.exe"
