// MAC check and the site-survey parser.
#include <gtest/gtest.h>

#include <cjson/cJSON.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "cmdlib/cmdlib_platform_fibocom_t750.h"

namespace {

TEST(MacCheck, Forms) {
    EXPECT_EQ(is_valid_mac_for_api("00:1a:2B:3c:4D:5e"), 1);
    for (const char *bad : {"FF:FF:FF:FF:FF:FF", "ff:ff:ff:ff:ff:ff", "00:00:00:00:00:00",
                            "00:1a:2b:3c:4d:5", "00:1a:2b:3c:4d:5e0", "00-1a-2b-3c-4d-5e",
                            "0g:1a:2b:3c:4d:5e", "001:a2b:3c:4d:5e:", ""})
        EXPECT_EQ(is_valid_mac_for_api(bad), 0) << bad;
    EXPECT_EQ(is_valid_mac_for_api(nullptr), 0);
}

// A survey row: number, channel, SSID column, then the BSSID at column 41.
std::string row(const char *no, const char *mac) {
    std::string r = std::string(no) + "   " + "6" + "   ";
    r.resize(41, ' ');
    r += mac;
    r += "   WPA2PSK/AES   100   11b/g/n   NONE   In\n";
    return r;
}

TEST(SurveyParse, NumberedRowsWithValidMacs) {
    char path[] = "/tmp/wifi_aps_test_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    close(fd);
    std::ofstream(path) << "\nNo  Ch  SSID                             BSSID               Security\n"
                        << row("1", "aa:bb:cc:dd:ee:01") << row("2", "FF:FF:FF:FF:FF:FF")
                        << row("3", "zz:bb:cc:dd:ee:03") << "4  short row\n"
                        << row("x", "aa:bb:cc:dd:ee:05") << row("10", "AA:BB:CC:DD:EE:0A")
                        << std::string(600, '7') << "\n";
    cJSON *arr = cJSON_CreateArray();
    EXPECT_EQ(fibocom_t750_get_wifi_info(path, arr), 0);
    unlink(path);
    ASSERT_EQ(cJSON_GetArraySize(arr), 2);
    EXPECT_STREQ(cJSON_GetObjectItem(cJSON_GetArrayItem(arr, 0), "macAddress")->valuestring,
                 "aa:bb:cc:dd:ee:01");
    EXPECT_STREQ(cJSON_GetObjectItem(cJSON_GetArrayItem(arr, 1), "macAddress")->valuestring,
                 "AA:BB:CC:DD:EE:0A");
    char *text = cJSON_PrintUnformatted(arr);
    EXPECT_STREQ(text, "[{\"macAddress\":\"aa:bb:cc:dd:ee:01\"},{\"macAddress\":\"AA:BB:CC:DD:EE:0A\"}]");
    free(text);

    EXPECT_EQ(fibocom_t750_get_wifi_info(nullptr, arr), -1);
    EXPECT_EQ(fibocom_t750_get_wifi_info(const_cast<char *>("/nonexistent/aps"), arr), -1);
    EXPECT_EQ(cJSON_GetArraySize(arr), 2);
    cJSON_Delete(arr);
}

}  // namespace
