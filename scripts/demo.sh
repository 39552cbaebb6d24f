#!/bin/bash
# Builds the library and runs the cmdlibctl demo inside a throwaway device
# prepared with a realistic router state.
#   usage: bash scripts/demo.sh [BUILD_DIR]   (default: build/)
set -eu
ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
bash "$ROOT/scripts/install-deps.sh"
mkdir -p "${1:-$ROOT/build}"
BUILD=$(cd "${1:-$ROOT/build}" && pwd)
# The device and its simulators are part of the test build.
cmake -S "$ROOT" -B "$BUILD" -G Ninja -DCMDLIB_BUILD_TESTS=ON >/dev/null
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
has route    && run route fix /etc/cmdlib/routes.checkers
has nat      && run nat fix /etc/cmdlib/rules.checkers 2>/dev/null
has monitor  && { (sleep 0.3; ip link add demo0 type veth peer name demo1; ip addr add 10.99.0.1/24 dev demo0; ip link del demo0) &
                  run monitor link addr --timeout 1; }
has ps       && run ps dnsmasq
has usb      && run usb ports
has cat      && run cat /tmp/cmdlib/.system_signal_sim_status_ind
has identity && run identity
has upgrade  && run upgrade check /data/web_upload/T750_V1.3.0_20240501.img T750
has upgrade  && run upgrade version T750_V1.1.0_20230101.img
has fota     && run fota http://10.64.0.1:8080/fw.img 19 "$(md5sum </tmp/www/fw.img | cut -c1-32)"
has mesh     && run mesh
has urlblock && run urlblock ads.example "http://tracker.example/x?id=1"
has dhcp     && run dhcp restart
has dhcp     && run dhcp leases
has mac      && run mac set 02:00:c0:a8:01:64 AP_IPADDR=192.168.10.1 "WIFI2G_SSID[0]=Lounge"
has mac      && run mac list
has ipv6     && run ipv6 eui64 02:00:c0:a8:01:01
has ipv6     && run ipv6 dns 2001:db8:64::53 2001:db8:64::54
has resolve  && run resolve www.operator.example
has resolve  && run resolve fota.operator.example --server 0.0.0.0 --server2 10.64.0.53 --dev usb0 --src 10.64.0.2
has probe    && run probe dns6 fota.operator.example 2001:db8:64::53
has lns      && run lns probe 10.64.0.1
has url      && run url host https://admin@10.64.0.80:8443/fw/t750.bin
has ntp      && run ntp
has export   && run export
has export   && run export --json
has macros   && { printf "\n\$ cmdlibctl --json macros /tmp/cmdlib/macros.sh | jq -c \x27{file, lines, macros: (.macros|length)}\x27\n"
                  "$CTL" --json macros /tmp/cmdlib/macros.sh | jq -c "{file, lines, macros: (.macros|length)}"; }
has macros   && { echo; echo "\$ . /tmp/cmdlib/macros.sh"; sh -c ". /tmp/cmdlib/macros.sh && env | grep -E ^REAL_ | sort"; }
has front    && run front util_get_device_imei
has front    && run front util_restart_wifi
has front    && run front --json util_get_upload_path T750_V1.3.0_20240501.img
has snmp     && run snmp list
has snmp     && run snmp get RSRP
has snmp     && run snmp set FOTASTATUS downloading
has snmp     && run snmp --json get FOTASTATUS
# The same views for scripts: one JSON object per command (docs/cmdlibctl.md).
has sim      && run --json sim
has hosts    && { printf "\n\$ cmdlibctl --json hosts | jq -c \x27.hosts[] | {name, ip, online}\x27\n"
                  "$CTL" --json hosts | jq -c ".hosts[] | {name, ip, online}"; }
printf "\n== firmware tools the library called ==\n"
cat /var/lib/device/calls.log
' demo "$CTL"
