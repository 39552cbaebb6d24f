// MAC records: the record operations through the C API, the records file
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

int add(MacControlInfo *info, int n) { return util_set_mac_info_ex(info, mac_n(n).b, nullptr, nullptr, nullptr, nullptr, nullptr); }

TEST(MacRecords, RegisterUpToTwenty) {
    auto info = records();
    for (int i = 0; i < MAC_RECORDS_MAX; ++i) ASSERT_EQ(add(info.get(), i), 0);
    EXPECT_EQ(add(info.get(), 5), 0);  // present: nothing changes
    auto before = std::make_unique<MacControlInfo>(*info);
    EXPECT_EQ(add(info.get(), 20), -1);
    MacIPPair extra = unit(21, "10.0.0.1"), again = unit(7, "10.0.0.7");
    EXPECT_EQ(util_set_mac_info2(info.get(), &extra), -1);
    EXPECT_EQ(memcmp(before.get(), info.get(), sizeof *info), 0);
    // A present unit is still replaced when the list is full.
    EXPECT_EQ(util_set_mac_info2(info.get(), &again), 0);
    MacIPPair got;
    ASSERT_EQ(util_get_mac_info(info.get(), mac_n(7).b, &got), 0);
    EXPECT_STREQ(got.AP_IPADDR, "10.0.0.7");
    EXPECT_STREQ(got.WIFI5G_SSID[4], "ssid-7");
}

TEST(MacRecords, DeleteKeepsOrderAndLeavesTheSlot) {
    auto info = records();
    for (int i = 1; i <= 3; ++i) {
        MacIPPair p = unit(i, ("192.168.0." + std::to_string(i)).c_str());
        ASSERT_EQ(util_set_mac_info2(info.get(), &p), 0);
    }
    util_delete_mac_info(info.get(), mac_n(9).b);  // unknown: nothing changes
    util_delete_mac_info(info.get(), mac_n(1).b);
    ASSERT_EQ(info->mac_count, 2);
    const MacIPPair *slot = info->ip_pair_info;
    // Units 2 and 3 moved down; the vacated last slot still holds unit 3.
    EXPECT_EQ(std::to_string(slot[0].mac.value[5]) + std::to_string(slot[1].mac.value[5]) +
                  std::to_string(slot[2].mac.value[5]),
              "233");
    // The only unit deleted: a newcomer inherits its settings.
    info->mac_count = 1;
    util_delete_mac_info(info.get(), mac_n(2).b);
    EXPECT_EQ(info->mac_count, 0);
    ASSERT_EQ(add(info.get(), 4), 0);
    MacIPPair got;
    ASSERT_EQ(util_get_mac_info(info.get(), mac_n(4).b, &got), 0);
    EXPECT_STREQ(got.AP_IPADDR, "192.168.0.2");
}

TEST(MacRecords, DamagedCountsStayInsideTheRecords) {
    auto info = records();
    info->mac_count = -3;
    EXPECT_EQ(util_get_mac_info(info.get(), mac_n(0).b, nullptr), -1);
    EXPECT_EQ(add(info.get(), 1), 0);
    EXPECT_EQ(info->mac_count, 1);
    info->mac_count = 1000;
    memcpy(info->ip_pair_info[19].mac.value, mac_n(8).b, 6);
    util_delete_mac_info(info.get(), mac_n(8).b);
    EXPECT_EQ(info->mac_count, 19);
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
