// The waits of the library's own network clients: the DNS resolver's pause
// after every send and receive attempt, the DNS probes' and the L2TP
// probe's receive time-outs, and the longest wait of a TCP connect.  The
// library waits as long as the firmware always did; statically linked
// tests put in short waits (and a pause that counts its calls), so a
// server that never answers costs them milliseconds, and they can still
// see that the resolver's budget is counted in attempts.  Not exported.
#pragma once

namespace cmdlib {

struct NetWaits {
    // Called after every resolver send or receive attempt (250 ms).
    void (*resolver_pause)();
    // Receive time-out of get_host_by_name_v4/_v6 (5000 ms).
    int probe_recv_ms;
    // Receive time-out of the L2TP probe, for its request and its StopCCN
    // (4000 ms).
    int lns_recv_ms;
    // Longest wait for util_create_socket's connect (10000 ms).
    int connect_wait_ms;
};

// The firmware's waits.
NetWaits default_net_waits();
// The waits in force.
const NetWaits &net_waits();
// Puts waits in force (a null pause means the 250 ms one); returns those
// that were in force.
NetWaits set_net_waits(const NetWaits &waits);

}  // namespace cmdlib
