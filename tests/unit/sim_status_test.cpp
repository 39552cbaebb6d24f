// Readers of the status indication line (SIM state, dial status, signal).
#include <gtest/gtest.h>

#include <string>

#include "status_ind.h"

namespace {

struct Sim {
    int exist, pin, puk;
};

Sim sim_of(std::string line) {
    return {cmdlib::status_sim_exist(line.c_str()), cmdlib::status_need_pin(&line[0]),
            cmdlib::status_need_puk(&line[0])};
}

TEST(SimStatus, Fields) {
    Sim s = sim_of("1 1 0 23 0 1 1 1 7 1\n");
    EXPECT_EQ(1, s.exist);
    EXPECT_EQ(1, s.pin);
    EXPECT_EQ(0, s.puk);
    s = sim_of("1\t0\t1 23");
    EXPECT_EQ(0, s.pin);
    EXPECT_EQ(1, s.puk);
    s = sim_of("0 2 2");
    EXPECT_EQ(0, s.exist);
    EXPECT_EQ(0, s.pin);  // only 1 counts
    EXPECT_EQ(0, s.puk);
    EXPECT_EQ(3, sim_of("3 0 0").exist);  // handed through as it stands
}

TEST(SimStatus, ShortAndJunkLines) {
    for (const char *line : {"", "1", "1 ", "x y z", "\n"}) {
        Sim s = sim_of(line);
        EXPECT_EQ(0, s.pin) << line;
        EXPECT_EQ(0, s.puk) << line;
    }
    EXPECT_EQ(0, sim_of("abc").exist);
    EXPECT_EQ(1, sim_of("1 1").pin);
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
