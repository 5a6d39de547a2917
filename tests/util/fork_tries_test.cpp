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

int run_after_failures(int failures)
{
    failures_to_come = failures;
    calls = 0;
    ::unlink("/tmp/ran");
    return _exec("touch", "touch", "/tmp/ran", nullptr);
}

bool has_run()
{
    return ::access("/tmp/ran", F_OK) == 0;
}

TEST(ForkTries, TheTenthFailsWhetherItRanOrNot)
{
    EXPECT_EQ(run_after_failures(8), 0);
    EXPECT_TRUE(has_run());
    EXPECT_EQ(calls, 9);
    EXPECT_EQ(run_after_failures(9), -1);
    EXPECT_TRUE(has_run()) << "the program has run all the same";
    EXPECT_EQ(calls, 10);
    EXPECT_EQ(run_after_failures(10), -1);
    EXPECT_FALSE(has_run());
    EXPECT_EQ(calls, 10);
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
