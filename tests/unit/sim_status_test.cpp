// Readers of the status indication line (SIM state, dial status, signal).
#include <gtest/gtest.h>

#include <string>

#include "cmdlib/internal/status_ind.h"

namespace {

TEST(SimStatus, FieldsOfTheLine) {
    struct Case {
        const char *line;
        int exist, pin, puk;
    } cases[] = {
        {"1 1 0 23 0 1 1 1 7 1\n", 1, 1, 0},
        {"1\t0\t1 23", 1, 0, 1},
        {"0 2 2", 0, 0, 0},  // only 1 counts for PIN and PUK
        {"3 0 0", 3, 0, 0},  // the SIM field is handed through as it stands
        {"1 1", 1, 1, 0},
        {"", 0, 0, 0}, {"1 ", 1, 0, 0}, {"x y z", 0, 0, 0}, {"\n", 0, 0, 0},
    };
    for (const Case &c : cases) {
        std::string line = c.line;
        EXPECT_EQ(c.exist, cmdlib::status_sim_exist(line.c_str())) << c.line;
        EXPECT_EQ(c.pin, cmdlib::status_need_pin(&line[0])) << c.line;
        EXPECT_EQ(c.puk, cmdlib::status_need_puk(&line[0])) << c.line;
    }
    EXPECT_EQ(0, cmdlib::status_sim_exist(nullptr));
    EXPECT_EQ(0, cmdlib::status_need_pin(nullptr));
    EXPECT_EQ(0, cmdlib::status_need_puk(nullptr));
}

int dial(std::string line, int *status, int *signal) {
    return cmdlib::status_dial_and_signal(&line[0], status, signal);
}

TEST(DialStatus, HomeRegistrationOnly) {
    int st = -5, sig = -5;
    EXPECT_EQ(0, dial("1 0 0 23 0 5 5 5 7 1", &st, &sig));
    EXPECT_EQ(0, st);  // roaming does not count
    EXPECT_EQ(23, sig);
    EXPECT_EQ(0, dial("1 0 0 18 0 0 0 1 7 1\n", &st, &sig));
    EXPECT_EQ(1, st);
    EXPECT_EQ(18, sig);
    EXPECT_EQ(0, dial("1 0 0 9 0 1 0 0", &st, &sig));  // eight fields suffice
    EXPECT_EQ(1, st);
    EXPECT_EQ(0, dial("1 0 0 9 0 0 1 0", &st, nullptr));
    EXPECT_EQ(1, st);
}

TEST(DialStatus, ShortLinesLeaveOutputsAlone) {
    int st = -5, sig = -5;
    EXPECT_EQ(-1, dial("1 0 0 23 0 1 1", &st, &sig));
    EXPECT_EQ(-1, dial("", &st, &sig));
    EXPECT_EQ(-5, st);
    EXPECT_EQ(-5, sig);
    EXPECT_EQ(-1, cmdlib::status_dial_and_signal(nullptr, &st, &sig));
}

}  // namespace
