#!/usr/bin/env bash
# Configures and builds Zelmor into build/ (or $ZELMOR_BUILD_DIR). Extra arguments go to
# the configure step, e.g. -DZELMOR_SANITIZE=ON.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${ZELMOR_BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja "$@" >/dev/null
cmake --build "$build" --parallel "$(nproc)"
