// SPDX-License-Identifier: Apache-2.0
#include "support/test.h"

namespace {

TEST(ErrorMessages, AssignedCodesHaveTheirTextAndOthersNone)
{
    cfg_error_init();
    const struct {
        int code;
        const char *text;
    } samples[] = {
        {-133, ""},
        {-197, "IP routing must be enabled"},
        {-478, "Mpls type is different of previous configured\n"
               "If you want to change it, delete and recreate this neighbor again"},
    };
    for (const auto &sample : samples) {
        EXPECT_STREQ(cfg_strerror(sample.code), sample.text) << sample.code;
    }
    for (const int code : {0, 1, 133, -56, -92, -352, -487, -1001, -65536 - 1, INT_MIN, INT_MAX}) {
        EXPECT_EQ(cfg_strerror(code), nullptr) << code;
    }
}

// The texts are compared by scripts in the field, so an edit of any of them must be a decision.
TEST(ErrorMessages, NoTextHasChanged)
{
    int assigned = 0;
    std::uint64_t digest = 14695981039346656037U; // FNV-1a over each code and text with their terminators
    for (int code = 0; code >= -1100; --code) {
        const char *text = cfg_strerror(code);
        if (text == nullptr) {
            continue;
        }
        ++assigned;
        for (const char byte : std::to_string(code) + '\0' + text + '\0') {
            digest = (digest ^ static_cast<unsigned char>(byte)) * 1099511628211U;
        }
    }
    EXPECT_EQ(assigned, 423);
    EXPECT_EQ(digest, 0x87881447bbc7f0e7U);
}

TEST(ForeignCodes, TranslateAtAndAroundTheirRanges)
{
    const struct {
        int foreign;
        int ours;
    } chip[] = {{0, 0}, {-1, -10}, {-2, -2}, {-3, -3}, {-4, -7}, {-5, -10}, {-6, -9}, {-7, -8}, {-8, -5}, {-9, -10},
        {-14, -2}, {-15, -42}, {-16, -43}, {-17, -10}, {-18, -3}, {-19, -10}, {1, -10}, {INT_MIN, -10}, {INT_MAX, -10}},
      supplies[] = {{-1000, -1}, {-1001, -1}, {-1002, -7}, {-1003, -1}, {-1004, -8}, {-1005, -7}, {-1006, -10},
          {-1007, -1}, {0, -1}, {1004, -1}, {INT_MIN, -1}, {INT_MAX, -1}},
      manager[] = {{0, 0}, {1, 0}, {INT_MAX, 0}, {-1, -37}, {-4, -43}, {-7, -7}, {-8, -1}, {INT_MIN, -1}};
    for (const auto &row : chip) {
        EXPECT_EQ(cfg_error_from_bcm(row.foreign), row.ours) << row.foreign;
    }
    for (const auto &row : supplies) {
        EXPECT_EQ(cfg_error_from_psm(row.foreign), row.ours) << row.foreign;
    }
    for (const auto &row : manager) {
        EXPECT_EQ(cfg_pmg_err_code_translate(row.foreign), row.ours) << row.foreign;
    }
    EXPECT_EQ(cfg_error_from_stp(0), 0);
    for (int code = 1; code <= 32; ++code) {
        const char *text = cfg_strerror(cfg_error_from_stp(code));
        ASSERT_NE(text, nullptr) << code;
        EXPECT_EQ(std::string{text}.substr(0, 5), "STP: ") << code;
    }
    EXPECT_STREQ(cfg_strerror(cfg_error_from_stp(1)), "STP: Cannot find STP");
    EXPECT_STREQ(cfg_strerror(cfg_error_from_stp(32)), "STP: No action");
    for (const int unknown : {-1, 33, INT_MIN, INT_MAX}) {
        EXPECT_EQ(cfg_error_from_stp(unknown), -1) << unknown;
    }
}

} // namespace
