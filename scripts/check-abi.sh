#!/usr/bin/env bash
# Guards the ABI of the shared libraries against the committed description
# in abi/ (written by abidw from a RelWithDebInfo build, so DWARF is there).
#
#   scripts/check-abi.sh [BUILD_DIR]           compare (default build/)
#   scripts/check-abi.sh --update [BUILD_DIR]  rewrite abi/*.abi from the build
#
# Fails (exit 1, with abidiff's report) on what breaks a program built
# against the description: a removed function or variable, or a changed
# layout of a type the API uses.  Additions pass: the program still works;
# the description is refreshed on purpose with --update and committed.
# CMDLIB_ABI_DIR replaces abi/ (the guard's own test uses it).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
abi_dir=${CMDLIB_ABI_DIR:-$root/abi}
libs=(libcmdlib libcmdlib-base)

update=0
if [ "${1:-}" = "--update" ]; then
  update=1
  shift
fi
build=${1:-$root/build}

for tool in abidw abidiff; do
  command -v "$tool" >/dev/null || { echo "check-abi: $tool not found (Debian: abigail-tools)" >&2; exit 2; }
done
# The description is made from one configuration: RelWithDebInfo, the
# project's default (an empty build type in the cache).
if [ -f "$build/CMakeCache.txt" ]; then
  type=$(sed -n 's/^CMAKE_BUILD_TYPE:[A-Z]*=//p' "$build/CMakeCache.txt")
  if [ "${type:-RelWithDebInfo}" != RelWithDebInfo ]; then
    echo "check-abi: $build is a '$type' build; the description is made from RelWithDebInfo" >&2
    exit 2
  fi
fi

# The ABI as abidw sees it: exported interfaces only, no source locations,
# type ids that do not depend on declaration order, and the paths of the
# checkout and build tree left out, so the text changes only with the ABI.
describe() {
  abidw --exported-interfaces-only --no-show-locs --no-comp-dir-path --no-corpus-path \
        --type-id-style hash "$1" |
    sed -e "s|path='$root/|path='|" -e "s|path='$build/|path='|"
}

status=0
added=()
for lib in "${libs[@]}"; do
  so=$build/$lib.so
  [ -e "$so" ] || { echo "check-abi: $so is not built" >&2; exit 2; }
  if [ "$update" -eq 1 ]; then
    mkdir -p "$abi_dir"
    describe "$so" >"$abi_dir/$lib.abi"
    echo "check-abi: wrote ${abi_dir#"$root"/}/$lib.abi"
    continue
  fi
  ref=$abi_dir/$lib.abi
  [ -f "$ref" ] || { echo "check-abi: no description $ref (scripts/check-abi.sh --update)" >&2; exit 2; }
  # First everything but additions: any difference left breaks callers.
  # abidiff's status is a bit set: 1 error, 2 usage, 4 change, 8 incompatible.
  rc=0
  report=$(abidiff --no-added-syms "$ref" "$so") || rc=$?
  if [ "$rc" -ne 0 ]; then
    if [ $((rc & 3)) -ne 0 ]; then
      echo "check-abi: abidiff could not compare $lib (status $rc):" >&2
    else
      echo "check-abi: $lib: incompatible ABI change against ${ref#"$root"/}:" >&2
    fi
    echo "$report" >&2
    status=1
    continue
  fi
  rc=0
  report=$(abidiff "$ref" "$so") || rc=$?
  if [ "$rc" -ne 0 ]; then
    added+=("$lib")
    echo "$report"
  fi
done

if [ "$update" -eq 0 ] && [ "$status" -eq 0 ]; then
  if [ ${#added[@]} -gt 0 ]; then
    echo "check-abi: ${added[*]}: additions only, compatible. Record them on purpose:" \
         "scripts/check-abi.sh --update, then commit abi/."
  else
    echo "check-abi: ${libs[*]}: ABI unchanged"
  fi
fi
exit "$status"
