// Route and rule checkers on the device's real kernel, as transcripts in
// tests/golden/device_route_nat: listings from the real route -n,
// iptables -S, iptables -t nat -S and ip6tables -S, the fix passes really
// installing and deleting, and the kernel's listing afterwards as the proof.
// Checkers are written as text (tests/common/checker_text.h).
#include <string>
#include <type_traits>
#include <vector>

#include "cmdlib/cmdlib_nat.h"
#include "cmdlib/cmdlib_route.h"
#include "common/checker_text.h"
#include "device.h"
#include "device_steps.h"

namespace {

using golden::Args;

// The checkers of a[first...] counted on the output of the listing command
// (from a file): the counts, then the check's result; with `fix`, the fix
// pass then acts on those counts.
template <class Checker, class Parse, class Check, class Fix>
std::string check(Args &a, size_t first, const std::string &listing, Parse parse, Check run, Fix fix) {
    std::vector<Checker> c;
    for (size_t i = first; i < a.size(); ++i) c.push_back(parse(a[i]));
    if (devtest::sh(listing + " >/tmp/listing") != 0) return "listing failed";
    int result = run("/tmp/listing", c.data(), static_cast<int>(c.size()));
    std::string out;
    for (const auto &x : c) out += std::to_string(x.match_count) + " ";
    if constexpr (!std::is_null_pointer_v<Fix>) fix(c.data(), static_cast<int>(c.size()));
    return out + "/ " + std::to_string(result);
}

class RouteNatTest : public DeviceTest {};

TEST_F(RouteNatTest, Transcripts) {
    golden::check("device_route_nat", golden::calls(devtest::with_device({
        {"check_routes", [](Args &a) {
             return check<RouteEntryChecker>(a, 0, "route -n", checker_spec::route, util_route_check_if_route_exist,
                                             nullptr);
         }},
        {"fix_routes", [](Args &a) {
             return check<RouteEntryChecker>(a, 0, "route -n", checker_spec::route, util_route_check_if_route_exist,
                                             util_route_fix_route_entry);
         }},
        {"check_rules", [](Args &a) {
             return check<NATEntryChecker>(a, 1, a[0], checker_spec::rule, util_nat_check_if_nat_exist, nullptr);
         }},
        {"fix_rules", [](Args &a) {
             return check<NATEntryChecker>(a, 1, a[0], checker_spec::rule, util_nat_check_if_nat_exist,
                                           util_nat_fix_nat_entry);
         }},
    })));
}

}  // namespace
