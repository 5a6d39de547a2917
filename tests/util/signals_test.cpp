// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/signals.h>

#include "support/error_of.h"
#include "support/peer.h"

#include <cerrno>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace {

using namespace switchcfg::testing;

volatile std::sig_atomic_t seen = 0;

void note(int signo)
{
    seen = signo;
}

TEST(Signals, DispositionsDecideWhatASignalDoes)
{
    Peer ignores{[](Link &link) {
        signal_ignore(SIGTERM);
        ::raise(SIGTERM);
        link.tell();
    }};
    EXPECT_TRUE(ignores.await());
    Peer dies{[](Link &link) {
        signal_ignore(SIGTERM);
        signal_default(SIGTERM);
        ::raise(SIGTERM);
        link.tell();
    }};
    EXPECT_FALSE(dies.await());
    const int status = dies.join();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
}

TEST(Signals, HandlerRunsWhenABlockedSignalIsLetThrough)
{
    ASSERT_EQ(signal_handler(SIGUSR2, note), 0);
    struct sigaction installed {};
    ASSERT_EQ(::sigaction(SIGUSR2, nullptr, &installed), 0);
    EXPECT_EQ(installed.sa_flags & (SA_RESTART | SA_SIGINFO | SA_NODEFER | SA_RESETHAND), 0);
    EXPECT_EQ(::sigismember(&installed.sa_mask, SIGUSR1), 0);
    ASSERT_EQ(signal_block(SIGUSR2), 0);
    ::raise(SIGUSR2);
    EXPECT_EQ(seen, 0);
    ASSERT_EQ(signal_unblock(SIGUSR1), 0);
    EXPECT_EQ(seen, 0) << "only the named signal is let through";
    ASSERT_EQ(signal_unblock(SIGUSR2), 0);
    EXPECT_EQ(seen, SIGUSR2);
}

TEST(Signals, ImpossibleSignalsAreRefused)
{
    for (const auto call : {signal_ignore, signal_default, signal_block, signal_unblock}) {
        for (const int signo : {0, -1, 1000}) {
            EXPECT_EQ(error_of(call(signo)), EINVAL) << signo;
        }
    }
    EXPECT_EQ(signal_ignore(SIGKILL), -1);
    EXPECT_EQ(signal_handler(SIGSTOP, note), -1);
}

} // namespace
