// Hosts of URLs, paths beside a URL and the NTP list, over case tables
// (tests/golden/url/).  Only literal addresses and refused names here: a
// lookup by name is a device test.
#include <gtest/gtest.h>

#include "cmdlib/cmdlib_ntp.h"
#include "cmdlib/cmdlib_url.h"
#include "cmdlib/internal/url_parse.h"
#include "common/golden.h"

namespace {

TEST(UrlHost, HostsAndAddresses) {
    for (const auto &r : golden::rows("url/host.tsv")) EXPECT_EQ(cmdlib::url::host(r[0]), r[1]) << r[0];
    // only 255 bytes are read: a long path is cut away, a long host cut short,
    // and a "://" beyond them is not seen
    const std::string h(254, 'h');
    EXPECT_EQ(cmdlib::url::host("http://10.1.2.3/" + std::string(300, 'p')), "10.1.2.3");
    EXPECT_EQ(cmdlib::url::host(h + "xyz"), h + "x");
    EXPECT_EQ(cmdlib::url::host(h + "://10.1.2.3"), h);
    for (const auto &r : golden::rows("url/host_ip.tsv")) {
        char ip[16] = "";
        EXPECT_EQ(util_get_host_ip_from_url(r[0].c_str(), ip), std::stoi(r[1])) << r[0];
        EXPECT_EQ(ip, r[2]) << r[0];
    }
}

TEST(UrlPath, FileBesideTheUrl) {
    for (const auto &r : golden::rows("url/relative_path.tsv")) {
        char out[64] = "", file[64], in_place[64];
        snprintf(file, sizeof file, "%s", r[1].c_str());
        snprintf(in_place, sizeof in_place, "%s", r[1].c_str());
        EXPECT_EQ(util_get_same_relative_new_path(r[0].c_str(), file, out), std::stoi(r[2])) << r[0] << " " << r[1];
        EXPECT_EQ(out + std::string("|") + file, r[3] + "|" + r[1]) << r[0] << " " << r[1];
        // without an output buffer the name itself is rewritten
        util_get_same_relative_new_path(r[0].c_str(), in_place, nullptr);
        EXPECT_EQ(in_place, r[3].empty() ? r[1] : r[3]) << r[0] << " " << r[1];
    }
}

TEST(NtpList, CapacityBoundsTheCount) {
    for (int max : {-1, 0, 1, 3, 8, 9, 20}) {
        char *list[21] = {};
        int stored = max < 0 ? 0 : max > 8 ? 8 : max;
        EXPECT_EQ(util_get_used_ntp_servers(list, max), stored);
        for (int i = 0; i < 21; ++i) EXPECT_EQ(list[i], i < stored ? all_used_ntp_servers[i] : nullptr) << max;
    }
}

}  // namespace
