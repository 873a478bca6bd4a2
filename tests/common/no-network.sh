#!/bin/sh
# Runs a suite in a network namespace of its own, where even the loopback is down, and tells it
# so through ZELMOR_NO_NETWORK. The X server is still reached through its socket file.
for flags in -n -rn; do
  if unshare $flags true 2>/dev/null; then
    ZELMOR_NO_NETWORK=1 exec unshare $flags "$@"
  fi
done
exec "$@"
