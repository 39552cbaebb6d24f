#!/usr/bin/env bash
# Builds the library and runs every test (unit, device, fuzz-corpus replay).
#   scripts/test.sh             normal build in build/
#   scripts/test.sh --sanitize  ASan + UBSan build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
dir=build
args=()
if [ "${1:-}" = "--sanitize" ]; then
  dir=build-asan
  args=(-DCMDLIB_SANITIZE=ON -DCMDLIB_BUILD_BENCH=OFF)
fi
cmake -S . -B "$dir" -G Ninja "${args[@]}" >/dev/null
cmake --build "$dir" -j"$(nproc)"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$dir" -j"$(nproc)" --output-on-failure
