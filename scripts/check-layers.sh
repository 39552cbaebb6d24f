#!/usr/bin/env bash
# Checks that the layers point one way and that every command goes through
# base's runner.  Run by CTest as lint.layers; prints each breach and exits 1.
#
#   base/ -> nothing of cmdlib/
#   public headers (base/*.h, cmdlib/*.h) -> other public headers, by bare
#     name (they are installed flat in one folder), never an internal one
#   everything else -> project headers by a path that names the layer
#     ("base/libbase.h", "base/internal/text.h", "cmdlib/network.h", ...)
#   cmdlib_config -> no module family
#   system() and popen() -> only in base/shell.cpp
set -uo pipefail
cd "$(dirname "$0")/.."

fail=0
breach() {
  echo "$1"
  fail=1
}

# Quoted includes of a file as "path:line:name" lines.
includes() {
  grep -Hn -E '^[[:space:]]*#[[:space:]]*include[[:space:]]+"' "$@" 2>/dev/null |
    sed -E 's/^([^:]+:[0-9]+):.*#[[:space:]]*include[[:space:]]+"([^"]+)".*/\1:\2/'
}

is_project_header() {  # bare name of a header in one of the layers
  [ -e "base/$1" ] || [ -e "base/internal/$1" ] || [ -e "cmdlib/$1" ] || [ -e "cmdlib/internal/$1" ]
}

# 1. base/ includes nothing above it.
while IFS=: read -r file line name; do
  case "$name" in
    cmdlib/*) breach "$file:$line: base/ includes $name from the layer above" ;;
    */*) ;;
    *) if [ -e "cmdlib/$name" ] || [ -e "cmdlib/internal/$name" ]; then
         breach "$file:$line: base/ includes $name from the layer above"
       fi ;;
  esac
done < <(includes base/*.cpp base/*.h base/internal/*.h)

# 2. Public headers include public headers by bare name only.
while IFS=: read -r file line name; do
  if [[ "$name" == */* ]] || { [ ! -e "base/$name" ] && [ ! -e "cmdlib/$name" ]; }; then
    breach "$file:$line: public header includes $name (only other public headers, by bare name)"
  fi
done < <(includes base/*.h cmdlib/*.h)

# 3. Everything else names the layer of each project header it includes.
mapfile -t others < <(ls base/*.cpp base/internal/*.h cmdlib/*.cpp cmdlib/internal/*.h \
  tests/unit/*.cpp tests/unit/*.c tests/device/*_test.cpp fuzz/*.cpp bench/*.cpp \
  tools/cmdlibctl/*.cpp tools/cmdlibctl/*.h 2>/dev/null)
while IFS=: read -r file line name; do
  if [[ "$name" == internal/* ]] || { [[ "$name" != */* ]] && is_project_header "$name"; }; then
    breach "$file:$line: include \"$name\" does not name its layer (base/... or cmdlib/...)"
  fi
done < <(includes "${others[@]}")

# 4. base/internal is base's own: it includes nothing of cmdlib/ (covered by
#    1) and cmdlib/internal reaches base only through base/ paths (by 3).

# 5. The configuration store knows no module: the modules' key lists are
#    handed to it, never included by it.
while IFS=: read -r file line name; do
  case "$name" in
    cmdlib/cmdlib_config.h | base/* | cmdlib/internal/checksum.h | cmdlib/internal/config_*.h) ;;
    cmdlib/*) breach "$file:$line: the configuration store includes $name" ;;
  esac
done < <(includes cmdlib/cmdlib_config.cpp cmdlib/internal/config_parse.h cmdlib/internal/config_cache.h)

# 6. One runner: no system() or popen() outside base/shell.cpp.
while IFS= read -r hit; do
  breach "$hit: command run outside base's runner"
done < <(grep -Hn -E '(^|[^_[:alnum:].>])(system|popen)[[:space:]]*\(' base/*.cpp base/internal/*.h \
           cmdlib/*.cpp cmdlib/internal/*.h | grep -v '^base/shell.cpp:' |
         grep -v -E ':[0-9]+:[[:space:]]*(//|/\*|\*)')

if [ "$fail" -eq 0 ]; then
  echo "layers: base <- cmdlib/internal <- cmdlib, one runner: ok"
fi
exit "$fail"
