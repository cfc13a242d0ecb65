#!/usr/bin/env bash
# Makes the pictures of the guide (docs/guide/images) anew from the running program on the demo
# firm, on a screen of 1024×768 without a display. Builds what it needs in build/ first.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${ZAREK_BUILD_DIR:-$root/build}"
"$root/scripts/install-deps.sh"
[ -f "$build/CMakeCache.txt" ] || cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target tst_desktop -j"$(nproc)"
mkdir -p "$root/docs/guide/images"
(cd "$build/tests/app" && LC_ALL=C.UTF-8 ZAREK_GUIDE_PICTURES="$root/docs/guide/images" ./tst_desktop guidePictures:sqlite)
echo "Pictures in $root/docs/guide/images"
