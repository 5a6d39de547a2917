// SPDX-License-Identifier: Apache-2.0
// Daemons that are gone, gone and back, frozen or merely slow.
#include "rpc_fixture.h"

#include <ctime>

using namespace switchcfg::testing;

namespace {

void expect_down(KeptAlive &client, Id id, long long least_ms, long long most_ms)
{
    int why = 0;
    int result = 0;
    const auto took = elapsed_ms([&] {
        result = client.call(id, "", nullptr, 32000);
        why = errno;
    });
    EXPECT_EQ(result, -1000);
    EXPECT_EQ(why, EHOSTDOWN);
    EXPECT_GE(took, least_ms);
    EXPECT_LE(took, most_ms);
}

TEST(RpcKeepAlive, AnAbsentDaemonIsToldAndFoundWhenItComes)
{
    const auto daemon = understudy();
    KeptAlive client;
    expect_down(client, echo, 2900, 4500);
    enter(*daemon);
    EXPECT_EQ(client.echoed("back"), "back");
}

TEST(RpcKeepAlive, ADaemonKilledDuringALongCallIsTold)
{
    const auto daemon = start_daemon();
    const auto successor = understudy();
    KeptAlive client;
    EXPECT_EQ(client.echoed("first"), "first");
    std::thread killer{[&] {
        EXPECT_TRUE(daemon->await()); // inside the function
        daemon->kill9();
    }};
    expect_down(client, own, 1000, 4500);
    killer.join();
    enter(*successor);
    EXPECT_EQ(client.echoed("again"), "again");
}

TEST(RpcKeepAlive, ADaemonRestartedDuringALongCallIsTold)
{
    const auto daemon = start_daemon();
    const auto successor = understudy();
    KeptAlive client; // the call is the first word between them
    std::thread caller{[&] { expect_down(client, own, 900, 2800); }};
    EXPECT_TRUE(daemon->await());
    daemon->kill9();
    enter(*successor);
    caller.join();
    EXPECT_EQ(client.echoed("again"), "again");
}

TEST(RpcKeepAlive, ARestartBetweenCallsCostsAtMostOneOfThem)
{
    auto daemon = start_daemon();
    std::array<std::unique_ptr<Peer>, 5> successors;
    std::generate(successors.begin(), successors.end(), understudy);
    KeptAlive client;
    for (auto &successor : successors) {
        EXPECT_EQ(client.echoed("x"), "x");
        daemon = std::move(successor); // which kills the one before
        enter(*daemon);
        // On a busy machine the old connection can take the request before it is known to be dead.
        if (const std::string answer = client.echoed("y"); answer != "y") {
            EXPECT_EQ(answer, "no echo: result -1000, errno " + std::to_string(EHOSTDOWN));
            EXPECT_EQ(client.echoed("y"), "y");
        }
    }
    EXPECT_EQ(client.echoed("z"), "z");
}

TEST(RpcKeepAlive, ASlowFunctionIsWaitedForAndAFrozenDaemonIsNot)
{
    Peer slow{[](Link &link) {
        Service service{[](const std::string &, Slot *) {
            const timespec long_work{4, 500000000}; // beyond what a dead daemon is given
            ::nanosleep(&long_work, nullptr);
            return 4;
        }};
        service.start();
        link.tell();
        service.server.wait();
    }};
    ASSERT_TRUE(slow.await());
    KeptAlive client;
    EXPECT_EQ(client.call(own, ""), 4);
    ::kill(slow.pid(), SIGSTOP);
    ASSERT_EQ(::waitpid(slow.pid(), nullptr, WUNTRACED), slow.pid()); // all of its threads, that is
    expect_down(client, echo, 2000, 4500);
    ::kill(slow.pid(), SIGCONT);
    EXPECT_EQ(client.echoed("thawed"), "thawed");
}

} // namespace
