#!/usr/bin/env bash
# Installs what is missing, builds, and starts Zelmor (it lives in the tray, with no window
# until you call it). Arguments go to zelmor, e.g. --capture-fullscreen.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh
if [ -z "${DISPLAY:-}" ]; then
  echo "Zelmor needs an X11 session: DISPLAY is not set." >&2
  exit 1
fi
exec "${ZELMOR_BUILD_DIR:-build}/bin/zelmor" "$@"
