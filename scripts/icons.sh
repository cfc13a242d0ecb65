#!/usr/bin/env bash
# Draws the program's icon at 48, 64, 128 and 256 px from its SVG into packaging/icons/ (or into
# the folder given), with rsvg-convert (package librsvg2-bin).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
out="${1:-$root/packaging/icons}"
id=bg.zarek.Zarek
for size in 48 64 128 256; do
  mkdir -p "$out/${size}x${size}"
  rsvg-convert -w "$size" -h "$size" "$root/packaging/icons/scalable/$id.svg" -o "$out/${size}x${size}/$id.png"
done
