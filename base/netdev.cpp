// Network-device services of libbase: existence and traffic counters.
#include <net/if.h>
#include <string.h>

#include "base/internal/line_reader.h"
#include "base/internal/netdev_parse.h"
#include "base/internal/text.h"
#include "base/libbase.h"

extern "C" {

CMDLIB_API int cmd_netdev_exist(const char *net_dev_name) {
    if (!net_dev_name || !*net_dev_name || strlen(net_dev_name) >= IF_NAMESIZE) return 0;
    return if_nametoindex(net_dev_name) != 0 ? 1 : 0;
}

CMDLIB_API int cmd_netdev_flowstat_ex(const char *net_dev_name, char *rx_bytes, char *rx_packets,
                                      char *tx_bytes, char *tx_packets) {
    if (!net_dev_name || !*net_dev_name) return -1;
    cmdlib::NetdevCounters c;
    bool found = false;
    // A line of /proc/net/dev is about 200 characters; 512 leaves room for
    // counters of twenty digits each.
    cmdlib::read_lines<512>("/proc/net/dev", [&](auto &r) {
        found = cmdlib::find_netdev_counters(r, net_dev_name, &c);
    });
    if (!found) return -1;
    static_assert(sizeof c.rx_bytes == UTIL_NETDEV_COUNTER_SIZE, "counter width is the API's");
    if (rx_bytes) cmdlib::copy_bounded(rx_bytes, UTIL_NETDEV_COUNTER_SIZE, c.rx_bytes);
    if (rx_packets) cmdlib::copy_bounded(rx_packets, UTIL_NETDEV_COUNTER_SIZE, c.rx_packets);
    if (tx_bytes) cmdlib::copy_bounded(tx_bytes, UTIL_NETDEV_COUNTER_SIZE, c.tx_bytes);
    if (tx_packets) cmdlib::copy_bounded(tx_packets, UTIL_NETDEV_COUNTER_SIZE, c.tx_packets);
    return 0;
}

}  // extern "C"
