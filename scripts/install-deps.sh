#!/usr/bin/env bash
# Installs what building, testing and the demo need (Debian, as root).
# Quiet and quick when everything is there already.
set -euo pipefail
pkgs=(cmake ninja-build g++ pkg-config libcjson-dev googletest libgtest-dev libgmock-dev
      libbenchmark-dev iproute2 iptables conntrack dnsmasq-base udhcpd xl2tpd arping psmisc
      procps passwd util-linux busybox net-tools)
missing=()
for p in "${pkgs[@]}"; do
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
