// SPDX-License-Identifier: Apache-2.0
// How often a failing fork is tried: this program's own fork() stands before the C library's.
#include <switchcfg/process.h>

#include <cerrno>
#include <gtest/gtest.h>
#include <unistd.h>

namespace {

int failures_to_come = 0;
int calls = 0;

} // namespace

extern "C" __attribute__((visibility("default"))) pid_t fork() noexcept
{
    ++calls;
    if (failures_to_come > 0) {
        --failures_to_come;
        errno = EAGAIN;
        return -1;
    }
    return ::_Fork();
}

namespace {

TEST(ForkTries, TheTenthFailsWhetherItRanOrNot)
{
    const struct {
        int failures, result, calls;
        bool ran;
    } cases[] = {{8, 0, 9, true}, {9, -1, 10, true}, {10, -1, 10, false}};
    for (const auto &row : cases) {
        failures_to_come = row.failures;
        calls = 0;
        ::unlink("/tmp/ran");
        EXPECT_EQ(_exec("touch", "touch", "/tmp/ran", nullptr), row.result) << row.failures;
        EXPECT_EQ(::access("/tmp/ran", F_OK) == 0, row.ran) << row.failures;
        EXPECT_EQ(calls, row.calls);
    }
}

TEST(ForkTries, OthersTryOnce)
{
    failures_to_come = 1;
    char *const argv[] = {const_cast<char *>("/bin/true"), nullptr};
    EXPECT_EQ(_execv(argv), -1);
    failures_to_come = 1;
    char *text = nullptr;
    EXPECT_EQ(system_capture("echo x", &text, nullptr), -1);
    EXPECT_STREQ(text, "") << "the output of nothing is handed over";
    std::free(text);
    failures_to_come = 1;
    EXPECT_EQ(daemonize(), -1);
    EXPECT_EQ(failures_to_come, 0);
}

} // namespace
