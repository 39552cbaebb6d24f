// MAC records: the record operations through the C API as a table of
// calls, the records file
// and the MAC file on scratch paths (byte layout, wrong sizes, change-only
// writes).  MAC text is checked against a model of its rule by the
// mac_text fuzz target, whose seeds hold the usual and the bad forms.
#include <gtest/gtest.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "cmdlib/internal/mac_files.h"
#include "cmdlib/mac.h"
#include "common/golden.h"

namespace {

using cmdlib::MacFileWrite;

struct Mac {
    unsigned char b[6];
};
Mac mac_n(int n) { return {{0x02, 0, 0, 0, 0, static_cast<unsigned char>(n)}}; }

std::unique_ptr<MacControlInfo> records() {
    auto info = std::make_unique<MacControlInfo>();
    memset(info.get(), 0, sizeof *info);
    return info;
}

MacIPPair unit(int n, const char *lan_ip) {
    MacIPPair p;
    memset(&p, 0, sizeof p);
    memcpy(p.mac.value, mac_n(n).b, 6);
    snprintf(p.AP_IPADDR, sizeof p.AP_IPADDR, "%s", lan_ip);
    snprintf(p.WIFI5G_SSID[4], sizeof p.WIFI5G_SSID[4], "ssid-%d", n);
    return p;
}

// The record operations as a table of calls on one set of records
// (tests/golden/mac_records): "new" starts an empty set; units are MACs
// 02:00:00:00:00:NN with a LAN address and the SSID "ssid-NN".
TEST(MacRecords, Golden) {
    using golden::Args;
    using golden::show;
    std::shared_ptr<MacControlInfo> info = records(), saved = records();
    golden::check("mac_records", golden::calls({
        {"new", [info](Args &) { return memset(info.get(), 0, sizeof *info), "ok"; }},
        {"add", [info](Args &a) {
             int rc = util_set_mac_info_ex(info.get(), mac_n(a[0].i()).b, nullptr, nullptr, nullptr, nullptr, nullptr);
             return show(rc, info->mac_count);
         }},
        {"set", [info](Args &a) {
             MacIPPair p = unit(a[0].i(), a[1].c());
             return show(util_set_mac_info2(info.get(), &p), info->mac_count);
         }},
        {"get", [info](Args &a) {
             MacIPPair got;
             memset(&got, 0, sizeof got);
             int rc = util_get_mac_info(info.get(), mac_n(a[0].i()).b, a[1] == "nobuf" ? nullptr : &got);
             return show(rc, got.AP_IPADDR, got.WIFI5G_SSID[4]);
         }},
        {"del", [info](Args &a) { return util_delete_mac_info(info.get(), mac_n(a[0].i()).b), show(info->mac_count); }},
        {"count", [info](Args &a) { return info->mac_count = a[0].i(), "ok"; }},
        {"put", [info](Args &a) { return memcpy(info->ip_pair_info[a[0].i()].mac.value, mac_n(a[1].i()).b, 6), "ok"; }},
        // the last byte of the first slots' MACs
        {"slots", [info](Args &a) {
             std::string out;
             for (int i = 0; i < a[0].i(); ++i) out += std::to_string(info->ip_pair_info[i].mac.value[5]) + " ";
             return out;
         }},
        {"save", [info, saved](Args &) { return *saved = *info, "ok"; }},
        {"unchanged", [info, saved](Args &) { return show(memcmp(saved.get(), info.get(), sizeof *info) == 0); }},
    }));
}

// ---- Files on a scratch path --------------------------------------------------------

class MacFiles : public ::testing::Test {
  protected:
    void TearDown() override { unlink(path()); }
    const char *path() const { return path_.c_str(); }
    std::string bytes() const {
        std::ifstream in(path_, std::ios::binary);
        std::stringstream s;
        s << in.rdbuf();
        return s.str();
    }
    void write_bytes(const std::string &b) const { std::ofstream(path_, std::ios::binary) << b; }
    ino_t inode() const {
        struct stat st;
        return stat(path(), &st) == 0 ? st.st_ino : 0;
    }
    std::string path_ = "/tmp/mac_files_" + std::to_string(getpid());
};

TEST_F(MacFiles, RecordsFileIsTheRecordByteForByte) {
    auto info = records();
    MacIPPair a = unit(1, "192.168.1.1"), b = unit(2, "192.168.2.1");
    util_set_mac_info2(info.get(), &a);
    util_set_mac_info2(info.get(), &b);
    info->mac_count = 0x01020302;  // shows the byte order of the count
    ASSERT_TRUE(cmdlib::save_mac_records(path(), info.get()));
    std::string file = bytes();
    ASSERT_EQ(file.size(), 69604u);
    EXPECT_EQ(file.substr(3480 + offsetof(MacIPPair, AP_IPADDR), 12), std::string("192.168.2.1\0", 12));
    EXPECT_EQ(file.substr(69600), std::string("\x02\x03\x02\x01", 4));
    auto back = records();
    ASSERT_TRUE(cmdlib::load_mac_records(path(), back.get()));
    EXPECT_EQ(memcmp(back.get(), info.get(), sizeof *info), 0);
    // One byte short or long, or empty: not loaded, record untouched, file kept.
    for (const std::string &bad : {file.substr(0, 69603), file + "x", std::string()}) {
        write_bytes(bad);
        back->mac_count = 7;
        EXPECT_FALSE(cmdlib::load_mac_records(path(), back.get())) << bad.size();
        EXPECT_EQ(back->mac_count, 7);
        EXPECT_EQ(access(path(), F_OK), 0);
    }
    EXPECT_FALSE(cmdlib::save_mac_records((path_ + ".missing/file").c_str(), info.get()));
}

TEST_F(MacFiles, MacFileIsWrittenOnlyWhenItChanges) {
    unsigned char server_memory[8] = {}, client_memory[MAC_BUFFER_FILE_SIZE] = {};
    MacBuffer clients;
    memset(&clients, 0, sizeof clients);
    memcpy(clients.macs[1].value, mac_n(2).b, 6);
    clients.mac_count = 2;
    unsigned char list[MAC_BUFFER_FILE_SIZE], server[8];
    cmdlib::client_macs_bytes(clients, list);
    cmdlib::server_mac_bytes(mac_n(9).b, server);
    auto save_list = [&] { return cmdlib::save_mac_file(path(), client_memory, list, sizeof list, sizeof list); };
    auto save_server = [&] { return cmdlib::save_mac_file(path(), server_memory, server, 8, 6); };

    EXPECT_EQ(save_list(), MacFileWrite::kWritten);
    ino_t first = inode();
    EXPECT_EQ(save_list(), MacFileWrite::kUnchanged);
    EXPECT_EQ(inode(), first);
    EXPECT_EQ(save_server(), MacFileWrite::kWritten);
    EXPECT_EQ(bytes(), std::string("\x02\0\0\0\0\x09\0\0", 8));
    EXPECT_EQ(save_list(), MacFileWrite::kWritten);  // the server's MAC had taken the file
    EXPECT_EQ(bytes().substr(160), std::string("\x02\0\0\0", 4));
    // Only the server's six bytes are compared.
    EXPECT_EQ(save_server(), MacFileWrite::kWritten);
    server[6] = 0x77;
    EXPECT_EQ(save_server(), MacFileWrite::kUnchanged);
}

TEST_F(MacFiles, LoadTellsTheFormBySize) {
    MacBuffer out;
    memset(&out, 0x11, sizeof out);
    EXPECT_EQ(cmdlib::load_mac_file(path(), &out), -1);  // missing
    write_bytes(std::string("\x02\0\0\0\0\x09\0\0", 8));
    ASSERT_EQ(cmdlib::load_mac_file(path(), &out), 0);
    EXPECT_EQ(out.mac_count, 1);
    EXPECT_EQ(out.macs[0].value[5], 0x09);
    EXPECT_EQ(out.macs[1].value[0], 0x11);  // the rest untouched
    std::string list(164, '\0');
    list[8 * 19 + 5] = 0x13, list[160] = 20;
    write_bytes(list);
    ASSERT_EQ(cmdlib::load_mac_file(path(), &out), 0);
    EXPECT_EQ(out.mac_count, 20);
    EXPECT_EQ(out.macs[19].value[5], 0x13);
    for (size_t size : {7u, 9u, 163u, 165u, 0u}) {
        write_bytes(std::string(size, '\x01'));
        EXPECT_EQ(cmdlib::load_mac_file(path(), &out), -1) << size;
        EXPECT_NE(access(path(), F_OK), 0) << size << " bytes: removed";
    }
}

}  // namespace
