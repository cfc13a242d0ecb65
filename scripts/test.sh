#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test on SQLite and PostgreSQL, then makes and
# checks the Debian package, then the sanitizer and fuzz run.
# Uses the server in ZAREK_TEST_PG when set, otherwise starts a throw-away one for the run.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${ZAREK_BUILD_DIR:-$root/build}"
"$root/scripts/install-deps.sh" --test
"$root/scripts/build.sh"
# The benchmarks are compiled (not run), so they keep up with the code they measure.
cmake --build "$build" -j"$(nproc)" --target benchmarks

if [ -z "${ZAREK_TEST_PG:-}" ]; then
  pgdir="$(mktemp -d /tmp/zarek-pg-XXXXXX)"
  chmod 755 "$pgdir"
  trap '"$root/scripts/pg-throwaway.sh" stop "$pgdir"; rm -rf "$pgdir"' EXIT
  ZAREK_TEST_PG="$("$root/scripts/pg-throwaway.sh" start "$pgdir")"
  export ZAREK_TEST_PG
fi
echo "PostgreSQL for the tests: $ZAREK_TEST_PG"
(cd "$build" && ctest --output-on-failure -j2 "$@")

# The Debian package: contents, validators, lintian, and the unpacked program started.
"$root/scripts/check-package.sh"

# The core's tests again under AddressSanitizer and UndefinedBehaviorSanitizer, and the parsers
# under libFuzzer for a bounded time; ZAREK_SANITIZE=0 leaves them out of a quick local run.
if [ "${ZAREK_SANITIZE:-1}" != "0" ]; then
  "$root/scripts/test-sanitizers.sh"
fi
