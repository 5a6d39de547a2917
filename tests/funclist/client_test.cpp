// SPDX-License-Identifier: Apache-2.0
// Calls from another process into the stand-in daemon, and into one made here where that one is too well-behaved.
#include <array>
#include <switchcfg/funclist.h>
#include <switchcfg/vxlog.h>

#include "support/daemon.h"
#include "support/descriptors.h"
#include "support/peer.h"

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

std::string logged;

} // namespace

void vxlog(int level, const char *format, ...)
{
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    logged += std::to_string(level) + ' ' + line + '\n';
}

namespace {

using switchcfg::testing::Daemon;
using switchcfg::testing::elapsed_ms;
using switchcfg::testing::Link;
using switchcfg::testing::Peer;

struct Answer {
    int result;
    std::string output;
    int why;
};

Answer echo(const std::string &text)
{
    void *output = nullptr;
    std::uint32_t length = 0;
    const int result =
        bcm_cmd(BCMD_GENERAL_ECHO, 0, 0, 0, 0, text.data(), static_cast<std::uint32_t>(text.size()), &output, &length);
    const int why = errno;
    Answer answer{result, output != nullptr ? std::string(static_cast<char *>(output), length) : "(none)", why};
    std::free(output);
    return answer;
}

TEST(FunclistClient, TimeOutsByFunctionNumber)
{
    const auto general = [](int number) {
        return BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncGeneralType>(number));
    };
    EXPECT_EQ(general(4), 300U);
    EXPECT_EQ(general(249), 300U);
    EXPECT_EQ(general(8), 30U);
    EXPECT_EQ(general(252), 30U);
    EXPECT_EQ(general(19), 256U);
    EXPECT_EQ(general(53), 256U);
    EXPECT_EQ(general(191), 60U);
    EXPECT_EQ(general(264), 60U);
    EXPECT_EQ(general(198), 32000U);
    EXPECT_EQ(general(225), 4000U);
    int special = 0;
    for (int number = -1; number < 400; ++number) {
        special += general(number) != 10 ? 1 : 0;
    }
    EXPECT_EQ(special, 36);
    EXPECT_EQ(general(1 << 30), 10U);
    EXPECT_EQ(BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncUnitType>(198)), 10U);
    EXPECT_EQ(BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncUnitPortType>(198)), 10U);
    EXPECT_EQ(BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncMplsType>(198)), 10U);
    EXPECT_EQ(BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncVhwType>(198)), 10U);
}

TEST(FunclistClient, CallsArriveAndOutputsComeBack)
{
    const Daemon bcmd{SWITCHLAB_BCMD};
    ASSERT_TRUE(bcmd.ready());
    EXPECT_EQ(echo("over").output, "over");
    EXPECT_EQ(echo("").output, "(none)") << "no bytes, no input";
    void *output = nullptr;
    std::uint32_t length = 77;
    EXPECT_EQ(bcm_cmd(BCMD_GENERAL_ECHO, 0, 0, 0, 0, nullptr, 5, &output, &length), 0);
    EXPECT_EQ(output, nullptr);
    EXPECT_EQ(length, 77U) << "nothing came, nothing is touched";
    EXPECT_EQ(bcm_cmd(BCMD_GENERAL_ECHO, 0, 0, 0, 0, "cut off", 3, &output, nullptr), 0);
    EXPECT_EQ(std::string(static_cast<char *>(output), 3), "cut");
    std::free(output);
    EXPECT_EQ(bcm_cmd(BCMD_GENERAL_ECHO, 0, 0, 0, 0, "thrown away", 11, nullptr, &length), 0);
    EXPECT_EQ(length, 77U);
    EXPECT_EQ(bcm_cmd_socket(BCMD_GENERAL_DIAG_BULK, 8U << 20, 5, 0, 0, nullptr, 0, &output, &length), 0);
    ASSERT_EQ(length, 8U << 20);
    EXPECT_EQ(static_cast<unsigned char *>(output)[(8U << 20) - 1], 4);
    std::free(output);
    output = nullptr;
    EXPECT_EQ(bcm_cmd(BCMD_GENERAL_DIAG_BULK, 0, 0, 0, 0, nullptr, 0, &output, &length), 0);
    EXPECT_NE(output, nullptr) << "an empty output is one";
    EXPECT_EQ(length, 0U);
    std::free(output);

    EXPECT_EQ(bcm_cmd(BCMD_UNIT_PORTS, 1, 0, 0, 0, nullptr, 0, nullptr, nullptr), 52);
    EXPECT_EQ(bcm_cmd(BCMD_UNIT_PORTS, 2, 0, 0, 0, nullptr, 0, nullptr, nullptr), -3);
    EXPECT_EQ(bcm_cmd(BCMD_PORT_SPEED_GET, 1, 52, 0, 0, nullptr, 0, nullptr, nullptr), 1000);
    EXPECT_EQ(bcm_cmd(BCMD_MPLS_LABEL_DELETE, 50, 0, 0, 0, nullptr, 0, nullptr, nullptr), -8);

    // Refused by the daemon itself: at once and not logged.
    const auto refused_ms = elapsed_ms([] {
        EXPECT_EQ(bcm_cmd(BCMD_GENERAL_CHIP_INIT, 0, 0, 0, 0, nullptr, 0, nullptr, nullptr), -37);
        EXPECT_EQ(errno, 0);
        EXPECT_EQ(bcm_cmd(BCMD_VHW_RULE_COUNT, 0, 0, 0, 0, nullptr, 0, nullptr, nullptr), -37);
        EXPECT_EQ(errno, 0);
    });
    EXPECT_LT(refused_ms, 2000);
    const std::string too_long(17U << 20, 'x');
    EXPECT_EQ(echo(too_long).why, EMSGSIZE);
    EXPECT_EQ(echo("still usable").output, "still usable");
    EXPECT_EQ(logged, "");
}

const Link *to_parent = nullptr;

// A daemon whose shell says that it was called, and never returns; its version takes arg1 milliseconds. It is forked
// before the client's threads exist, and serves from go() on.
std::unique_ptr<Peer> understudy()
{
    return std::make_unique<Peer>([](Link &link) {
        link.wait();
        to_parent = &link;
        BcmdFunclistServer &server = BcmdFunclistServer::getInstance();
        server.registerLegacyCallback(BCMD_GENERAL_VERSION, [](std::uint32_t arg1, auto...) -> std::int32_t {
            ::usleep(arg1 * 1000);
            return 5;
        });
        server.registerLegacyCallback(BCMD_GENERAL_DIAG_SHELL, [](auto...) -> std::int32_t {
            to_parent->tell();
            return ::pause();
        });
        server.startProcessing();
        link.tell();
        server.wait();
    });
}

void enter(const Peer &daemon)
{
    daemon.go();
    EXPECT_TRUE(daemon.await());
}

int version(std::uint32_t takes_ms)
{
    return bcm_cmd(BCMD_GENERAL_VERSION, takes_ms, 0, 0, 0, nullptr, 0, nullptr, nullptr);
}

TEST(FunclistClient, ADaemonThatDiesIsNoticedAndOneThatReturnsIsUsed)
{
    EXPECT_EQ(BcmdFunclistClient::instance, nullptr);
    const std::array daemons{understudy(), understudy()};
    EXPECT_LT(elapsed_ms([] { EXPECT_EQ(version(0), -37); }), 5000);
    BcmdFunclistClient *const client = BcmdFunclistClient::instance;
    for (const auto &daemon : daemons) {
        enter(*daemon);
        EXPECT_EQ(version(0), 5);
        std::chrono::steady_clock::time_point killed;
        std::thread killer{[&] {
            EXPECT_TRUE(daemon->await()) << "the long call has begun";
            daemon->kill9();
            killed = std::chrono::steady_clock::now();
        }};
        EXPECT_EQ(bcm_cmd(BCMD_GENERAL_DIAG_SHELL, 0, 0, 0, 0, nullptr, 0, nullptr, nullptr), -37);
        EXPECT_EQ(errno, EHOSTDOWN);
        killer.join();
        EXPECT_LT(std::chrono::steady_clock::now() - killed, std::chrono::seconds{5});
    }
    EXPECT_EQ(BcmdFunclistClient::instance, client) << "one client for ever";
    EXPECT_EQ(logged, "");
}

TEST(FunclistClient, ABusyDaemonIsWaitedForAndSilenceIsLogged)
{
    const std::unique_ptr<Peer> daemon = understudy();
    enter(*daemon);
    EXPECT_EQ(version(6000), 5) << "busy is not dead";
    EXPECT_EQ(logged, "");
    EXPECT_EQ(version(600000), -37);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(logged, "3 System did not respond to request 1 from PID " + std::to_string(::getpid()) +
                          " 'funclist_client'\n"); // the kernel keeps 15 characters
}

TEST(FunclistClientDeathTest, ANumberThatIsNoneEndsTheProcess)
{
    const auto ends = [](auto type, const char *text) {
        EXPECT_EXIT(bcm_cmd(type, 0, 0, 0, 0, nullptr, 0, nullptr, nullptr), ::testing::KilledBySignal(SIGABRT), text);
        EXPECT_EXIT(
            bcm_cmd_socket(type, 0, 0, 0, 0, nullptr, 0, nullptr, nullptr), ::testing::KilledBySignal(SIGABRT), text);
    };
    ends(static_cast<FunclistBcmdFuncGeneralType>(0), "CHECK failed: FunclistBcmdFuncGeneralType_IsValid\\(value\\): ");
    ends(static_cast<FunclistBcmdFuncUnitType>(99), "CHECK failed: FunclistBcmdFuncUnitType_IsValid\\(value\\): ");
    ends(static_cast<FunclistBcmdFuncUnitPortType>(-1),
        "CHECK failed: FunclistBcmdFuncUnitPortType_IsValid\\(value\\): ");
    ends(static_cast<FunclistBcmdFuncMplsType>(99), "CHECK failed: FunclistBcmdFuncMplsType_IsValid\\(value\\): ");
    ends(static_cast<FunclistBcmdFuncVhwType>(99), "CHECK failed: FunclistBcmdFuncVhwType_IsValid\\(value\\): ");
}

} // namespace
