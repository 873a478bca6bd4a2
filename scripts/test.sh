#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite inside a private X test
# session, with HOME and the XDG folders in a temporary folder (the Wayland checks start a
# Wayland session of their own, scripts/wayland-session.sh); then builds the Windows
# edition and checks it under Wine (ZELMOR_WINDOWS_CHECK=0 leaves that out).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
# The Wayland sessions' packages too, so that no check installs them while others run.
scripts/wayland-session.sh --install
# The official MCP client that drives zelmor-mcp in the protocol tests; again only when
# the lock file changed.
if [ ! -f tests/mcp/node_modules/.package-lock.json ] ||
  [ tests/mcp/package-lock.json -nt tests/mcp/node_modules/.package-lock.json ]; then
  npm ci --prefix tests/mcp --no-audit --no-fund
fi
scripts/build.sh -DZELMOR_WERROR=ON "$@"
build=${ZELMOR_BUILD_DIR:-build}
sandbox=$(mktemp -d /tmp/zelmor-tests.XXXXXX)
trap 'rm -rf "$sandbox"' EXIT
export HOME=$sandbox XDG_CONFIG_HOME=$sandbox/config XDG_DATA_HOME=$sandbox/data XDG_CACHE_HOME=$sandbox/cache
scripts/x-session.sh --timeout 1500 ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
# A checkout without the Windows toolchain beside it skips this, except in CI.
if [ "${ZELMOR_WINDOWS_CHECK:-1}" != 0 ]; then
  if [ -f ../shared/toolchains/zelmor-win-toolchain.tar.xz ] || [ -n "${CI:-}" ]; then
    ZELMOR_LINUX_BUILD_DIR=$build scripts/test-windows.sh
  else
    echo "Windows edition not checked: ../shared/toolchains/zelmor-win-toolchain.tar.xz is missing"
  fi
fi
