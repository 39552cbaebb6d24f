#!/usr/bin/env bash
# The ABI guard against planted changes: a sample library is recorded with
# scripts/check-abi.sh --update, then rebuilt with one change at a time.
# An added function passes; a removed function and a changed record layout
# fail with abidiff's report naming them.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
guard=$here/../../scripts/check-abi.sh
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export CMDLIB_ABI_DIR=$work/abi
cc=${CC:-cc}
failed=0

# Both libraries the guard knows, from the sample with the given defines.
build() {
  for lib in libcmdlib libcmdlib-base; do
    "$cc" -g -O2 -shared -fPIC -fvisibility=hidden "$@" "$here/sample.c" -o "$work/$lib.so" || exit 1
  done
}

# expect CASE WANT_STATUS TEXT_IN_REPORT [DEFINES...]
expect() {
  local name=$1 want=$2 text=$3
  shift 3
  build "$@"
  local out rc=0
  out=$(bash "$guard" "$work" 2>&1) || rc=$?
  if [ "$rc" -ne "$want" ] || ! grep -q -- "$text" <<<"$out"; then
    echo "FAIL $name: status $rc (want $want), report lacks '$text':"
    echo "$out"
    failed=1
  else
    echo "ok   $name"
  fi
}

build
bash "$guard" --update "$work" >/dev/null || { echo "FAIL: --update"; exit 1; }
expect unchanged 0 "ABI unchanged"
expect added 0 "additions only" -DPLANT_ADD
expect removed 1 "sample_count" -DPLANT_REMOVE
expect layout 1 "'int inserted', at offset 32" -DPLANT_LAYOUT
exit "$failed"
