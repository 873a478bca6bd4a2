#!/usr/bin/env bash
# Fuzzes the tool server's message layer with libFuzzer for a fixed time (default 30 s).
# The harness and the message layer are built with clang and AddressSanitizer; the rest
# comes from the regular build.
#   scripts/fuzz-mcp.sh [SECONDS] [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
build=${2:-${ZELMOR_BUILD_DIR:-build}}
work=$(mktemp -d /tmp/zelmor-fuzz.XXXXXX)
trap 'rm -rf "$work"' EXIT

qt_modules="Qt6Core Qt6Gui Qt6Network Qt6Sql Qt6Concurrent Qt6Widgets Qt6DBus"
# The message layer is compiled here, instrumented, in place of the library's copy.
clang++ -std=c++17 -g -O1 -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
  -I src $(pkg-config --cflags $qt_modules) \
  tests/fuzz/mcp_message_fuzzer.cpp src/service/mcp/McpServer.cpp \
  "$build/src/libzelmor_lib.a" "$build/src/platform/libzelmor_platform.a" \
  $(pkg-config --libs $qt_modules xcb xcb-randr xcb-shm xcb-keysyms xcb-xkb xcb-xtest xkbcommon atspi-2 gobject-2.0 glib-2.0) \
  -o "$work/mcp-fuzz"

mkdir -p "$work/corpus"
cp tests/fuzz/corpus/* "$work/corpus/"
HOME=$work XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config QT_QPA_PLATFORM=offscreen \
  "$work/mcp-fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
  "$work/corpus"
