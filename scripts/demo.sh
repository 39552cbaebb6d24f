#!/bin/bash
# Builds the library and runs the cmdlibctl demo inside a throwaway device
# prepared with a realistic router state.
#   usage: bash scripts/demo.sh [BUILD_DIR]   (default: build/)
set -eu
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bash "$ROOT/scripts/install-deps.sh"
mkdir -p "${1:-$ROOT/build}"
BUILD=$(cd "${1:-$ROOT/build}" && pwd)
cmake -S "$ROOT" -B "$BUILD" -G Ninja >/dev/null
cmake --build "$BUILD" -j"$(nproc)" --target cmdlibctl device_sim >/dev/null
CTL=$BUILD/cmdlibctl
[[ -x $CTL ]] || { echo "demo: $CTL is not built" >&2; exit 1; }
[[ -x $BUILD/tools/device/device_sim ]] || { echo "demo: the device simulators are not built (target device_sim)" >&2; exit 1; }

# Each cmdlibctl subcommand that exists in this build is shown; the list
# follows what the families have registered ("cmdlibctl help").
exec "$ROOT/tools/device/run-in-device" --build "$BUILD" --state "$ROOT/tools/device/demo-state.sh" -- \
    bash -c '
CTL=$1
run() { printf "\n\$ cmdlibctl %s\n" "$*"; "$CTL" "$@" || printf "(exit %d)\n" $?; }
available=$("$CTL" help | awk "/^  /{print \$1}")
has() { grep -qx "$1" <<<"$available"; }
echo "== cmdlib demo on a simulated fibocom_t750 router =="
run help
has sysinfo  && run sysinfo /version
has features && run features
has config   && run config get QX_FOTA_URL
has lte      && run lte status
has sim      && run sim
has bands    && run bands 00000085
has signal   && run signal -95
has at       && run at ATI
has net      && run net
has neigh    && run neigh
has hosts    && run hosts
has nat      && run nat
has ps       && run ps dnsmasq
has usb      && run usb ports
has cat      && run cat /tmp/cmdlib/.system_signal_sim_status_ind
has resolve  && run resolve www.operator.example
has resolve  && run resolve fota.operator.example --server 0.0.0.0 --server2 10.64.0.53 --dev usb0 --src 10.64.0.2
has probe    && run probe dns6 fota.operator.example 2001:db8:64::53
has lns      && run lns probe 10.64.0.1
has url      && run url host https://admin@10.64.0.80:8443/fw/t750.bin
has ntp      && run ntp
printf "\n== firmware tools the library called ==\n"
cat /var/lib/device/calls.log
' demo "$CTL"
