#!/usr/bin/env bash
# Installs what building, testing and the demo need (Debian, as root).
# Quiet and quick when everything is there already.
#   scripts/install-deps.sh            the native build, tests and demo
#   scripts/install-deps.sh --aarch64  also the 64-bit Arm cross build and
#                                      qemu-user to run its tests
#   scripts/install-deps.sh --fuzz     also clang and its libFuzzer and
#                                      sanitizer runtimes (scripts/fuzz.sh)
set -euo pipefail
# The ABI guard (scripts/check-abi.sh) of the native tests.
extra=(abigail-tools)
if [ "${1:-}" = "--fuzz" ]; then
  extra+=(clang libclang-rt-dev)
fi
if [ "${1:-}" = "--aarch64" ]; then
  # The cross toolchain, the target's libraries (multiarch) and the emulator.
  extra+=(g++-aarch64-linux-gnu libcjson-dev:arm64 pkgconf:arm64 libgtest-dev:arm64
          libgmock-dev:arm64 qemu-user)
  if ! dpkg --print-foreign-architectures | grep -qx arm64; then
    if [ "$(id -u)" -eq 0 ]; then dpkg --add-architecture arm64; else sudo dpkg --add-architecture arm64; fi
  fi
fi
pkgs=(cmake ninja-build g++ pkg-config libcjson-dev googletest libgtest-dev libgmock-dev
      libbenchmark-dev iproute2 iptables conntrack dnsmasq-base udhcpd xl2tpd arping psmisc
      procps passwd util-linux busybox net-tools
      nettle-dev wget jq)
# The real SNMP agent and manager that serve and read the SNMP parameters.
pkgs+=(snmpd snmp)
missing=()
for p in "${pkgs[@]}" "${extra[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -qq
  $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
