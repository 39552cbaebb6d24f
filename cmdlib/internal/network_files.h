// The network family's readers with the file paths as arguments.  The
// exported functions bind the fixed paths; tests and the benchmark pass
// fixtures (the firmware-only /proc files do not exist on a test kernel).
#pragma once

#include <stddef.h>

#include "cmdlib/internal/conntrack_parse.h"
#include "cmdlib/network.h"

namespace cmdlib {

// The LAN bridge: PPPoE sessions, connected devices and the NAT table's
// LAN address are looked up on it.
constexpr const char kBridgeName[] = "br0";

// "/proc/net/pppoe"; 0, or -1 when the file cannot be opened.
int read_pppoe_table_file(const char *path, ARPTable *t, const char *device);
// "/proc/phys26/addresstable"; 0, or -1 when the file cannot be opened.
int apply_switch_ports_file(const char *path, ARPTable *t);
// "user/mac/port" of each PPPoE session on the bridge, joined by ','.
void pppoe_users_from(const char *pppoe_path, const char *ports_path, char *out, size_t size);
// The session table of a conntrack file, written through scratch_path
// (emptied first) and moved onto output_path.  0, or -1 when the conntrack
// file cannot be opened (output_path is then untouched).
int nat_session_table_from(const char *conntrack_path, const char *wan_ip, const char *lan_ip,
                           const char *scratch_path, const char *output_path);
// Runs the destination collector over a conntrack file; 0, or -1 when it
// cannot be opened.
int collect_conntrack_file(const char *path, const CollectContext &ctx,
                           DestIPInConntrackInfo *info, int *max_timeout);
// The lease half of the connected-device list: hosts from a dnsmasq lease
// file, expiry measured against now.  false when the file cannot be opened.
bool lease_hosts_from(const char *path, long long now, AllHostsInfo *hosts);

}  // namespace cmdlib
