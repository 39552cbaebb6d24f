#!/bin/bash
# A realistic router state for the demo, run inside a fresh device by
# "run-in-device --state tools/device/demo-state.sh": the configuration in
# the mdlcfg store and in the settings dump, module, status and version
# files, factory identity, WAN traffic through the router's NAT, the LAN
# clients (leases, neighbours and the ARP scan agree on who is there) and
# the USB modem whose serial ports the AT channel uses.
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
AP_IPADDR=192.168.1.1
AP_NETMASK=255.255.255.0
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

# WAN: DNS servers and the gateway, as the dial tool records them; the
# router forwards and masquerades LAN traffic to the WAN.
echo "nameserver 10.64.0.53" >/var/run/resolv.conf
echo 10.64.0.1 >/tmp/cmdlib/.wan_network_card_gateway
sysctl -qw net.ipv4.ip_forward=1
iptables -t nat -A POSTROUTING -o usb0 -j MASQUERADE

# The internet behind the operator: a host that answers pings and a web
# server, both in the operator's namespace.
operator() { nsenter --net=/var/lib/device/ns/operator "$@"; }
operator ip addr add 198.51.100.7/32 dev lo
operator ip addr add 198.51.100.80/32 dev lo
sleep 100000 | operator busybox nc -l -p 443 >/dev/null 2>&1 &

# The LAN: the device's own LAN host 192.168.1.100 (fixed address), and
# laptop-anna, a real host in a namespace of its own behind eth1 with a
# DHCP lease and an open HTTPS connection through the router.  phone-ben
# still holds a lease but has left: no neighbour entry, no scan answer.
ip netns add laptop
ip link add eth1 type veth peer name lap0
ip link set lap0 netns laptop
ip link set eth1 master br0 up
ip -n laptop link set lap0 address 3c:22:fb:10:20:30 up
ip -n laptop addr add 192.168.1.101/24 dev lap0
ip -n laptop route add default via 192.168.1.1
for _ in $(seq 50); do  # until the web server listens (at most 5 s)
    operator ss -Hltn 'sport = :443' | grep -q . && break
    sleep 0.1
done
sleep 100000 | ip netns exec laptop busybox nc 198.51.100.80 443 >/dev/null 2>&1 &
busybox ping -c 1 -W 2 198.51.100.7 >/dev/null
ip neigh replace 192.168.1.100 lladdr 02:00:c0:a8:01:64 dev br0 nud reachable
ip neigh replace 192.168.1.101 lladdr 3c:22:fb:10:20:30 dev br0 nud reachable
ip neigh replace 10.64.0.1 lladdr 02:00:0a:40:00:01 dev usb0 nud reachable
# Leases end a day after they were granted (QX_DHCP_EXPIRE_TIME).
now=$(date +%s)
cat >/tmp/dnsmasq.leases <<LEASES
$((now + 86400 - 3600)) 3c:22:fb:10:20:30 192.168.1.101 laptop-anna 01:3c:22:fb:10:20:30
$((now + 86400 - 30000)) a4:83:e7:44:55:66 192.168.1.102 phone-ben *
LEASES
# The firmware's ARP scanner finds the hosts that answer on the LAN
# ("MAC IP" lines).
mkdir -p /var/lib/device/answers
printf '02:00:c0:a8:01:64 192.168.1.100\n3c:22:fb:10:20:30 192.168.1.101\n' >/var/lib/device/answers/arpscan.out
echo 0 >/var/lib/device/answers/arpscan.rc

# The USB modem (2020:2033) on port 1-1.4, as the kernel lists it under
# /proc/bus/usb and /sys/bus/usb: interfaces 0, 2 and 3 carry the serial
# ports ttyUSB0 to ttyUSB2 (the AT channel is ttyUSB1), interface 1 is the
# network function.  Fixture trees bound over /proc/bus and /sys/bus.
usb=/var/lib/device/usb
mkdir -p $usb/proc/usb $usb/sys/usb/drivers/usb/1-1.4
cat >$usb/proc/usb/devices <<'DEVICES'
T:  Bus=01 Lev=00 Prnt=00 Port=00 Cnt=00 Dev#=  1 Spd=480  MxCh= 1
P:  Vendor=1d6b ProdID=0002 Rev= 5.10
T:  Bus=01 Lev=02 Prnt=02 Port=03 Cnt=01 Dev#=  3 Spd=480  MxCh= 0
P:  Vendor=2020 ProdID=2033 Rev= 3.18
S:  Manufacturer=Fibocom Wireless Inc.
S:  Product=FM350-GL
DEVICES
port=$usb/sys/usb/drivers/usb/1-1.4
echo 2020 >$port/idVendor
echo 2033 >$port/idProduct
for iface in 0:ttyUSB0 1: 2:ttyUSB1 3:ttyUSB2; do
    dir=$port/1-1.4:1.${iface%%:*}
    mkdir -p "$dir"
    printf '%02d\n' "${iface%%:*}" >"$dir/bInterfaceNumber"
    [[ -n ${iface#*:} ]] && mkdir -p "$dir/${iface#*:}"
done
mount --bind $usb/proc /proc/bus
mount --bind $usb/sys /sys/bus

# Route and rule checkers a daemon keeps in place (cmdlibctl route|nat fix).
mkdir -p /etc/cmdlib
cat >/etc/cmdlib/routes.checkers <<'CHECKERS'
dest=0.0.0.0 gw=10.64.0.1 dev=usb0                # WAN default route
dest=192.168.1.0 mask=255.255.255.0 dev=br0       # LAN network
dest=10.64.0.53 mask=255.255.255.255 dev=usb0     # host route to the DNS server
CHECKERS
cat >/etc/cmdlib/rules.checkers <<'CHECKERS'
chain=INPUT policy=ACCEPT
chain=PREROUTING in=usb0 proto=tcp dport=8080 jump=DNAT nat=192.168.1.100:80 nat-table append
chain=POSTROUTING out=usb0 src=192.168.1.0/24 jump=SNAT nat=10.64.0.2 nat-table append
chain=INPUT proto=tcp dport=23 jump=REJECT nat=tcp-reset append
CHECKERS

# The module answers ATI, and the DNS/DHCP daemon is running.
mkdir -p /var/lib/device/sendat
printf '\r\nFibocom Wireless Inc.\r\nFM350-GL\r\nRevision: 81600.0000.00.29.21.10\r\n\r\nOK\r\n' >/var/lib/device/sendat/1.resp
echo 0 >/var/lib/device/sendat/1.delay
printf 'ATI' >/var/lib/device/sendat/1.cmd
(exec -a dnsmasq sleep 100000) &

# Platform: serial number, an uploaded image for this board, the mesh
# daemon's dump, and a FOTA image on the operator's HTTP server.
echo T750A0001234 >/productinfo/generate_sn
mkdir -p /data/web_upload /tmp/www
printf 'PKTP\nname: t750\nfeature: M4200X-T750\n\npayload\n' >/data/web_upload/T750_V1.3.0_20240501.img
cat >/tmp/dump.txt <<'MESH'
{"topology information":[{"AL MAC":"02:00:c0:a8:01:01","Device role":"1"},
 {"AL MAC":"02:00:c0:a8:01:02","Device role":"1"},{"AL MAC":"02:00:c0:a8:01:03","Device role":"2"}]}
MESH
printf 'fota image payload\n' >/tmp/www/fw.img
nsenter --net=/var/lib/device/ns/operator busybox httpd -p 10.64.0.1:8080 -h /tmp/www

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
