#!/usr/bin/env bash
# Installs what is missing, builds, and starts Zarek. Arguments go to the program
# (for instance --empty, or --database FILE|postgresql://user@host:port/db, the password in ~/.pgpass).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
exec "${ZAREK_BUILD_DIR:-$root/build}/src/zarek" "$@"
