// The product's pure rules: upload and image names, board and version
// checks, file names inside fixed directories, FOTA paths and the mesh
// dumps recorded in tests/fixtures/mesh as a table of calls
// (tests/golden/platform_calls), with the URL-filter message; mesh
// buffers, and hostile URLs in the message.
#include <cjson/cJSON.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cmdlib/cmdlib_platform_fibocom_t750.h"
#include "cmdlib/internal/platform_json.h"
#include "cmdlib/internal/platform_ops.h"
#include "cmdlib/internal/upgrade_parse.h"
#include "common/golden.h"

namespace {

std::string fixture(const std::string &name) { return golden::slurp(golden::fixture(name)); }

using golden::Args;
using golden::show;

std::string sv(std::string_view s) { return show(std::string(s)); }

// Every address of a list, in order, then "end"; at most eight.
std::string list_all(int (*next)(char *, int, meshTopoInfo_t **), meshTopoInfo_t **t) {
    std::string out;
    for (int i = 0; i < 8; ++i) {
        char mac[18] = {};
        if (next(mac, sizeof mac, t) != 0) return out + "end";
        out += std::string(mac) + " ";
    }
    return out;
}

// A recorded dump: the load's result, then self, the counts and the lists
// (the agents twice: the iteration rewinds after its end).
std::string mesh(Args &a) {
    meshTopoInfo_t *t = nullptr;
    int rc = cmdlib::mesh_topology_from_text(fixture("mesh/" + a[0]).c_str(), &t);
    if (rc != 1) return show(rc) + (t ? " record left" : "");
    char self[18] = {};
    int controllers = -1, agents = -1;
    fibocom_t750_mesh_topo_get_self_almac(self, sizeof self, &t);
    fibocom_t750_mesh_topo_get_controller_cnt(&controllers, &t);
    fibocom_t750_mesh_topo_get_agent_cnt(&agents, &t);
    std::string out = show(rc, self, controllers, agents) + " agents " +
                      list_all(fibocom_t750_mesh_topo_get_next_agent_almac, &t) + " " +
                      list_all(fibocom_t750_mesh_topo_get_next_agent_almac, &t) + " controllers " +
                      list_all(fibocom_t750_mesh_topo_get_next_controller_almac, &t);
    fibocom_t750_mesh_topo_clean(&t);
    return out;
}

// The FOTA scratch names for a URL into buffers of a[1] and a[2] bytes;
// the process id shows as PID.
std::string fota_paths(Args &a) {
    char file[64] = "kept", md5[64] = "kept";
    util_fota_get_local_upgrade_file_path(file, a[1].i(), md5, a[2].i(), a[0].c());
    std::string out = show(file, md5), pid = "FOTA_" + std::to_string(getpid()) + "_";
    for (size_t at; (at = out.find(pid)) != std::string::npos;) out.replace(at, pid.size(), "FOTA_PID_");
    return out;
}

TEST(Platform, Golden) {
    using namespace cmdlib::upgrade;
    golden::check("platform_calls", golden::calls({
        {"upload", [](Args &a) { return show(fibocom_t750_check_upload_file_name(a[0].c())); }},
        {"upgrade", [](Args &a) { return show(fibocom_t750_system_upgrade_filename_check(a[0].c())); }},
        {"size", [](Args &a) { return show(fibocom_t750_check_upload_file_size(a[0].c(), std::stoll(a[1]))); }},
        {"in_dir", [](Args &a) { return sv(cmdlib::platform::file_name_in_dir(a[0])); }},
        {"feature", [](Args &a) {
             std::string_view f = "-";
             bool ok = listing_feature(a[0], &f);
             return show(ok) + " " + sv(f);
         }},
        {"board", [](Args &a) { return show(board_matches(a[0], a[1].c())); }},
        {"file_version", [](Args &a) { return sv(file_name_version(a[0])); }},
        {"line_version", [](Args &a) { return sv(line_version(a[0])); }},
        {"compare", [](Args &a) { return show(compare_versions(a[0], a[1])); }},
        {"split", [](Args &a) {
             char v[VERSION_TEXT_SIZE] = "";
             split_file_name(a[0].c(), v);
             return show(v);
         }},
        {"fota_paths", fota_paths},
        {"mesh", mesh},
        {"mac_valid", [](Args &a) { return show(fibocom_t750_mesh_topo_is_almac_valid(a[0].c())); }},
        // the URL filter message for the URLs; "" for none, "(null)" for no list
        {"url_message", [](Args &a) {
             std::vector<const char *> urls;
             for (const auto &u : a) urls.push_back(u.c());
             char *m = cmdlib::url_filter_message(a[0].null() ? nullptr : urls.data(), a[0].empty() ? 0 : static_cast<int>(urls.size()));
             std::string out = show(m);
             cJSON_free(m);
             return out;
         }},
        {"cmp_mac", [](Args &a) { return show(fibocom_t750_mesh_topo_cmp_mac(a[0].c(), a[1].c(), a[2].i())); }},
    }));
}

TEST(PlatformMesh, ShortBuffersAndCleaning) {
    meshTopoInfo_t *t = nullptr;
    ASSERT_EQ(cmdlib::mesh_topology_from_text(fixture("mesh/three_nodes.json").c_str(), &t), 1);
    char four[4] = {'x', 'x', 'x', 'x'}, self[18];
    EXPECT_EQ(fibocom_t750_mesh_topo_get_self_almac(four, 3, &t), 0);
    EXPECT_EQ(std::string(four, 4), "9c:x");  // no terminator, no byte past out_size
    // A second load replaces the record; cleaning twice is harmless.
    ASSERT_EQ(cmdlib::mesh_topology_from_text(fixture("mesh/self_only.json").c_str(), &t), 1);
    EXPECT_EQ(fibocom_t750_mesh_topo_get_next_controller_almac(self, sizeof self, &t), -1);
    EXPECT_EQ(fibocom_t750_mesh_topo_clean(&t), 0);
    EXPECT_EQ(fibocom_t750_mesh_topo_clean(&t), 0);
    EXPECT_EQ(fibocom_t750_mesh_topo_get_self_almac(self, sizeof self, &t), -1);
    int n;
    EXPECT_EQ(fibocom_t750_mesh_topo_get_agent_cnt(&n, &t), -1);
}

TEST(PlatformMesh, LargeAndDeepDumps) {
    std::string many = R"({"topology information":[{"AL MAC":"02:00:00:00:00:00"})";
    for (int i = 0; i < 3000; ++i) many += R"(,{"AL MAC":"02:00:00:00:10:00","Device role":"1"})";
    many += "]}";
    meshTopoInfo_t *t = nullptr;
    ASSERT_EQ(cmdlib::mesh_topology_from_text(many.c_str(), &t), 1);
    int n = 0;
    fibocom_t750_mesh_topo_get_controller_cnt(&n, &t);
    EXPECT_EQ(n, 3000);
    std::string deep = R"({"topology information":)" + std::string(100000, '[') + std::string(100000, ']') + "}";
    EXPECT_EQ(cmdlib::mesh_topology_from_text(deep.c_str(), &t), -1);
    EXPECT_EQ(t, nullptr);
}

TEST(PlatformUrlFilter, HostileUrlsParseBackUnchanged) {
    std::vector<std::string> urls = {"a\"b", "c\\d", "\xe4\xb8\xad\xe6\x96\x87.example", "\xff\xfe", "tab\there\n",
                                     std::string(4096, 'u'), "'; rm -rf / #", ""};
    std::vector<const char *> p;
    p.reserve(urls.size());
    for (const auto &u : urls) p.push_back(u.c_str());
    char *msg = cmdlib::url_filter_message(p.data(), static_cast<int>(p.size()));
    ASSERT_NE(msg, nullptr);
    cJSON *j = cJSON_Parse(msg);
    ASSERT_NE(j, nullptr);
    const cJSON *datas = cJSON_GetObjectItem(j, "datas");
    ASSERT_EQ(cJSON_GetArraySize(datas), static_cast<int>(2 * urls.size()));
    for (size_t i = 0; i < urls.size(); ++i)
        EXPECT_EQ(cJSON_GetObjectItem(cJSON_GetArrayItem(datas, static_cast<int>(2 * i + 1)), "url")->valuestring,
                  urls[i]);
    cJSON_Delete(j);
    cJSON_free(msg);
}

}  // namespace
