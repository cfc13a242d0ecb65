#!/usr/bin/env bash
# Installs the Debian 12 packages Zarek builds, runs and tests with; only what is missing.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  qt6-base-dev qt6-base-dev-tools qt6-charts-dev libqt6opengl6-dev libqt6sql6-sqlite libqt6sql6-psql libgl-dev qt6-translations-l10n
  libsodium-dev libxlsxwriter-dev libpq-dev libsqlite3-dev fonts-dejavu-core
)
if [ "${1:-}" = "--test" ]; then
  # clang-14 with its runtime libraries: ASan, UBSan and libFuzzer for scripts/test-sanitizers.sh.
  packages+=(postgresql xvfb xauth poppler-utils unzip clang-14 libclang-rt-14-dev)
  # The package check: the validators of desktop entries and AppStream data, lintian, and
  # rsvg-convert that draws the icon's pictures from its SVG.
  packages+=(desktop-file-utils appstream lintian librsvg2-bin)
fi

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
echo "Installing: ${missing[*]}"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
