// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/log.h>
#include <switchcfg/log_store.h>

#include "support/descriptors.h"
#include "support/peer.h"

namespace {

using namespace switchcfg::testing;

constexpr std::size_t slot = 4172;
constexpr std::size_t count = 4176;
constexpr std::size_t size = 4180;
using Wire = std::array<unsigned char, 4688>;

void put(Wire &wire, std::size_t offset, std::uint32_t value)
{
    std::memcpy(&wire[offset], &value, 4);
}

// A daemon on the control port, both families, whose reply is the request as `change` leaves it, and `extra` behind it.
Peer answer(const std::function<void(Wire &)> &change, const std::string &extra = {}, std::int32_t reply_bytes = 4688)
{
    return Peer{[=](Link &link) {
        ::alarm(100);
        const int listener = socket_is6_create_any(LOG_CONTROL_PORT);
        link.tell();
        for (;;) {
            const int fd = ::accept(listener, nullptr, nullptr);
            Wire wire{};
            if (vx_read_timeout(fd, wire.data(), wire.size(), 10) == 0) {
                change(wire);
                socket_send(fd, wire.data(), reply_bytes);
                socket_send(fd, extra.data(), static_cast<std::int32_t>(extra.size()));
                if (extra == "stall") {
                    ::pause();
                }
            }
            ::close(fd);
        }
    }};
}

int send4(loggers_command &command, std::uint32_t timeout = 20)
{
    return loggers_send_command_ipv4("127.0.0.9", LOG_CONTROL_PORT, timeout, &command);
}

int send6(loggers_command &command, std::uint32_t timeout = 20)
{
    return loggers_send_command_ipv6("::1", 0, LOG_CONTROL_PORT, timeout, &command);
}

void expect_no_extra_data(const loggers_command &command)
{
    EXPECT_EQ(command.extra_data, nullptr);
    EXPECT_EQ(command.element_count, 0U);
    EXPECT_EQ(command.element_size, 0U);
}

TEST(LogCommand, RecordTravelsWholeAndComesBackWithItsExtraData)
{
    const std::string extra = "0123456789abcdefghij!";
    const Peer daemon = answer(
        [](Wire &wire) {
            wire[7] =
                static_cast<unsigned char>(std::all_of(&wire[slot], &wire[slot] + 12, [](int b) { return b == 0; }));
            wire[4687] = static_cast<unsigned char>(wire[4687] + wire[4184] + wire[72] + wire[4171]);
            put(wire, count, 7);
            put(wire, size, 3);
        },
        extra);
    ASSERT_TRUE(daemon.await());
    for (const auto send : {send4, send6}) {
        loggers_command command;
        std::memset(&command, 0xA5, sizeof command); // the pointer too: what is left there is never freed
        command.command = LOGGERS_CMD_SHOW_DESTINATION;
        command.word = 0;
        std::strcpy(command.destination, "RAM_FILE");
        command.body[0] = 1;
        command.body[4099] = 2;
        command.tail[0] = 3;
        command.tail[503] = 4;
        ASSERT_EQ(send(command, 20), 0);
        EXPECT_EQ(command.command, 7U);
        EXPECT_STREQ(command.destination, "RAM_FILE");
        EXPECT_EQ(reinterpret_cast<unsigned char *>(&command)[7], 1) << "went out with the three fields cleared";
        EXPECT_EQ(command.tail[503], 10);
        ASSERT_EQ(command.element_count, 7U);
        ASSERT_EQ(command.element_size, 3U);
        EXPECT_STREQ(static_cast<char *>(command.extra_data), extra.c_str()) << "one NUL behind it";
        loggers_finish_command(&command);
        expect_no_extra_data(command);
        loggers_finish_command(&command);
    }
    loggers_finish_command(nullptr);
}

TEST(LogCommand, ArgumentsAreChecked)
{
    std::ofstream{"/etc/hosts", std::ios::app} << "\n10.1.2.3 host-with-four\n::1 host-with-six\n";
    const int before = open_descriptors();
    loggers_command command{};
    EXPECT_EQ(loggers_send_command_ipv4(nullptr, 1, 1, &command), -1003);
    EXPECT_EQ(loggers_send_command_ipv4("127.0.0.1", 1, 1, nullptr), -1003);
    EXPECT_EQ(loggers_send_command_ipv6("::1", 0, 1, 1, nullptr), -1003);
    EXPECT_EQ(loggers_send_command_ipv4("::1", 1, 1, &command), -1010);
    EXPECT_EQ(loggers_send_command_ipv6("127.0.0.1", 0, 1, 1, &command), -1010);
    EXPECT_EQ(loggers_send_command_ipv4("no such host", 1, 1, &command), -1022);
    EXPECT_EQ(loggers_send_command_ipv6("no such host", 0, 1, 1, &command), -1022);
    EXPECT_EQ(loggers_send_command_ipv6("host-with-six", 0, 1, 1, &command), -1021) << "a name, not an address";
    EXPECT_EQ(loggers_send_command_ipv4("host-with-four", 1, 1, &command), -1018);
    EXPECT_EQ(send6(command), -1018);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(LogCommand, LyingRepliesAreRefused)
{
    struct Case {
        const char *what;
        std::uint32_t slot, count, size;
        std::string extra;
        int result;
    };
    const Case cases[] = {
        {"a pointer", 0xDEADBEE0, 4, 1, "abcd", -1008},
        {"a pointer but no elements", 0xDEADBEE0, 0, 1, "", 0},
        {"product above 64 bits' reach", 0, 0xFFFFFFFF, 0xFFFFFFFF, "abcd", -1030},
        {"all that 32 bits can say", 0, 0xFFFFFFFF, 1, "abcd", -1030},
        {"product that wraps to 0 in 32 bits", 0, 0x10000, 0x10000, "abcd", -1030},
        {"product that wraps to 16 in 32 bits", 0, 0x10000001, 16, std::string(16, 'x'), -1030},
        {"less than announced", 0, 5, 1, "abcd", -1020},
        {"elements of no size", 0, 5, 0, "abcd", 0},
        {"stall", 0, 2000000, 1, "stall", -1020},
    };
    const int before = open_descriptors();
    for (const Case &it : cases) {
        const Peer daemon = answer(
            [&](Wire &wire) {
                put(wire, slot, it.slot);
                put(wire, count, it.count);
                put(wire, size, it.size);
            },
            it.extra);
        ASSERT_TRUE(daemon.await());
        loggers_command command{};
        EXPECT_EQ(send6(command, 1), it.result) << it.what;
        if (it.result != 0) {
            expect_no_extra_data(command);
        } else if (it.count == 0) {
            EXPECT_EQ(command.extra_data, nullptr) << it.what;
        }
        loggers_finish_command(&command);
    }
    {
        const Peer short_reply = answer([](Wire &wire) { wire.fill(0xFF); }, {}, 4687);
        ASSERT_TRUE(short_reply.await());
        loggers_command command{};
        EXPECT_EQ(send4(command), -1019);
        expect_no_extra_data(command);
        loggers_finish_command(&command);
    }
    EXPECT_EQ(open_descriptors(), before);
}

TEST(LogCommand, FetchSurvivesElementsOfNoSizeAndFailures)
{
    std::uint32_t length = 77;
    EXPECT_EQ(logger_get_sized("RAM_FILE", &length), nullptr);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(logger_get(nullptr), nullptr);
    const Peer daemon = answer([](Wire &wire) { put(wire, count, 1U << 30); });
    ASSERT_TRUE(daemon.await());
    EXPECT_EQ(logram_get(), nullptr);
    EXPECT_EQ(logger_save("RAM_FILE", "/tmp/saved"), -1);
}

} // namespace
