#!/usr/bin/env bash
# Installs a build into scratch prefixes and builds tests/package/consumer.c
# the ways a firmware developer would: through pkg-config (shared, and
# static from a prefix that holds only the development files) and through
# find_package(cmdlib).  Also checks what the runtime component alone holds.
#   usage: tests/package/install_test.sh BUILD_DIR
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$(cd "$1" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { echo "install_test: $*" >&2; exit 1; }
want="00000020 /24"
cc=${CC:-cc}

# 1. Everything into one prefix: shared link through pkg-config.
full=$scratch/full
cmake --install "$build" --prefix "$full" >/dev/null
pc_dir=$(dirname "$(find "$full" -name cmdlib.pc)")
[ -n "$pc_dir" ] || fail "no cmdlib.pc installed"
export PKG_CONFIG_PATH=$pc_dir
grep -qx "prefix=$full" "$pc_dir/cmdlib.pc" || fail "cmdlib.pc does not name the install prefix"
# shellcheck disable=SC2046  # pkg-config output is a list of words
"$cc" -o "$scratch/shared" "$here/consumer.c" $(pkg-config --cflags --libs cmdlib)
got=$(LD_LIBRARY_PATH=$(pkg-config --variable=libdir cmdlib) "$scratch/shared")
[ "$got" = "$want" ] || fail "pkg-config consumer printed '$got', not '$want'"
[ -x "$full/bin/cmdlibctl" ] || fail "cmdlibctl is not installed"
"$full/bin/cmdlibctl" bits 5 | grep -qx 00000020 || fail "installed cmdlibctl does not find its libraries"

# 2. The CMake package, from the same prefix.
cmake -S "$here" -B "$scratch/consumer" -DCMAKE_PREFIX_PATH="$full" >/dev/null ||
  fail "find_package(cmdlib) failed"
cmake --build "$scratch/consumer" >/dev/null || fail "the find_package consumer does not build"
for exe in consumer consumer_static; do
  got=$(LD_LIBRARY_PATH=$(pkg-config --variable=libdir cmdlib) "$scratch/consumer/$exe")
  [ "$got" = "$want" ] || fail "find_package $exe printed '$got', not '$want'"
done

# 3. The runtime component alone: the versioned shared libraries, nothing else.
runtime=$scratch/runtime
cmake --install "$build" --prefix "$runtime" --component runtime >/dev/null
got=$(cd "$runtime" && find . -type f -o -type l | sed 's|^\./[^/]*/||' | sort | tr '\n' ' ')
[ "$got" = "libcmdlib-base.so.1 libcmdlib-base.so.1.0.0 libcmdlib.so.1 libcmdlib.so.1.0.0 " ] ||
  fail "runtime component holds: $got"

# 4. A static link from the development files alone (no shared library to
#    fall back on): Requires.private and Libs.private must carry it.
dev=$scratch/dev
cmake --install "$build" --prefix "$dev" --component dev >/dev/null
PKG_CONFIG_PATH=$(dirname "$(find "$dev" -name cmdlib.pc)")
# shellcheck disable=SC2046
"$cc" -o "$scratch/static" "$here/consumer.c" $(pkg-config --static --cflags --libs cmdlib)
got=$("$scratch/static")
[ "$got" = "$want" ] || fail "static pkg-config consumer printed '$got', not '$want'"
if readelf -d "$scratch/static" | grep -q 'NEEDED.*libcmdlib'; then
  fail "the static consumer still needs a shared libcmdlib"
fi
echo "install_test: pkg-config (shared, static), find_package (shared, static), runtime component: ok"
