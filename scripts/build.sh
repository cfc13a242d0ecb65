#!/usr/bin/env bash
# Configures and builds Zarek into build/ (or $ZAREK_BUILD_DIR).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${ZAREK_BUILD_DIR:-$root/build}"
launcher=()
# A compiler cache, where one is installed, makes rebuilds of a second work tree cheap.
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)"
