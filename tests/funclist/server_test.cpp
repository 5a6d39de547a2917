// SPDX-License-Identifier: Apache-2.0
// The daemon's side, without a network: tables, local calls, the callbacks that requests arrive in, statistics.
#include <switchcfg/funclist.h>
#include <switchcfg/funclist.pb.h>
#include <switchcfg/funclist_stats.h>

#include "support/output.h"

#include <ctime>

namespace {

struct Seen {
    std::vector<std::uint32_t> arguments;
    const void *input = nullptr;
    bool asked_for_output = false;
};
Seen seen;

// Results in the sum of its arguments; outputs "output" when arg4 is 1, an empty buffer when it is 2.
std::int32_t function(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4, const void *input,
    void **output, std::uint32_t *output_length)
{
    seen = {{arg1, arg2, arg3, arg4}, input, output != nullptr && output_length != nullptr};
    if (arg4 == 1) {
        *output = ::strdup("output");
        *output_length = 6;
    } else if (arg4 == 2) {
        *output = std::malloc(1);
        *output_length = 0;
    }
    return static_cast<std::int32_t>(arg1 + arg2 + arg3 + arg4);
}

std::int32_t unit_function(
    std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4, const void *input)
{
    seen = {{arg1, arg2, arg3, arg4}, input, false};
    return -5;
}

BcmdFunclistServer &server()
{
    return BcmdFunclistServer::getInstance();
}

template<typename Message, typename Type>
Message request(Type type, std::uint32_t arg1 = 0, std::uint32_t arg4 = 0)
{
    Message message;
    message.set_type(type);
    message.set_arg1(arg1);
    message.set_arg2(2);
    message.set_arg3(3);
    message.set_arg4(arg4);
    return message;
}

TEST(FunclistServer, RunsWhatIsRegisteredInEveryFamily)
{
    void *output = nullptr;
    std::uint32_t length = 0;
    const char input[] = "in";
    const auto run = [&](auto type, bcmd_legacy_callback registered) {
        EXPECT_EQ(server().execBcmdFunc(type, 1, 2, 3, 1, input, &output, &length), -37) << "not registered yet";
        server().registerLegacyCallback(type, [](auto...) -> std::int32_t { return 99; });
        server().registerLegacyCallback(type, registered);
        length = 0;
        EXPECT_EQ(server().execBcmdFunc(type, 1, 2, 3, 1, input, &output, &length), 7) << "the later one";
        EXPECT_EQ(seen.arguments, (std::vector<std::uint32_t>{1, 2, 3, 1}));
        EXPECT_EQ(seen.input, input);
        EXPECT_EQ(std::string(static_cast<char *>(output), length), "output");
        std::free(output);
        // Nobody wants the output: the function is offered a place all the same, and the buffer is freed.
        EXPECT_EQ(server().execBcmdFunc(type, 1, 2, 3, 1, nullptr, nullptr, nullptr), 7);
        EXPECT_TRUE(seen.asked_for_output);
    };
    run(BCMD_GENERAL_ECHO, function);
    run(BCMD_PORT_STATE_GET, function);
    run(BCMD_MPLS_DUMP, function);
    run(BCMD_VHW_RULE_ADD, function);

    EXPECT_EQ(server().execBcmdFunc(BCMD_UNIT_RESET, 1, 2, 3, 4, input, nullptr, nullptr), -37);
    server().registerLegacyCallback(BCMD_UNIT_RESET, unit_function);
    EXPECT_EQ(server().execBcmdFunc(BCMD_UNIT_RESET, 1, 2, 3, 4, input, nullptr, nullptr), -5);
    EXPECT_EQ(seen.arguments, (std::vector<std::uint32_t>{1, 2, 3, 4}));
    EXPECT_EQ(
        server().execBcmdFunc(static_cast<FunclistBcmdFuncGeneralType>(-7), 0, 0, 0, 0, nullptr, nullptr, nullptr),
        -37);
}

TEST(FunclistServer, CallsOfTheDaemonItselfRunInPlace)
{
    EXPECT_EQ(BcmdFunclistClient::instance, nullptr);
    BcmdFunclistClient *const client = BcmdFunclistClient::getInstance();
    EXPECT_EQ(BcmdFunclistClient::instance, client);
    EXPECT_FALSE(client->local_call);
    client->local_call = true;
    server().registerLegacyCallback(BCMD_GENERAL_ECHO, function);
    server().registerLegacyCallback(BCMD_UNIT_RESET, unit_function);
    server().registerLegacyCallback(BCMD_VHW_RULE_ADD, function);
    server().enableStatistics(); // and never started: nothing could be served
    const char input[] = "in";
    EXPECT_EQ(bcm_cmd(BCMD_GENERAL_ECHO, 1, 2, 3, 1, input, 0, nullptr, nullptr), 7);
    EXPECT_EQ(seen.input, input) << "the input's length is not looked at";
    EXPECT_EQ(bcm_cmd(BCMD_UNIT_RESET, 1, 2, 3, 1, nullptr, 0, nullptr, nullptr), -5);
    EXPECT_EQ(bcm_cmd(BCMD_VHW_RULE_ADD, 1, 2, 3, 4, nullptr, 0, nullptr, nullptr), 10);
    EXPECT_EQ(bcm_cmd(BCMD_PORT_STATE_GET, 1, 2, 3, 4, nullptr, 0, nullptr, nullptr), -37);
    EXPECT_EQ(bcm_cmd(BCMD_MPLS_DUMP, 1, 2, 3, 4, nullptr, 0, nullptr, nullptr), -37);
    EXPECT_EQ(bcm_cmd(static_cast<FunclistBcmdFuncGeneralType>(9999), 0, 0, 0, 0, nullptr, 0, nullptr, nullptr), -37);
    EXPECT_EQ(server().statistics()->executed, 0U);
}

TEST(FunclistServer, RequestsAreRunAndAnswered)
{
    server().registerLegacyCallback(BCMD_GENERAL_ECHO, function);
    std::unique_ptr<google::protobuf::Message> reply;
    auto message = request<FunclistBcmdFuncGeneral>(BCMD_GENERAL_ECHO, 1, 0);
    EXPECT_EQ(callback_bcmf_general(message, &reply), 6);
    EXPECT_EQ(seen.input, nullptr);
    EXPECT_EQ(reply, nullptr) << "no output, no message";
    message.set_input("bytes");
    message.set_arg4(1);
    EXPECT_EQ(callback_bcmf_general(message, nullptr), 7);
    EXPECT_STREQ(static_cast<const char *>(seen.input), "bytes");
    EXPECT_EQ(callback_bcmf_general(message, &reply), 7);
    EXPECT_EQ(dynamic_cast<const FunclistBcmdFuncResponseData &>(*reply).output(), "output");
    message.set_arg4(2);
    EXPECT_EQ(callback_bcmf_general(message, &reply), 8);
    EXPECT_TRUE(dynamic_cast<const FunclistBcmdFuncResponseData &>(*reply).has_output());
    EXPECT_EQ(dynamic_cast<const FunclistBcmdFuncResponseData &>(*reply).output(), "");

    FnDispCallbackOutput<FunclistBcmdFuncGeneral> callback{callback_bcmf_general};
    const std::unique_ptr<FnDispCallbackAbstract> copy{callback.clone()};
    EXPECT_EQ(copy->call(message, &reply), 8);
    EXPECT_EQ(&copy->requestType(), &FunclistBcmdFuncGeneral::default_instance());
}

TEST(FunclistServer, StatisticsKeepTheLastSixteenCommands)
{
    EXPECT_EQ(server().statistics(), nullptr);
    EXPECT_EQ(callback_bcmf_general(request<FunclistBcmdFuncGeneral>(BCMD_GENERAL_ECHO), nullptr), -37);
    server().enableStatistics();
    const funclist_stats *const stats = server().statistics();
    server().enableStatistics();
    ASSERT_EQ(server().statistics(), stats);
    EXPECT_EQ(stats->executed, 0U);

    server().registerLegacyCallback(BCMD_GENERAL_ECHO, [](std::uint32_t arg1, auto...) -> std::int32_t {
        const funclist_command &running = server().statistics()->commands[arg1 % 16];
        EXPECT_EQ(running.arg1, arg1);
        EXPECT_EQ(running.end_s, 0U) << "it runs";
        return static_cast<std::int32_t>(arg1);
    });
    const auto before = static_cast<std::uint32_t>(std::time(nullptr));
    for (std::uint32_t i = 0; i < 17; ++i) {
        EXPECT_EQ(callback_bcmf_general(request<FunclistBcmdFuncGeneral>(BCMD_GENERAL_ECHO, i, 4), nullptr),
            static_cast<int>(i));
    }
    EXPECT_EQ(stats->executed, 17U);
    EXPECT_EQ(stats->next, 1U);
    const funclist_command &last = stats->commands[0];
    EXPECT_EQ(last.arg1, 16U);
    EXPECT_EQ(last.arg4, 4U);
    EXPECT_EQ(last.result, 16);
    EXPECT_EQ(last.function, BCMD_GENERAL_ECHO);
    EXPECT_GE(last.start_s, before);
    EXPECT_GE(last.end_s, last.start_s);
    EXPECT_EQ(stats->commands[1].arg1, 1U);

    callback_bcmf_unit(request<FunclistBcmdFuncUnit>(BCMD_UNIT_RESET), nullptr);
    callback_bcmf_unit_port(request<FunclistBcmdFuncUnitPort>(BCMD_PORT_STATE_GET), nullptr);
    callback_bcmf_mpls(request<FunclistBcmdFuncMpls>(BCMD_MPLS_DUMP), nullptr);
    callback_bcmf_vhw(request<FunclistBcmdFuncVhw>(BCMD_VHW_INIT), nullptr);
    for (const auto &[command, family] : {std::pair{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 6}}) {
        EXPECT_EQ(stats->commands[command].family, family);
    }
    EXPECT_EQ(stats->commands[4].result, -37);
}

std::string dumped(const funclist_stats &stats)
{
    ::setenv("TZ", "UTC", 1);
    return switchcfg::testing::text_of([&](std::FILE *stream) { EXPECT_EQ(dumpFunclistStats(&stats, stream), '\n'); });
}

const std::string head = "\n"
                         "Last commands executed:\n"
                         "Exec Start               | Duration     | Type     | Function (Parameters) and result\n"
                         "-------------------------|--------------|----------|---------------------------------\n";

TEST(FunclistStats, NothingYet)
{
    EXPECT_EQ(dumped({}), "Total amount of command processed: 0\n" + head + "\n");
    EXPECT_EQ(dumpFunclistStats(nullptr, stdout), EOF);
    const funclist_stats stats{};
    EXPECT_EQ(dumpFunclistStats(&stats, nullptr), EOF);
    std::FILE *const full = std::fopen("/dev/full", "w");
    (void)std::setvbuf(full, nullptr, _IONBF, 0);
    EXPECT_EQ(dumpFunclistStats(&stats, full), EOF);
    (void)std::fclose(full);
}

TEST(FunclistStats, CommandsOfEveryFamilyOldestFirst)
{
    funclist_stats stats{};
    stats.executed = 20;
    stats.next = 4;
    stats.keep_alive_time = 86400;
    const auto command = [](int family, int function, std::uint32_t end_s, std::uint32_t end_us, int result) {
        return funclist_command{1000000000, 900000, end_s, end_us, family, function, 1, 2, 0xffffffff, 4, result};
    };
    stats.commands[0] = command(3, BCMD_PORT_STATE_SET, 1000000012, 900001, 0);
    stats.commands[1] = command(4, BCMD_MPLS_LABEL_ADD, 1000000001, 100000, -5);
    stats.commands[2] = command(6, BCMD_VHW_INIT, 1000000000, 900000, 7);
    stats.commands[14] = command(1, BCMD_GENERAL_ECHO, 1000012345, 900000, -37);
    stats.commands[15] = command(2, BCMD_UNIT_RESET, 0, 0, 0);
    stats.commands[3] = command(1, 99999, 1000000001, 0, 0);
    const std::string start = "Sun Sep  9 01:46:40 2001";
    const std::string expected =
        "Total amount of command processed: 20\n" + head +                                 //
        start + " | 12345.000000s | General  | BCMD_GENERAL_ECHO 2 (1, 2, -1, 4): -37\n" + //
        start + " |      Running | Unit     | BCMD_UNIT_RESET 3 (1, 2, -1, 4)\n" +         //
        start + " |   12.000001s | UnitPort | BCMD_PORT_STATE_SET 2 (1, 2, -1, 4): 0\n" +  //
        start + " |    0.200000s | Mpls     | BCMD_PORT_STATE_SET 2 (1, 2, -1, 4): -5\n" + //
        start + " |    0.000000s | 6        |  1 (1, 2, -1, 4): 7\n" +                     //
        start + " |    0.100000s | General  |  99999 (1, 2, -1, 4): 0\n" +                 //
        "\nThere are pending operations. Last keep alive message sent Fri Jan  2 00:00:00 1970\n\n";
    EXPECT_EQ(dumped(stats), expected);
    stats.next = 4 + 16 * 1000; // from a block that somebody spoiled
    EXPECT_EQ(dumped(stats), expected);
}

} // namespace
