#!/usr/bin/env bash
# Builds the library and runs every test (unit, device, fuzz-corpus replay).
#   scripts/test.sh             normal build in build/
#   scripts/test.sh --sanitize  ASan + UBSan build in build-asan/
#   scripts/test.sh --aarch64   64-bit Arm cross build at -Os in build-aarch64/:
#                               the libraries, cmdlibctl, the unit tests and
#                               corpus replays, run under qemu-user; then the
#                               size budget of the stripped libcmdlib.so
set -euo pipefail
cd "$(dirname "$0")/.."
dir=build
args=()
deps=()
case "${1:-}" in
  --sanitize)
    dir=build-asan
    args=(-DCMDLIB_SANITIZE=ON -DCMDLIB_BUILD_BENCH=OFF) ;;
  --aarch64)
    dir=build-aarch64
    deps=(--aarch64)
    # -Os (MinSizeRel) as the router image is built; the tests run that code.
    args=(-DCMAKE_TOOLCHAIN_FILE=cmake/aarch64-linux-gnu.cmake -DCMAKE_BUILD_TYPE=MinSizeRel) ;;
esac
bash scripts/install-deps.sh "${deps[@]}"
cmake -S . -B "$dir" -G Ninja "${args[@]}" >/dev/null
cmake --build "$dir" -j"$(nproc)"
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$dir" -j"$(nproc)" --output-on-failure

if [ "$dir" = build-aarch64 ]; then
  # Size budget: the stripped libcmdlib.so at -Os stays under 400 KB with
  # every family in (what the router's flash has room for).
  budget=$((400 * 1024))
  stripped=$(mktemp)
  trap 'rm -f "$stripped"' EXIT
  for lib in libcmdlib libcmdlib-base; do
    aarch64-linux-gnu-strip -o "$stripped" "$dir/$lib.so"
    size=$(stat -c %s "$stripped")
    text=$(aarch64-linux-gnu-size "$stripped" | awk 'NR == 2 {print $1}')
    echo "aarch64 -Os stripped $lib.so: $size bytes (text $text)"
    if [ "$lib" = libcmdlib ] && [ "$size" -ge "$budget" ]; then
      echo "size budget: $lib.so is $size bytes, over the $budget-byte budget" >&2
      exit 1
    fi
  done
fi
