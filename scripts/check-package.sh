#!/usr/bin/env bash
# Makes the Debian package from the build in build/ (or $ZAREK_BUILD_DIR) and checks it: its
# contents and dependencies, the desktop entry and the AppStream data with their validators,
# lintian with no errors, and the program from the unpacked tree started offscreen to its first
# window and closed.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${ZAREK_BUILD_DIR:-$root/build}"
id=bg.zarek.Zarek
fail() { echo "Package check: $*" >&2; exit 1; }

# The icons in the package are the SVG drawn anew.
icons="$(mktemp -d /tmp/zarek-icons-XXXXXX)"
unpacked="$(mktemp -d /tmp/zarek-deb-XXXXXX)"
trap 'rm -rf "$icons" "$unpacked"' EXIT
"$root/scripts/icons.sh" "$icons"
for size in 48 64 128 256; do
  cmp -s "$icons/${size}x${size}/$id.png" "$root/packaging/icons/${size}x${size}/$id.png" \
    || fail "packaging/icons/${size}x${size}/$id.png is not the SVG drawn anew: run scripts/icons.sh"
done

rm -f "$build"/zarek_*.deb
cmake --build "$build" --target package -j"$(nproc)" >/dev/null
deb="$(ls "$build"/zarek_*.deb)"
echo "Package: $deb"

contents="$(dpkg-deb -c "$deb" | awk '{print $6}' | sed 's|^\./|/|')"
for path in /usr/bin/zarek /usr/lib/zarek/libzarek_core.so /usr/lib/zarek/libzarek_widgets.so /usr/lib/zarek/libzarek_start.so /usr/lib/zarek/libzarek_ui.so /usr/lib/zarek/libzarek_app.so \
            /usr/share/applications/$id.desktop /usr/share/metainfo/$id.metainfo.xml \
            /usr/share/icons/hicolor/scalable/apps/$id.svg /usr/share/icons/hicolor/48x48/apps/$id.png \
            /usr/share/icons/hicolor/64x64/apps/$id.png /usr/share/icons/hicolor/128x128/apps/$id.png \
            /usr/share/icons/hicolor/256x256/apps/$id.png /usr/share/man/man1/zarek.1.gz \
            /usr/share/doc/zarek/copyright /usr/share/doc/zarek/changelog.gz /usr/share/doc/zarek/guide/README.md; do
  grep -qx "$path" <<<"$contents" || fail "$path is missing"
done
depends="$(dpkg-deb -f "$deb" Depends)"
for package in libqt6sql6-sqlite libqt6sql6-psql qt6-qpa-plugins qt6-translations-l10n libqt6widgets6 libsodium23 libxlsxwriter libpq5; do
  grep -q "$package" <<<"$depends" || fail "Depends lacks $package: $depends"
done

dpkg-deb -x "$deb" "$unpacked"
desktop-file-validate "$unpacked/usr/share/applications/$id.desktop"
appstreamcli validate --no-net --pedantic "$unpacked/usr/share/metainfo/$id.metainfo.xml"
zcat "$unpacked/usr/share/man/man1/zarek.1.gz" | grep -q '^\.SH NAME' || fail "the manual page has no NAME"
lintian --fail-on error "$deb" || fail "lintian found errors"

# The unpacked program uses its own libraries, answers in Bulgarian, and starts to its first window.
program="$unpacked/usr/bin/zarek"
ldd "$program" | grep -q "libzarek_start.so => $unpacked/usr/" || fail "the program does not find its own libraries"
"$program" --version | grep -qx "Зарек, версия [0-9.]*" || fail "zarek --version"
"$program" --help | grep -q "^Употреба: zarek" || fail "zarek --help"
first="$(cd "$unpacked" && QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8 timeout 60 "$program" --probe-start \
           --database "$unpacked/probe/Zarek.db" 2>"$unpacked/stderr.txt")" || { cat "$unpacked/stderr.txt" >&2; fail "the program did not start and close"; }
[ "$first" = "FirstStart: Зарек – първоначално въвеждане" ] || fail "first window: '$first'"
echo "Package check passed: $(basename "$deb")"
