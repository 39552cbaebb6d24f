// MT7561 build operations.
#include "cmdlib/cmdlib_platform_mtk7561.h"

#include "cmdlib/internal/platform_ops.h"

using cmdlib::platform::OpRow;
using cmdlib::platform::Rule;
using cmdlib::platform::Runner;

namespace {
constexpr OpRow kRestartDnsmasq = {"/usr/script/dnsmasq_init.sh > /dev/null 2>&1 &", Runner::System, Rule::Zero};
}  // namespace

extern "C" int mtk7561_get_device_sn(char *value, int len) {
    return cmdlib::platform::serial_from_qxsys(value, len);
}
extern "C" int mtk7561_opt_restart_dnsmasq(void) { return cmdlib::platform::run_op(kRestartDnsmasq); }
