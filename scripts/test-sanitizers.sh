#!/usr/bin/env bash
# Builds the GUI-free core and its tests (the CORE tests) with clang's AddressSanitizer and
# UndefinedBehaviorSanitizer into build-sanitize/ (or $ZAREK_SANITIZE_BUILD_DIR), runs them (any
# finding fails the test), then runs the libFuzzer target of the parsers for a bounded time
# ($ZAREK_FUZZ_SECONDS, 20 by default). PostgreSQL rows run when ZAREK_TEST_PG names a server.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="${ZAREK_SANITIZE_BUILD_DIR:-$root/build-sanitize}"
"$root/scripts/install-deps.sh" --test

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
# -O1 keeps the instrumented build quick to compile and still fast to run.
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-g -O1" \
      -DCMAKE_CXX_COMPILER=clang++-14 -DZAREK_SANITIZE=ON "${launcher[@]}" >/dev/null
cmake --build "$build" --target zarek_core_tests fuzz_parsers fuzz_archive -j"$(nproc)"

export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:strict_string_checks=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
(cd "$build" && ctest --output-on-failure -j2)

# New inputs go to a scratch folder; the seeds in the repository stay as they are.
corpus="$(mktemp -d /tmp/zarek-fuzz-XXXXXX)"
trap 'rm -rf "$corpus"' EXIT
# An input that fails is kept in the build folder (and printed), never in the source tree.
"$build/tests/fuzz/fuzz_parsers" -max_total_time="${ZAREK_FUZZ_SECONDS:-20}" -max_len=512 -timeout=10 \
    -artifact_prefix="$build/fuzz-" -print_final_stats=1 "$corpus" "$root/tests/fuzz/corpus"
mkdir -p "$corpus/archive"
# The archive loader, from a good archive it makes itself: inputs are the damage done to it.
"$build/tests/fuzz/fuzz_archive" -max_total_time="${ZAREK_FUZZ_SECONDS:-20}" -max_len=256 -timeout=20 \
    -artifact_prefix="$build/fuzz-archive-" -print_final_stats=1 "$corpus/archive"
