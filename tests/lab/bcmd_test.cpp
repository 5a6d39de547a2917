// SPDX-License-Identifier: Apache-2.0
// The switch-chip daemon of the lab: what its functions do, its statistics, peers that send what is no request.
#include <switchcfg/funclist.h>

#include "rpc/frame.h"
#include "support/daemon.h"
#include "support/file_text.h"
#include "support/peer.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <zmq.h>

namespace {

using namespace switchcfg::testing;
using ::testing::AnyOf;
using ::testing::HasSubstr;
namespace rpc = switchcfg::rpc;

constexpr char stats_file[] = "/tmp/stats";

class Bcmd : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(daemon_.ready()); }

    template<typename Type>
    int call(Type type, std::uint32_t arg1 = 0, std::uint32_t arg2 = 0, std::uint32_t arg3 = 0, std::uint32_t arg4 = 0,
        const std::string &input = {})
    {
        void *output = nullptr;
        std::uint32_t length = 0;
        const int result = bcm_cmd(
            type, arg1, arg2, arg3, arg4, input.data(), static_cast<std::uint32_t>(input.size()), &output, &length);
        output_.assign(static_cast<const char *>(output), output != nullptr ? length : 0);
        std::free(output);
        return result;
    }

    std::uint64_t frames_received(std::uint32_t port)
    {
        EXPECT_EQ(call(BCMD_PORT_COUNTERS_GET, 0, port), 0);
        EXPECT_EQ(output_.size(), 32U);
        std::uint64_t frames = 0;
        std::memcpy(&frames, output_.data(), sizeof frames);
        return frames;
    }

    Daemon daemon_{SWITCHLAB_BCMD, {"--macs", "100", "--stats-file", stats_file}};
    std::string output_;
};

TEST_F(Bcmd, PortsKeepWhatTheyAreGivenAndCount)
{
    EXPECT_EQ(call(BCMD_UNIT_PRESENT, 1), 1);
    EXPECT_EQ(call(BCMD_UNIT_PRESENT, 2), 0);
    EXPECT_EQ(call(BCMD_PORT_SPEED_SET, 0, 52, 10000), 0);
    EXPECT_EQ(call(BCMD_PORT_SPEED_GET, 0, 52), 10000);
    EXPECT_EQ(call(BCMD_PORT_SPEED_SET, 0, 52, 12), -7);
    EXPECT_EQ(call(BCMD_PORT_FRAME_MAX_SET, 0, 1, 9217), -6);
    for (const std::uint32_t none : {0U, 53U, 0xfffffffeU}) {
        EXPECT_EQ(call(BCMD_PORT_STATE_GET, 0, none), -3);
        EXPECT_EQ(call(BCMD_PORT_STATE_GET, none + 2, 1), none == 0xfffffffeU ? 1 : -3);
    }
    const std::uint64_t first = frames_received(52);
    while (frames_received(52) == first) { // 52000 a second
    }
    EXPECT_EQ(call(BCMD_PORT_STATE_SET, 0, 52, 0), 0);
    EXPECT_EQ(call(BCMD_PORT_STATE_GET, 0, 52), 0);
    const std::uint64_t stopped = frames_received(52);
    EXPECT_GT(stopped, first);
    EXPECT_EQ(frames_received(52), stopped);
    EXPECT_EQ(call(BCMD_PORT_COUNTERS_CLEAR, 0, 52), 0);
    EXPECT_EQ(frames_received(52), 0U);
    EXPECT_EQ(call(BCMD_UNIT_RESET, 0), 0);
    EXPECT_EQ(call(BCMD_PORT_SPEED_GET, 0, 52), 1000);
}

TEST_F(Bcmd, TablesComeInPages)
{
    for (const auto &[first, most, found] :
        {std::tuple{0U, 60U, 60}, {60U, 60U, 40}, {100U, 60U, 0}, {0xffffffffU, 0xffffffffU, 0}}) {
        EXPECT_EQ(call(BCMD_GENERAL_MAC_TABLE_PAGE, first, most), found);
        EXPECT_EQ(output_.size(), static_cast<std::size_t>(found) * 16);
    }
    EXPECT_EQ(call(BCMD_GENERAL_MAC_ADD, 1, 7, 4094, 0, "00:11:22:33:44:55"), 0);
    EXPECT_EQ(call(BCMD_GENERAL_MAC_ADD, 1, 7, 4095, 0, "00:11:22:33:44:55"), -7);
    EXPECT_EQ(call(BCMD_GENERAL_MAC_ADD, 1, 7, 1, 0, "00:11:22"), -7);
    EXPECT_EQ(call(BCMD_GENERAL_MAC_ADD, 1, 7, 1), -7) << "no input";
    EXPECT_EQ(call(BCMD_GENERAL_MAC_TABLE_PAGE, 100, 0), 1);
    EXPECT_EQ(output_.substr(0, 6), std::string("\0\x11\x22\x33\x44\x55", 6));
    EXPECT_EQ(call(BCMD_GENERAL_MAC_DELETE, 0, 0, 4094, 0, "00:11:22:33:44:55"), 0);
    EXPECT_EQ(call(BCMD_GENERAL_MAC_DELETE, 0, 0, 4094, 0, "00:11:22:33:44:55"), -8);
    EXPECT_EQ(call(BCMD_GENERAL_MAC_TABLE_FLUSH), 100);

    EXPECT_EQ(call(BCMD_MPLS_LABEL_ADD, 16, 0, 1, 2), 0);
    EXPECT_EQ(call(BCMD_MPLS_LABEL_ADD, 16, 0, 1, 2), -5);
    EXPECT_EQ(call(BCMD_MPLS_LABEL_ADD, 15, 0, 1, 2), -6);
    EXPECT_EQ(call(BCMD_MPLS_LABEL_ADD, 1000, 2000, 1, 3), 0);
    EXPECT_EQ(call(BCMD_MPLS_DUMP), 0);
    EXPECT_STREQ(output_.c_str(), "Label    Out      Port       Next hop\n"
                                  "16       pop      1/2        02:00:4D:00:00:10\n"
                                  "1000     2000     1/3        02:00:4D:00:03:E8\n"
                                  "2 labels, 0.0% of the table\n");
    EXPECT_EQ(output_.back(), '\0') << "the text is handed over with its terminator";
    EXPECT_EQ(call(BCMD_GENERAL_DIAG_FAIL, 60), -60);
    EXPECT_EQ(call(BCMD_GENERAL_DIAG_BULK, 0xffffffff), -6);
}

TEST_F(Bcmd, PrintsItsStatisticsOnRequestAndLeavesInTheMiddleOfACall)
{
    EXPECT_EQ(call(BCMD_GENERAL_DIAG_FAIL, 60, 2, 3, 4), -60);
    ASSERT_EQ(::mkfifo(stats_file, 0600), 0);
    const auto statistics = [this] {
        EXPECT_EQ(::kill(daemon_.pid(), SIGUSR1), 0);
        return file_text(stats_file); // to the end that the daemon makes of it
    };
    std::string printed = statistics();
    EXPECT_THAT(printed, HasSubstr("Total amount of command processed: 1\n"));
    EXPECT_THAT(printed, HasSubstr("s | General  | BCMD_GENERAL_DIAG_FAIL 199 (60, 2, 3, 4): -60\n\n"));

    EXPECT_EQ(call(BCMD_GENERAL_COMMAND_STATS), 0);
    funclist_stats stats{};
    ASSERT_EQ(output_.size(), sizeof stats);
    std::memcpy(&stats, output_.data(), sizeof stats);
    EXPECT_EQ(stats.executed, 2U);

    Peer caller{[this](Link &) { std::_Exit(-call(BCMD_GENERAL_DIAG_SHELL, 3600000)); }};
    while (printed.find("Running") == std::string::npos || printed.find(" 1970") != std::string::npos) {
        printed = statistics(); // until the call has begun and its caller has asked whether the daemon lives
    }
    EXPECT_THAT(printed, HasSubstr("There are pending operations. Last keep alive message sent "));
    EXPECT_EQ(::kill(daemon_.pid(), SIGTERM), 0);
    EXPECT_EQ(daemon_.exit_status(), 0);
    // Its result, or that the daemon is gone when the caller had no turn between the two.
    EXPECT_THAT(WEXITSTATUS(caller.join()), AnyOf(31, 37));
}

// Bare frames to the daemon's port.
struct Dealer {
    Dealer()
    {
        const int patience_ms = 5000;
        ::zmq_setsockopt(socket, ZMQ_RCVTIMEO, &patience_ms, sizeof patience_ms);
        ::zmq_connect(socket, "tcp://127.0.0.1:62050");
    }
    ~Dealer()
    {
        ::zmq_close(socket);
        ::zmq_ctx_term(context);
    }
    Dealer(const Dealer &) = delete;
    Dealer &operator=(const Dealer &) = delete;

    int result_of(const std::string &service, std::uint32_t id, const std::string &payload)
    {
        std::vector<std::uint8_t> frame(rpc::request_head + service.size());
        rpc::write_request_head(frame.data(), {id, ++sequence, 0, 0, service, {}});
        frame.insert(frame.end(), payload.begin(), payload.end());
        ::zmq_send(socket, frame.data(), frame.size(), 0);
        std::array<std::uint8_t, 4096> answer{};
        const int size = ::zmq_recv(socket, answer.data(), answer.size(), 0);
        const auto reply = rpc::parse_reply({answer.data(), size > 0 ? static_cast<std::size_t>(size) : 0});
        EXPECT_TRUE(reply && reply->sequence == sequence);
        return reply ? reply->result : -9999;
    }

    void *context = ::zmq_ctx_new();
    void *socket = ::zmq_socket(context, ZMQ_DEALER);
    std::uint64_t sequence = 0;
};

TEST_F(Bcmd, AnswersHalfAndSpoiltRequestsWithAFailure)
{
    FunclistBcmdFuncGeneral message;
    message.set_type(BCMD_GENERAL_DIAG_FAIL);
    message.set_arg1(60);
    message.set_arg2(2);
    message.set_arg3(3);
    message.set_arg4(4);
    const std::string needed = message.SerializeAsString();
    message.set_input(std::string(300, 'i'));
    const std::string payload = message.SerializeAsString();

    Dealer dealer;
    EXPECT_EQ(dealer.result_of("FLBC", 1, payload), -60);
    for (std::size_t size = 0; size < payload.size(); ++size) {
        // Without its input, it is a whole request again.
        EXPECT_EQ(dealer.result_of("FLBC", 1, payload.substr(0, size)), size == needed.size() ? -60 : -37) << size;
    }
    EXPECT_EQ(dealer.result_of("FLBD", 1, payload), -37);
    EXPECT_EQ(dealer.result_of("FLBC", 5, payload), -37);
    EXPECT_EQ(dealer.result_of("FLBC", 6, payload), -37) << "this family is not served to others";
    EXPECT_EQ(dealer.result_of("FLBC", 2, payload), -37) << "no function of the unit family has this number";
    std::string unknown = payload;
    unknown[1] = 0x7f; // a number that the enumeration does not have
    EXPECT_EQ(dealer.result_of("FLBC", 1, unknown), -37);
    EXPECT_EQ(call(BCMD_GENERAL_ECHO, 0, 0, 0, 0, "alive"), 0);
    EXPECT_EQ(output_, "alive");
}

} // namespace
