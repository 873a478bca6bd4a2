#!/usr/bin/env bash
# Remakes the OCR corpus: windows of real programs in the X test session, each cropped to its
# window and saved as NAME.png beside NAME.txt, its exact text. Run it from the repository:
#   scripts/x-session.sh --timeout 300 tests/data/ocr/make-corpus.sh
# Needs xterm, xmessage, zenity, man, ffmpeg, xdotool, fonts-noto-cjk, xfonts-wqy, xfonts-base.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
g++ -std=c++17 -O1 -fPIC "$here/qtdialog.cpp" -o "$work/qtdialog" $(pkg-config --cflags --libs Qt6Widgets)

# Grabs the window of class $2 that process $1 shows into $3.png once it has been drawn,
# without its frame and without the pointer.
grab() {
  local pid=$1 class=$2 name=$3 id="" geometry
  for _ in $(seq 100); do
    id=$(xdotool search --onlyvisible --class "$class" 2>/dev/null | tail -1) && [ -n "$id" ] && break
    sleep 0.1
  done
  sleep 1.5
  geometry=$(xwininfo -id "$id")
  x=$(sed -n 's/.*Absolute upper-left X: *//p' <<<"$geometry")
  y=$(sed -n 's/.*Absolute upper-left Y: *//p' <<<"$geometry")
  w=$(sed -n 's/.*Width: *//p' <<<"$geometry")
  h=$(sed -n 's/.*Height: *//p' <<<"$geometry")
  ffmpeg -loglevel error -y -f x11grab -draw_mouse 0 -video_size "${w}x${h}" -i "$DISPLAY+$x,$y" \
    -frames:v 1 -pix_fmt rgb24 "$here/$name.png"
  kill "$pid"; wait "$pid" 2>/dev/null || true
}

# A terminal showing a file and a prompt with the cursor after it.
term() {
  local name=$1 file=$2; shift 2
  xterm "$@" -geometry 80x24 -e sh -c "cat '$file'; printf 'user@host:~\$ '; sleep 600" &
  grab $! XTerm "$name"
  { cat "$file"; echo 'user@host:~$'; } >"$here/$name.txt"
}

cat >"$work/files.txt" <<'T'
total 3.7 GB used, 120.5 GB free (3 %)
-rw-r--r-- 1 user user  18432 Mar 12 09:41 report_2026.pdf
-rw-r--r-- 1 user user   2048 Mar 12 09:42 notes.txt
drwxr-xr-x 2 user user   4096 Mar 11 17:05 backups/
Version 2.14.1 (build 7.3.0), released 12.03.2026.
Done: 1,284 files copied in 4.6 s; 0 errors.
T
term xterm-fixed-light "$work/files.txt" -fn fixed -bg white -fg black
term xterm-9x15-dark "$work/files.txt" -fn 9x15 -bg black -fg grey85
term xterm-mono-light "$work/files.txt" -fa 'DejaVu Sans Mono' -fs 10 -bg white -fg black
term xterm-mono-dark "$work/files.txt" -fa 'Liberation Mono' -fs 11 -bg '#1e1e1e' -fg '#d0d0d0'

cat >"$work/cjk.txt" <<'T'
保存截图到输出文件夹
设置语言、主题和快捷键
历史记录中共有十二张图片
正在提取文字，请稍候
T
{ cat "$work/cjk.txt"; echo '文件 report.pdf 已保存 (3.7 MB)'; } >"$work/cjk-term.txt"
term xterm-cjk-mono "$work/cjk-term.txt" -fa 'DejaVu Sans Mono' -fd 'Noto Sans Mono CJK SC' -fs 11 \
  -bg white -fg black

# A manual page in the pager, first screen: 23 lines and the pager's prompt.
LC_ALL=C MANWIDTH=80 man ls 2>/dev/null | col -b | head -23 >"$work/man.txt"
xterm -fn fixed -geometry 80x24 -bg white -fg black -e env LC_ALL=C MANWIDTH=80 man ls &
grab $! XTerm man-ls
{ cat "$work/man.txt"; echo ' Manual page ls(1) line 1 (press h for help or q to quit)'; } >"$here/man-ls.txt"

# Text boxes with one-pixel borders.
cat >"$work/message.txt" <<'T'
The backup finished at 09.41.
Copied 1,284 files (3.7 GB) to /media/backup.
Next run: 13.03.2026 at 02.00.
T
xmessage -file "$work/message.txt" -buttons OK,Cancel &
grab $! Xmessage xmessage
{ cat "$work/message.txt"; echo 'OK Cancel'; } >"$here/xmessage.txt"

zenity --question --title Backup --no-wrap \
  --text $'Delete 12 old snapshots (3.7 GB)?\nThe oldest is from 02.11.2025; the newest from 01.03.2026.' &
grab $! Zenity gtk-dialog
printf '%s\n' 'Delete 12 old snapshots (3.7 GB)?' \
  'The oldest is from 02.11.2025; the newest from 01.03.2026.' No Yes >"$here/gtk-dialog.txt"

zenity --info --title Report --no-wrap --text '<span font="40px">Revenue 2026: 4,815,162 units</span>' &
grab $! Zenity heading-40px
printf '%s\n' 'Revenue 2026: 4,815,162 units' OK >"$here/heading-40px.txt"

zenity --info --title 提示 --no-wrap --text "$(cat "$work/cjk.txt")" &
grab $! Zenity gtk-cjk
{ cat "$work/cjk.txt"; echo OK; } >"$here/gtk-cjk.txt"

cat >"$work/qt.txt" <<'T'
The capture was saved to ~/Pictures/shot_0412.png.
Size: 1920 x 1080 pixels, 2.4 MB; 3 annotations.
T
"$work/qtdialog" 'DejaVu Sans' 13 Saved "$work/qt.txt" &
grab $! qtdialog qt-dialog
{ cat "$work/qt.txt"; echo OK Cancel; } >"$here/qt-dialog.txt"

for px in 12 16; do
  "$work/qtdialog" 'Noto Sans CJK SC' $px 提示 "$work/cjk.txt" &
  grab $! qtdialog qt-cjk-${px}px
  { cat "$work/cjk.txt"; echo OK Cancel; } >"$here/qt-cjk-${px}px.txt"
done
"$work/qtdialog" 'WenQuanYi Bitmap Song' 12 提示 "$work/cjk.txt" &
grab $! qtdialog qt-wqy-12px
{ cat "$work/cjk.txt"; echo OK Cancel; } >"$here/qt-wqy-12px.txt"

# A title written top to bottom, one character a line.
printf '%s\n' 保 存 截 图 到 输 出 文 件 夹 >"$work/vertical.txt"
"$work/qtdialog" 'Noto Sans CJK SC' 16 提示 "$work/vertical.txt" &
grab $! qtdialog qt-cjk-vertical
printf '%s\n' 保存截图到输出文件夹 'OK Cancel' >"$here/qt-cjk-vertical.txt"
