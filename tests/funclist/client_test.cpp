// SPDX-License-Identifier: Apache-2.0
// Calls from another process into the stand-in daemon, and into one made here where that one is too well-behaved.
#include <switchcfg/funclist.h>
#include <switchcfg/vxlog.h>

#include "support/daemon.h"
#include "support/descriptors.h"
#include "support/peer.h"

#include <cstdarg>

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

using namespace switchcfg::testing;

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
    for (const auto &[number, seconds] : {std::pair{4, 300U}, {249, 300U}, {8, 30U}, {252, 30U}, {19, 256U}, {53, 256U},
             {191, 60U}, {264, 60U}, {198, 32000U}, {225, 4000U}, {1 << 30, 10U}}) {
        EXPECT_EQ(general(number), seconds) << number;
    }
    int special = 0;
    for (int number = -1; number < 400; ++number) {
        special += general(number) != 10 ? 1 : 0;
    }
    EXPECT_EQ(special, 36);
    EXPECT_EQ(BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncUnitType>(198)), 10U);
    EXPECT_EQ(BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncUnitPortType>(198)), 10U);
    EXPECT_EQ(BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncMplsType>(198)), 10U);
    EXPECT_EQ(BcmdFunclistClient::bcmfTimeout(static_cast<FunclistBcmdFuncVhwType>(198)), 10U);
}

TEST(FunclistClient, CallsArriveAndOutputsComeBack)
{
    const ServingDaemon bcmd{SWITCHLAB_BCMD};
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

TEST(FunclistClient, ABusyDaemonIsWaitedForAndSilenceIsLogged)
{
    // Forked before the client's threads exist. Its version takes arg1 milliseconds.
    const Peer daemon{[](Link &link) {
        link.wait();
        BcmdFunclistServer &server = BcmdFunclistServer::getInstance();
        server.registerLegacyCallback(BCMD_GENERAL_VERSION, [](std::uint32_t arg1, auto...) -> std::int32_t {
            ::usleep(arg1 * 1000);
            return 5;
        });
        server.startProcessing();
        link.tell();
        server.wait();
    }};
    const auto version = [](std::uint32_t takes_ms) {
        return bcm_cmd(BCMD_GENERAL_VERSION, takes_ms, 0, 0, 0, nullptr, 0, nullptr, nullptr);
    };
    EXPECT_EQ(BcmdFunclistClient::instance, nullptr);
    EXPECT_EQ(version(0), -37) << "nobody is there";
    EXPECT_EQ(errno, EHOSTDOWN);
    BcmdFunclistClient *const client = BcmdFunclistClient::instance;
    daemon.go();
    ASSERT_TRUE(daemon.await());
    EXPECT_EQ(version(6000), 5) << "busy is not dead";
    EXPECT_EQ(logged, "");
    EXPECT_EQ(version(600000), -37);
    EXPECT_EQ(errno, ETIMEDOUT);
    EXPECT_EQ(logged, "3 System did not respond to request 1 from PID " + std::to_string(::getpid()) +
                          " 'funclist_client'\n"); // the kernel keeps 15 characters
    EXPECT_EQ(BcmdFunclistClient::instance, client) << "one client for ever";
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
