#!/usr/bin/env bash
# Builds the fuzz build (build-fuzz/: clang, every library object instrumented
# for libFuzzer, ASan and UBSan) and runs every fuzz target in turn.
#   scripts/fuzz.sh [SECONDS] [NAME...]   SECONDS per target (default 60);
#                                         NAMEs limit the run (default: every
#                                         fuzz/<name>_fuzz.cpp)
# Each target starts from its committed corpus fuzz/corpus/<name>/ and writes
# new inputs to a scratch folder; afterwards the inputs that add coverage are
# merged back into fuzz/corpus/<name>/ (named by the SHA-1 of their content),
# and any crash, leak, timeout or out-of-memory input is copied there too, so
# the fuzz.<name> tests replay it from then on.  Exits non-zero when a target
# failed.  A summary table (executions, exec/s, libFuzzer's final cov: and
# ft:, corpus files before -> after) closes the run.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

secs=${1:-60}
[[ $secs =~ ^[1-9][0-9]*$ ]] || { echo "usage: scripts/fuzz.sh [SECONDS] [NAME...]" >&2; exit 2; }
shift $(($# > 0 ? 1 : 0))

# clang and its libFuzzer/sanitizer runtimes come with --fuzz.
bash scripts/install-deps.sh --fuzz

build=$root/build-fuzz
# A folder configured with another compiler cannot be switched in place.
if [ -f "$build/CMakeCache.txt" ] && ! grep -q '^CMAKE_CXX_COMPILER:[A-Z]*=.*clang' "$build/CMakeCache.txt"; then
  rm -rf "$build"
fi
CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMDLIB_BUILD_FUZZ=ON \
  -DCMDLIB_BUILD_TESTS=OFF -DCMDLIB_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j"$(nproc)"

if [ $# -gt 0 ]; then
  names=("$@")
else
  names=()
  for src in fuzz/*_fuzz.cpp; do names+=("$(basename "$src" _fuzz.cpp)"); done
fi

count_files() { find "$1" -maxdepth 1 -type f | wc -l; }
# The last "cov: N ft: M" libFuzzer printed, and one of its final stats.
last_field() { grep -o "$1: [0-9]*" "$2" | tail -n 1 | awk '{print $2}' || true; }
final_stat() { awk -v k="stat::$1:" '$1 == k {print $2}' "$2" || true; }

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
runs=$build/fuzz-runs
failed=()
table=("| target | executions | exec/s | cov | ft | corpus files before -> after | result |"
       "|---|---:|---:|---:|---:|---|---|")
for name in "${names[@]}"; do
  bin=$build/fuzz/${name}_fuzzer
  corpus=$root/fuzz/corpus/$name
  [ -x "$bin" ] || { echo "fuzz.sh: no fuzzer $bin (is there a fuzz/${name}_fuzz.cpp?)" >&2; exit 2; }
  mkdir -p "$corpus"
  work=$runs/$name
  rm -rf "$work"
  mkdir -p "$work/new" "$work/artifacts"
  before=$(count_files "$corpus")
  echo "== $name: ${secs}s from $before corpus files"
  # New inputs go to the scratch folder (the first one named); the committed
  # corpus is only read.  The working directory is scratch too, so nothing
  # the fuzzer or the sanitizers write lands elsewhere.
  status=0
  (cd "$work" && "$bin" -max_total_time="$secs" -timeout=10 -rss_limit_mb=2048 \
     -print_final_stats=1 -artifact_prefix="$work/artifacts/" new "$corpus") >"$work/fuzz.log" 2>&1 || status=$?
  # Keep only what adds coverage to the committed corpus; libFuzzer names
  # the added files by the SHA-1 of their content.
  (cd "$work" && "$bin" -merge=1 -merge_control_file="$work/merge.ctl" "$corpus" new) >"$work/merge.log" 2>&1 || {
    echo "fuzz.sh: merging into $corpus failed, see $work/merge.log" >&2
    [ "$status" -ne 0 ] || status=1
  }
  result=ok
  for a in "$work"/artifacts/*; do
    [ -f "$a" ] || continue
    base=$(basename "$a")
    case $base in
      crash-* | leak-* | timeout-* | oom-*)
        cp "$a" "$corpus/$base"
        echo "fuzz.sh: $name: $base saved as fuzz/corpus/$name/$base"
        result=$base ;;
    esac
  done
  if [ "$status" -ne 0 ] && [ "$result" = ok ]; then result="exit $status"; fi
  if [ "$result" != ok ]; then
    failed+=("$name")
    echo "fuzz.sh: $name FAILED ($result); log: $work/fuzz.log" >&2
    grep -m 1 -E '^==[0-9]+==ERROR|runtime error|^SUMMARY' "$work/fuzz.log" >&2 || true
  fi
  after=$(count_files "$corpus")
  table+=("| $name | $(final_stat number_of_executed_units "$work/fuzz.log") | $(final_stat average_exec_per_sec "$work/fuzz.log") | $(last_field cov "$work/fuzz.log") | $(last_field ft "$work/fuzz.log") | $before -> $after | $result |")
done

# The merged corpus, saved failures included, through the instrumented
# replay programs: what the fuzz.<name> tests will run.
replayed=ok
ctest --test-dir "$build" -R "^fuzz\.($(IFS='|'; echo "${names[*]}"))\$" --output-on-failure >"$runs/replay.log" 2>&1 || replayed=failed
echo "replay of the merged corpus: $replayed ($runs/replay.log)"

echo
echo "fuzz.sh: $(date -u +%Y-%m-%d), ${secs}s per target, clang $(clang -dumpversion)"
printf '%s\n' "${table[@]}"
if [ "$replayed" != ok ] && [ ${#failed[@]} -eq 0 ]; then
  echo "fuzz.sh: the corpus replay failed although every fuzzer ran clean: see $runs/replay.log" >&2
  exit 1
fi
if [ ${#failed[@]} -gt 0 ]; then
  echo "fuzz.sh: failed: ${failed[*]} (inputs saved under fuzz/corpus/<name>/; replay with the fuzz.<name> tests)" >&2
  exit 1
fi
