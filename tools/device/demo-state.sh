#!/bin/bash
# A realistic router state for the demo, run inside a fresh device by
# "run-in-device --state tools/device/demo-state.sh": the configuration in
# the mdlcfg store and in the settings dump, module, status and version
# files, factory identity, and a few LAN neighbours.
set -e

# Configuration store (what "mdlcfg -e/-g" answer).
while IFS='=' read -r key value; do
    [[ -n $key ]] && mdlcfg -a "$key=$value"
done <<'SETTINGS'
QX_DEVICE_TYPE=fibocom_t750
QX_CONFIG_APN_NAME=internet.operator.example
QX_CONFIG_APN_NAME3=ims
QX_AUTH_NAME=
QX_CPE_ROUTER_MODE=router
QX_DHCP_IP_BEGIN=192.168.1.100
QX_DHCP_IP_END=192.168.1.200
QX_DHCP_EXPIRE_TIME=86400
QX_DNS_PRIMARY=10.64.0.53
QX_DNS_SECONDARY=10.64.0.54
QX_ENABLE_WIFI=yes
QX_ENABLE_WATCHDOG=yes
QX_FORBID_ROAMING=no
QX_FOTA_URL=https://fota.operator.example/t750
QX_FOTA_ON_BOOT=yes
QX_ADMIN_WEB_PAGE_HIDE=no
QX_BAND_PREF=LTE B1 B3 B7 B20
SYS_SIM_SLOT_CONFIG=0
USR_WLAN2G_SWITCH_0=1
USR_WLAN5G_SWITCH_0=1
SETTINGS
mdlcfg -c

# The platform's settings dump: the same settings in export form.
mkdir -p /tmp/cmdlib
mdlcfg -e >/tmp/cmdlib/rc.system.conf
echo 'export QX_SSID_0="Router-5G-A1B2"' >>/tmp/cmdlib/rc.system.conf

# What the modem daemon writes: module identity, radio cache, status line
# (SIM present, no PIN/PUK, signal 23, registered on LTE, data up).
cat >/tmp/cmdlib/.moduleinfo <<'INFO'
phy:FM350-GL
hlp:81600.0000.00.29.19.12
imei:867530012345678
imsi:001010123456789
modversion:81600.0000.00.29.19.12_GC
modbuilddate:2024-03-18
RSSI:-61
LAC:1A2B
CellID:01A2D101
iccid:8949010012345678901
PLMN:00101
AcT:7
band_pref:LTE
INFO
cat >/tmp/cmdlib/.cached_lte_module_status <<'STATUS'

+QXGLBCELLID: 01A2D101
+QXBAND: 3
+QXBANDWIDTH: 20
+QXRSRP: -92
+QXRSRQ: -10
+QXRSSI: -61
+QXSINR: 14
+QXEARFCN: 1300
+QXPHYCELLID: 301
STATUS
echo "1 0 0 23 0 1 1 1 7 1" >/tmp/cmdlib/.system_signal_sim_status_ind
touch /tmp/cmdlib/.display_wifi_settings_page

# Firmware and factory identity.
cat >/version <<'VERSION'
V1.2.10
type:fibocom_t750
version:V1.2.10
hwversion:HW1.0
device:T750-CPE
build:20240318
VERSION
mkdir -p /productinfo
echo 867530012345678 >/productinfo/imei
echo 02:00:c0:a8:01:01 >/productinfo/mac

# WAN DNS servers and LAN neighbours (reachable clients on br0).
echo "nameserver 10.64.0.53" >/var/run/resolv.conf
ip neigh replace 192.168.1.100 lladdr 02:00:c0:a8:01:64 dev br0 nud reachable
ip neigh replace 192.168.1.101 lladdr 3c:22:fb:10:20:30 dev br0 nud reachable
ip neigh replace 192.168.1.102 lladdr a4:83:e7:44:55:66 dev br0 nud stale
ip neigh replace 10.64.0.1 lladdr 02:00:0a:40:00:01 dev usb0 nud reachable
cat >/tmp/dnsmasq.leases <<'LEASES'
1893456000 3c:22:fb:10:20:30 192.168.1.101 laptop-anna 01:3c:22:fb:10:20:30
1893456000 a4:83:e7:44:55:66 192.168.1.102 phone-ben *
LEASES

# The module answers ATI, and the DNS/DHCP daemon is running.
mkdir -p /var/lib/device/sendat
printf '\r\nFibocom Wireless Inc.\r\nFM350-GL\r\nRevision: 81600.0000.00.29.21.10\r\n\r\nOK\r\n' >/var/lib/device/sendat/1.resp
echo 0 >/var/lib/device/sendat/1.delay
printf 'ATI' >/var/lib/device/sendat/1.cmd
(exec -a dnsmasq sleep 100000) &

# The operator's DNS server (10.64.0.53, 2001:db8:64::53) and L2TP network
# server (10.64.0.1) on the far side of usb0.
OPERATOR="nsenter --net=/var/lib/device/ns/operator"
$OPERATOR ip addr add 10.64.0.53/24 dev wan0
$OPERATOR ip addr add 2001:db8:64::53/64 dev wan0 nodad
mkdir -p /tmp/operator
cat >/tmp/operator/hosts <<'HOSTS'
10.64.0.80 fota.operator.example
10.64.0.81 fota.operator.example
2001:db8:64::80 fota.operator.example
HOSTS
$OPERATOR dnsmasq --conf-file=/dev/null --no-resolv --no-hosts --addn-hosts=/tmp/operator/hosts \
    --bind-interfaces --listen-address=10.64.0.53 --listen-address=2001:db8:64::53 \
    --local=/operator.example/ --cname=www.operator.example,fota.operator.example \
    --pid-file=/tmp/operator/dnsmasq.pid
printf '[global]\nlisten-addr = 10.64.0.1\n[lns default]\nip range = 10.99.0.10-10.99.0.20\nlocal ip = 10.99.0.1\nhostname = lns.operator.example\n' \
    >/tmp/operator/xl2tpd.conf
$OPERATOR xl2tpd -c /tmp/operator/xl2tpd.conf -p /tmp/operator/xl2tpd.pid -C /tmp/operator/l2tp-control
