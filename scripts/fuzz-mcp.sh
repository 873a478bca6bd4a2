#!/usr/bin/env bash
# Fuzzes the tool server with libFuzzer for a fixed time each (default 30 s): its message
# layer, then the tools that need no display with random arguments, each call within 2 s.
# The harnesses and the code under test are built with clang, AddressSanitizer and
# UndefinedBehaviorSanitizer; the rest comes from the regular build.
#   scripts/fuzz-mcp.sh [SECONDS] [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-30}
build=${2:-${ZELMOR_BUILD_DIR:-build}}
work=$(mktemp -d /tmp/zelmor-fuzz.XXXXXX)
trap 'rm -rf "$work"' EXIT

qt_modules="Qt6Core Qt6Gui Qt6Network Qt6Sql Qt6Concurrent Qt6Widgets Qt6DBus"
# The named sources are compiled here, instrumented, in place of the library's copies.
fuzzer() {
  local name=$1
  shift
  clang++ -std=c++17 -g -O1 -fPIC -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -I src $(pkg-config --cflags $qt_modules) "$@" \
    "$build/src/libzelmor_lib.a" "$build/src/platform/libzelmor_platform.a" \
    $(pkg-config --libs $qt_modules libzstd xcb xcb-randr xcb-shm xcb-keysyms xcb-xkb xcb-xtest xcb-record xcb-xfixes xkbcommon atspi-2 gobject-2.0 glib-2.0 wayland-client libpipewire-0.3) \
    -o "$work/$name"
}
fuzzer mcp-fuzz tests/fuzz/mcp_message_fuzzer.cpp src/service/mcp/McpServer.cpp \
  src/service/mcp/McpMethods.cpp src/service/mcp/CancellationWatch.cpp
fuzzer mcp-args-fuzz tests/fuzz/mcp_tool_args_fuzzer.cpp src/service/mcp/McpTool.cpp \
  src/service/mcp/CaptureTools.cpp src/service/capture/AnnotationPainter.cpp \
  src/service/ai/AnnotationBox.cpp src/core/Utilities.cpp

mkdir -p "$work/corpus" "$work/args-corpus"
cp tests/fuzz/corpus/* "$work/corpus/"
export HOME=$work XDG_DATA_HOME=$work/data XDG_CONFIG_HOME=$work/config QT_QPA_PLATFORM=offscreen
export LSAN_OPTIONS=suppressions=$PWD/tests/fuzz/lsan.supp
"$work/mcp-fuzz" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
  -artifact_prefix="$work/" "$work/corpus"
"$work/mcp-args-fuzz" -max_total_time="$seconds" -timeout=2 -rss_limit_mb=2048 -print_final_stats=1 \
  -max_len=1024 -len_control=0 -artifact_prefix="$work/" \
  "$work/args-corpus"
