// SPDX-License-Identifier: Apache-2.0
#include "support/test.h"

namespace {

TEST(ErrorChannel, KeepsTheLastMessageOnceItIsOn)
{
    EXPECT_EQ(cfg_error_set_msg("unit %d", 3), 0);
    EXPECT_STREQ(cfg_error_get_msg(), "") << "off at the start";
    cfg_set_error_msg_enable(1);
    EXPECT_EQ(cfg_error_set_msg("port %d/%d: %s", 1, 5, "down"), 0);
    EXPECT_STREQ(cfg_error_msg, "port 1/5: down");
    const std::string longest(sizeof cfg_error_msg - 1, 'x');
    EXPECT_EQ(cfg_error_set_msg("%sy", longest.c_str()), 0);
    EXPECT_EQ(cfg_error_get_msg(), longest);

    cfg_error_set_msg("one");
    cfg_set_error_msg_enable(0);
    EXPECT_STREQ(cfg_error_get_msg(), "");
    cfg_error_set_msg("two");
    EXPECT_STREQ(cfg_error_get_msg(), "");

    std::strcpy(cfg_error_msg, "x"); // somebody writes the buffer itself
    cfg_set_error_msg_enable(0);
    EXPECT_STREQ(cfg_error_get_msg(), "x") << "off already: left as it is";
}

TEST(WarningChannel, FoldsRepeatsAndNeverForgetsTheCount)
{
    EXPECT_EQ(cfg_warning_set_msg("unheard"), 0);
    EXPECT_EQ(cfg_warning_get_msg(), nullptr) << "off at the start";
    cfg_set_warning_msg_enable(1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(cfg_warning_set_msg("VLAN %d is empty", 7), 0);
    }
    EXPECT_EQ(Warning_times, 2);
    cfg_warning_set_msg("port down");
    const std::string so_far = "VLAN 7 is empty\nLast message repeated 2 times\nport down\n";
    const std::string repeated = "Last message repeated 2 times\n";
    EXPECT_EQ(cfg_warning_get_msg(), so_far + repeated);
    EXPECT_EQ(cfg_warning_get_msg(), so_far + repeated + repeated);

    cfg_warning_set_msg("port down"); // what was printed in between does not make it a different warning
    EXPECT_EQ(Warning_times, 3);
    cfg_warning_set_msg("port up");
    EXPECT_EQ(cfg_warning_get_msg(),
        so_far + repeated + repeated + "Last message repeated 3 times\nport up\n" + "Last message repeated 3 times\n");
}

TEST(WarningChannel, OnlyAnEqualNeighbourIsARepeat)
{
    cfg_set_warning_msg_enable(1);
    const char *const different[] = {"link", "link down", "link", "down", "wn", "a\nb", "b", ""};
    std::string expected;
    for (const char *warning : different) {
        cfg_warning_set_msg("%s", warning);
        expected += std::string{warning} + '\n';
    }
    EXPECT_EQ(Warning_times, 0);
    EXPECT_EQ(cfg_warning_get_msg(), expected);
    cfg_warning_set_msg("%s", "");
    EXPECT_EQ(Warning_times, 1);
    EXPECT_EQ(cfg_warning_get_msg(), expected + "Last message repeated 1 time\n");
}

TEST(WarningChannel, IsClearedByNullEmptyAndDisabling)
{
    cfg_set_warning_msg_enable(1);
    const auto expect_cleared_by = [](auto clear) {
        cfg_warning_set_msg("warning");
        cfg_warning_set_msg("warning");
        clear();
        EXPECT_EQ(Warning_times, 0);
        EXPECT_EQ(cfg_warning_get_msg(), nullptr);
    };
    expect_cleared_by([] { EXPECT_EQ(cfg_warning_set_msg(nullptr), 0); });
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-zero-length"
    expect_cleared_by([] { EXPECT_EQ(cfg_warning_set_msg(""), 0); });
#pragma GCC diagnostic pop
    expect_cleared_by([] { cfg_set_warning_msg_enable(0); });
    cfg_set_warning_msg_enable(1);
    cfg_warning_set_msg("warning");
    EXPECT_STREQ(cfg_warning_get_msg(), "warning\n") << "not a repeat of what was cleared";
}

} // namespace
