// cmdlibctl --json on the demo router: every command's standard output is
// exactly one line holding one JSON object, which cJSON parses and which
// satisfies the command's jq filter (rows of tests/golden/cmdlibctl/json.tsv);
// the monitor prints one such object per event (JSON Lines).
#include <cjson/cJSON.h>

#include <string>

#include "device.h"
#include "common/golden.h"

namespace {

std::string ctl() { return devtest::build_dir() + "/cmdlibctl"; }

// One JSON object on one line (the format a line-by-line reader expects).
::testing::AssertionResult one_object_line(const std::string &text) {
    if (text.empty() || text.back() != '\n' || text.find('\n') != text.size() - 1)
        return ::testing::AssertionFailure() << "not exactly one line: " << text;
    cJSON *doc = cJSON_Parse(text.c_str());
    bool object = cJSON_IsObject(doc);
    cJSON_Delete(doc);
    if (!object) return ::testing::AssertionFailure() << "not a JSON object: " << text;
    return ::testing::AssertionSuccess();
}

// jq -e: exit 0 only when the filter's result is neither false nor null.
bool jq_holds(const std::string &filter, const std::string &json_file) {
    devtest::write_file("/tmp/ctl-filter.jq", filter);
    return devtest::sh("jq -e -f /tmp/ctl-filter.jq " + json_file + " >/dev/null") == 0;
}

TEST_F(DeviceTest, EveryCommandPrintsOneJsonObjectWithItsKeys) {
    ASSERT_EQ(devtest::sh("bash " + devtest::src_path("tools/device/demo-state.sh") + " >/dev/null 2>&1"), 0);
    const auto rows = golden::rows("cmdlibctl/json.tsv");
    ASSERT_GT(rows.size(), 40u);
    for (const auto &row : rows) {
        SCOPED_TRACE("cmdlibctl " + row.at(0));
        ASSERT_EQ(row.size(), 3u);
        int rc = devtest::sh(ctl() + " " + row[0] + " >/tmp/ctl-out.json 2>/dev/null");
        EXPECT_EQ(rc, std::stoi(row[1]));
        std::string out = devtest::read_file("/tmp/ctl-out.json");
        EXPECT_TRUE(one_object_line(out));
        EXPECT_TRUE(jq_holds(row[2], "/tmp/ctl-out.json")) << "filter: " << row[2] << "\noutput: " << out;
    }
    // Without the switch the same command speaks to people.
    EXPECT_EQ(devtest::sh_out(ctl() + " sim").rfind("present: 1\n", 0), 0u);
}

TEST_F(DeviceTest, MonitorPrintsOneObjectPerEvent) {
    devtest::sh(ctl() + " monitor link addr --json --timeout 3 >/tmp/ctl-events.json 2>/dev/null &");
    // The monitor subscribes after it starts: change the links until it has
    // seen both the new link and its address (it may start between the
    // two), then let it stop after its quiet time-out.
    ASSERT_TRUE(devtest::wait_until([] {
        devtest::sh("ip link add jtest0 type veth peer name jtest1 && ip addr add 10.98.0.1/24 dev jtest0 && "
                    "ip link del jtest0");
        std::string seen = devtest::read_file("/tmp/ctl-events.json");
        return seen.find("10.98.0.1") != std::string::npos &&
               seen.find(R"("event":"NEWLINK","dev":"jtest0")") != std::string::npos;
    }));
    ASSERT_TRUE(devtest::wait_until([] { return devtest::sh("pidof cmdlibctl >/dev/null") != 0; }, 20000));
    std::string out = devtest::read_file("/tmp/ctl-events.json");
    size_t lines = 0;
    for (size_t start = 0, end; (end = out.find('\n', start)) != std::string::npos; start = end + 1, ++lines)
        EXPECT_TRUE(one_object_line(out.substr(start, end - start + 1)));
    EXPECT_GE(lines, 2u);
    // jq -s reads the stream of objects as one array.
    EXPECT_EQ(devtest::sh("jq -e -s 'all(.[]; .type == \"link\" or .type == \"addr\") and "
                          "any(.[]; .type == \"link\" and .event == \"NEWLINK\" and .dev == \"jtest0\") and "
                          "any(.[]; .type == \"addr\" and .family == \"inet\" and .address == \"10.98.0.1\" and "
                          ".prefix_len == 24)' /tmp/ctl-events.json >/dev/null"),
              0)
        << out;
}

}  // namespace
