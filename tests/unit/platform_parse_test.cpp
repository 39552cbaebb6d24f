// The product's pure rules: upload and image names, board and version
// checks, file names inside fixed directories, FOTA paths and
// checks on scratch files, the mesh dump reader on recorded dumps, and the
// URL-filter message.
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

namespace {

std::string fixture(const std::string &name) {
    std::string here = __FILE__;
    std::ifstream in(here.substr(0, here.rfind('/')) + "/fixtures/" + name);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(PlatformNames, UploadAndUpgradeChecks) {
    struct {
        std::string name;
        int upload, upgrade;
    } cases[] = {
        {"", -1, 3},
        {".img", -1, 3},                      // 4 characters
        {"a.img", 0, 0},                      // 5
        {std::string(116, 'a') + ".img", 0, 0},   // 120
        {std::string(117, 'a') + ".img", -1, 3},  // 121
        {"a.conf", 0, 2},                     // configuration: upload only
        {".conf", -1, 2},
        {"update.bin", 0, 2},                 // 10: upload only
        {"xupdate.bin", 0, 0},
        {"fw.IMG", -1, 2},                    // case-sensitive
        {"fw.img.bak", -1, 2},
        {"a;rm -rf /;.img", 0, 0},            // names are only checked, never run
        {"../../etc/x.img", 0, 0},            // the path is confined where it is built
    };
    for (const auto &c : cases) {
        EXPECT_EQ(fibocom_t750_check_upload_file_name(c.name.c_str()), c.upload) << c.name;
        EXPECT_EQ(fibocom_t750_system_upgrade_filename_check(c.name.c_str()), c.upgrade) << c.name;
    }
    EXPECT_EQ(fibocom_t750_check_upload_file_name(nullptr), -1);
    EXPECT_EQ(fibocom_t750_system_upgrade_filename_check(nullptr), 3);
    EXPECT_EQ(fibocom_t750_check_upload_file_size("a.img", 262144000), 0);
    EXPECT_EQ(fibocom_t750_check_upload_file_size("a.img", 262144001), -1);
    EXPECT_EQ(fibocom_t750_check_upload_file_size(nullptr, 1), -1);
}

TEST(PlatformNames, FileNameInsideADirectory) {
    using cmdlib::platform::file_name_in_dir;
    EXPECT_EQ(file_name_in_dir("fw.img"), "fw.img");
    EXPECT_EQ(file_name_in_dir("../../etc/passwd"), "passwd");
    EXPECT_EQ(file_name_in_dir(".."), "");
    EXPECT_EQ(file_name_in_dir("a/.."), "");
    EXPECT_EQ(file_name_in_dir("..."), "...");
}

TEST(PlatformBoard, FeatureLineAndSuffixMatch) {
    using cmdlib::upgrade::board_matches;
    using cmdlib::upgrade::listing_feature;
    std::string_view f;
    ASSERT_TRUE(listing_feature("name: fw\nfeature:   XYZABC\r\nsize: 3\n", &f));
    EXPECT_EQ(f, "XYZABC");
    ASSERT_TRUE(listing_feature("feature:", &f));
    EXPECT_EQ(f, "");
    EXPECT_FALSE(listing_feature("name: fw\n", &f));
    struct {
        const char *feature, *board;
        bool ok;
    } cases[] = {
        {"XYZABC", "ABC", true}, {"XYZABC", "ABD", false}, {"ABC", "XYZABC", true},
        {"ABC", "", true},       {"ABC", nullptr, true},   {"", nullptr, false},
        {"", "ABC", false},      {"abc", "ABC", false},
    };
    for (const auto &c : cases)
        EXPECT_EQ(board_matches(c.feature, c.board), c.ok) << c.feature << " / " << (c.board ? c.board : "null");
}

TEST(PlatformVersion, NameSegmentsLinesAndComparison) {
    using namespace cmdlib::upgrade;
    EXPECT_EQ(file_name_version("M4200X_V1.2.10_20240101.img"), "V1.2.10");
    EXPECT_EQ(file_name_version("M4200X_V1.2.10.img"), "");  // never the last segment
    EXPECT_EQ(file_name_version("V3_x"), "V3");
    EXPECT_EQ(file_name_version("fw_1.2_x.img"), "");
    // A segment is looked at in its first 127 characters.
    EXPECT_EQ(file_name_version("V" + std::string(200, 'a') + "_x").size(), kSegmentSize - 1);
    EXPECT_EQ(file_name_version(std::string(200, 'a') + "V_x"), "");
    EXPECT_EQ(line_version("version: V2.0.1\n"), "V2.0.1");
    EXPECT_EQ(line_version("2.0.1\n"), "");
    struct {
        const char *current, *file;
        int want;
    } cases[] = {
        {"V2.0.1", "V1.9.9", -1}, {"V2.0.1", "V2.0.1", 0},  {"V2.0.1", "V2.0", 0},
        {"V1.10.0", "V1.9.0", -1}, {"V1.9.0", "V1.10.0", 0}, {"V2.0", "V2.0.0.1", 0},
        {"", "V1.0", 0},          {"V1.0", "", 0},          {"2.0.1", "1.9.9", 0},  // no 'V': first digit dropped
        {"V1.x.3", "V1.0.2", -1}, {"V99999999999.1", "V1.1", -1},
    };
    for (const auto &c : cases) EXPECT_EQ(compare_versions(c.current, c.file), c.want) << c.current << " vs " << c.file;
    char v[VERSION_TEXT_SIZE];
    split_file_name("p_V1.2.3.4.5.6.7.8.9_x.img", v);
    EXPECT_STREQ(v, "V1.2.3.4.5.6.7.");  // 15 characters
}

TEST(PlatformFota, PathsFromTheUrl) {
    char file[64] = "", md5[64] = "";
    std::string pre = "/tmp/FOTA_" + std::to_string(getpid()) + "_";
    util_fota_get_local_upgrade_file_path(file, sizeof file, md5, sizeof md5, "http://h/d/fw%201.img");
    EXPECT_EQ(std::string(file), pre + "fw201.img");
    EXPECT_EQ(std::string(md5), pre + "fw201.img.md5.txt");
    util_fota_get_local_upgrade_file_path(file, 20, md5, 22, "http://h/a-long-image-name.img");
    EXPECT_EQ(std::string(file), (pre + "a-long-image-name.img").substr(0, 19));
    EXPECT_EQ(std::string(md5), (std::string(file) + ".md5.txt").substr(0, 21));
    strcpy(file, "kept");
    util_fota_get_local_upgrade_file_path(file, sizeof file, md5, sizeof md5, "");
    EXPECT_STREQ(file, "kept");
}

TEST(PlatformFota, SizeAndDigestOfAScratchImage) {
    char dir[] = "/tmp/fota_check_XXXXXX";
    ASSERT_NE(mkdtemp(dir), nullptr);
    std::string img = std::string(dir) + "/fw.img", list = img + ".md5.txt";
    ASSERT_EQ(cmd_echo_without_new_line("abc", img.c_str()), 0);
    const char *abc = "900150983cd24fb0d6963f7d28e17f72";
    EXPECT_EQ(util_check_if_upgrade_file_is_valid(img.c_str(), list.c_str(), "3", abc, 0), nullptr);
    EXPECT_STREQ(util_check_if_upgrade_file_is_valid(img.c_str(), list.c_str(), "3x", abc, 0), FOTA_ERR_FILE_LENGTH);
    // Anything but 32 hex digits can't match, nor add a line to the list.
    std::string extra = std::string(abc) + "  " + img + "\n" + abc;
    for (const char *bad : {"", "900150983cd24fb0d6963f7d28e17f7", extra.c_str(), "zz0150983cd24fb0d6963f7d28e17f72"})
        EXPECT_STREQ(util_check_if_upgrade_file_is_valid(img.c_str(), list.c_str(), "3", bad, 0), FOTA_ERR_MD5);
    cmd_rmdir_advance(dir);
}

struct MeshCounts {
    const char *file;
    int result, controllers, agents;
};

TEST(PlatformMesh, RecordedDumps) {
    const MeshCounts cases[] = {
        {"three_nodes.json", 1, 1, 2}, {"self_only.json", 1, 0, 0},    {"not_json.txt", -1, 0, 0},
        {"half_written.json", -1, 0, 0}, {"self_invalid.json", -1, 0, 0}, {"not_an_array.json", -1, 0, 0},
        {"empty_array.json", -1, 0, 0},  {"top_level_array.json", -1, 0, 0},
    };
    for (const auto &c : cases) {
        meshTopoInfo_t *t = nullptr;
        ASSERT_EQ(cmdlib::mesh_topology_from_text(fixture("mesh/" + std::string(c.file)).c_str(), &t), c.result)
            << c.file;
        if (c.result != 1) {
            EXPECT_EQ(t, nullptr);
            continue;
        }
        int n = -1;
        EXPECT_EQ(fibocom_t750_mesh_topo_get_controller_cnt(&n, &t), 0);
        EXPECT_EQ(n, c.controllers) << c.file;
        EXPECT_EQ(fibocom_t750_mesh_topo_get_agent_cnt(&n, &t), 0);
        EXPECT_EQ(n, c.agents) << c.file;
        fibocom_t750_mesh_topo_clean(&t);
    }
}

// Every address of a list, in order, with -1 after the last one.
std::vector<std::string> list_all(int (*next)(char *, int, meshTopoInfo_t **), meshTopoInfo_t **t) {
    std::vector<std::string> out;
    for (int i = 0; i < 8; ++i) {
        char mac[18] = {};
        if (next(mac, sizeof mac, t) != 0) {
            out.push_back("end");
            break;
        }
        out.push_back(mac);
    }
    return out;
}

TEST(PlatformMesh, IterationRewindsAfterTheEnd) {
    meshTopoInfo_t *t = nullptr;
    ASSERT_EQ(cmdlib::mesh_topology_from_text(fixture("mesh/three_nodes.json").c_str(), &t), 1);
    char self[18] = {};
    ASSERT_EQ(fibocom_t750_mesh_topo_get_self_almac(self, sizeof self, &t), 0);
    EXPECT_STREQ(self, "9c:2e:a1:00:10:01");
    auto agents = list_all(fibocom_t750_mesh_topo_get_next_agent_almac, &t);
    EXPECT_THAT(agents, ::testing::ElementsAre("9c:2e:a1:00:10:03", "9c:2e:a1:00:10:07", "end"));
    EXPECT_EQ(list_all(fibocom_t750_mesh_topo_get_next_agent_almac, &t), agents);
    EXPECT_THAT(list_all(fibocom_t750_mesh_topo_get_next_controller_almac, &t),
                ::testing::ElementsAre("9c:2e:a1:00:10:02", "end"));
    char four[4] = {'x', 'x', 'x', 'x'};
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

TEST(PlatformMesh, AddressChecks) {
    EXPECT_EQ(fibocom_t750_mesh_topo_is_almac_valid("9c:2e:a1:00:10:01"), 1);
    EXPECT_EQ(fibocom_t750_mesh_topo_is_almac_valid("9c2ea1001001xxxxx"), 1);  // only the length counts
    EXPECT_EQ(fibocom_t750_mesh_topo_is_almac_valid("9c:2e:a1:00:10:011"), 0);
    EXPECT_EQ(fibocom_t750_mesh_topo_is_almac_valid(nullptr), 0);
    struct {
        const char *a, *b;
        int size, want;
    } cases[] = {
        {"9C:2E:A1:00:10:01", "9c:2e:a1:00:10:01", 17, -1}, {"9c:2e:a1:00:10:01", "9C:2E:A1:00:10:01", 17, 1},
        {"9c:2e:a1:00:10:01", "9c:2e:a1:00:10:01", 17, 0},  {"9c:2e:a1:00:10:01", "9c:2e:a1:00:10:02", 16, 0},
        {"9c:2e:a1:00:10:01x", "9c:2e:a1:00:10:01y", 40, 0}, {"9c", "9c:2e", 17, -1}, {"ab", "ab", 17, 0},
    };
    for (const auto &c : cases) EXPECT_EQ(fibocom_t750_mesh_topo_cmp_mac(c.a, c.b, c.size), c.want) << c.a << " " << c.b;
    EXPECT_EQ(fibocom_t750_mesh_topo_cmp_mac(nullptr, "a", 1), -1);
}

TEST(PlatformUrlFilter, MessageForTwoUrls) {
    const char *urls[] = {"a.example", "http://b.example/x?y=1", "c.example"};
    char *msg = cmdlib::url_filter_message(urls, 2);
    ASSERT_NE(msg, nullptr);
    EXPECT_EQ(std::string(msg), fixture("url_filter_two.json"));
    cJSON_free(msg);
    const char *with_null[] = {"a.example", nullptr, "c.example"};
    msg = cmdlib::url_filter_message(with_null, 3);
    cJSON *j = cJSON_Parse(msg);
    EXPECT_EQ(cJSON_GetArraySize(cJSON_GetObjectItem(j, "datas")), 2);
    cJSON_Delete(j);
    cJSON_free(msg);
    EXPECT_EQ(cmdlib::url_filter_message(urls, 0), nullptr);
    EXPECT_EQ(cmdlib::url_filter_message(nullptr, 1), nullptr);
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
