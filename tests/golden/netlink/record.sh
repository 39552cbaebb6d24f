#!/bin/bash
# Records the kernel's routing netlink messages for the decoder tests: run
# once inside the throwaway device, it makes the changes below and keeps
# what iproute2's rtmon received from a real netlink socket (the messages
# as the kernel sent them, with rtmon's time-stamp messages between them).
#   tools/device/run-in-device --build build -- bash /src/tests/golden/netlink/record.sh /build/netlink
# then copy the .bin files here.  "ip monitor file X.bin" shows how iproute2
# reads each recording; the .txt goldens beside them were checked against it.
set -eu
out=${1:?usage: record.sh OUTPUT_DIR}
mkdir -p "$out"

record() {  # record NAME GROUPS... -- then the changes come from stdin
    local name=$1; shift
    rtmon file "$out/$name.bin" "$@" &
    local pid=$!
    sleep 0.5  # rtmon has dumped the links and is listening
    bash -e
    sleep 0.5  # the last notifications are written
    kill "$pid"; wait "$pid" || true
}

# Links: a veth pair appears, goes up, changes its MTU, goes away.
record link link <<'CHANGES'
ip link add tnl0 address 02:00:00:00:77:01 type veth peer name tnl1 address 02:00:00:00:77:02
ip link set tnl0 up
ip link set tnl1 up
ip link set tnl0 mtu 1400
ip link del tnl0
CHANGES

# Addresses: IPv4 (labelled) and IPv6 (no label) added and deleted.
ip link add tnl0 address 02:00:00:00:77:01 type veth peer name tnl1 address 02:00:00:00:77:02
ip link set tnl0 up
ip link set tnl1 up
record addr address <<'CHANGES'
ip addr add 10.77.0.1/24 dev tnl0 label tnl0:lan
ip -6 addr add 2001:db8:77::1/64 dev tnl0 nodad
ip addr del 10.77.0.1/24 dev tnl0
ip -6 addr del 2001:db8:77::1/64 dev tnl0
CHANGES

# Routes: a gateway route, a default route in a policy table, an IPv6
# route with a source prefix, each added and deleted.
ip addr add 10.77.0.1/24 dev tnl0
ip -6 addr add 2001:db8:77::1/64 dev tnl0 nodad
record route route <<'CHANGES'
ip route add 10.78.0.0/16 via 10.77.0.2 dev tnl0
ip route add default via 10.77.0.2 dev tnl0 table 205
ip -6 route add 2001:db8:5::/64 from 2001:db8:6::/64 via 2001:db8:77::2 dev tnl0
ip route del 10.78.0.0/16
ip route del default table 205
ip -6 route del 2001:db8:5::/64 from 2001:db8:6::/64
CHANGES
ip link del tnl0
ls -l "$out"
