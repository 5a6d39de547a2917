// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/log.h>
#include <switchcfg/print_ext.h>

#include "support/descriptors.h"
#include "support/file_text.h"
#include "support/peer.h"

#include <cstdarg>

namespace {

using namespace switchcfg::testing;

using Header = std::array<unsigned char, 118>;

struct Message {
    Header header{};
    std::string text; // with its terminator, if it has one
    std::size_t header_bytes = 0;
};

// What the sender of the next connection sent. Senders never wait for an answer, so one thread can play both sides.
Message receive(int listener)
{
    const int fd = socket_us_accept(listener);
    Message message;
    message.header_bytes =
        static_cast<std::size_t>(::recv(fd, message.header.data(), message.header.size(), MSG_WAITALL));
    char buffer[4096];
    for (ssize_t got = 0; (got = ::recv(fd, buffer, sizeof buffer, 0)) > 0;) {
        message.text.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return message;
}

Header expected_header(const std::string &category, int level, int facility, std::uint16_t length)
{
    Header header{};
    std::copy(category.begin(), category.end(), header.begin());
    header[64] = static_cast<unsigned char>(level);
    header[65] = static_cast<unsigned char>(facility);
    std::memcpy(&header[66], &length, 2); // host order
    return header;
}

std::string fallback_file()
{
    return file_text(LOG_FALLBACK_PATH);
}

// Every test gives back the descriptors it takes.
class LogMessage : public testing::Test {
  protected:
    LogMessage() { std::filesystem::create_directories("/mnt/flash/log"); }
    ~LogMessage() override
    {
        ::close(listener);
        EXPECT_EQ(open_descriptors(), before);
    }
    const int before = open_descriptors();
    const int listener = socket_us_create(LOG_SOCKET_PATH);
};

int vlog(int (*send)(int, int, const char *, va_list), int facility, int level, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int result = send(facility, level, format, arguments);
    va_end(arguments);
    return result;
}

TEST_F(LogMessage, GoesOutAsHeaderAndTextOrNotAtAll)
{
    printExts_init();
    EXPECT_EQ(log_send_fac(16, 5, "port %d/%d is up", 1, 7), 0);
    Message message = receive(listener);
    EXPECT_EQ(message.header, expected_header("NO_CATEGORY", 5, 16, 15));
    EXPECT_EQ(message.text, std::string("port 1/7 is up") + '\0');

    EXPECT_EQ(vlog(vlog_send_fac, 0x1FF, -1, "%s", ""), 0);
    message = receive(listener);
    EXPECT_EQ(message.header, expected_header("NO_CATEGORY", 255, 255, 1)) << "low 8 bits";
    EXPECT_EQ(message.text, std::string(1, '\0'));

    const unsigned char mac[] = {0, 0x1a, 0x2b, 0x3c, 0x4d, 0x5e};
    const std::string category(70, 'c');
    EXPECT_EQ(log_send_cat(category.c_str(), 3, "new host %M", mac), 0);
    message = receive(listener);
    EXPECT_EQ(message.header, expected_header(category.substr(0, 63), 3, 255, 27));
    EXPECT_STREQ(message.text.c_str(), "new host 00:1A:2B:3C:4D:5E");

    EXPECT_EQ(log_send_cat("", 3, "text"), -1008);
    EXPECT_EQ(receive(listener).header_bytes, 0U);
    const char *none = nullptr;
    EXPECT_EQ(log_send_cat(none, 3, "text"), -1003);
    EXPECT_EQ(log_send_fac(1, 3, none), -1001);
    EXPECT_EQ(receive(listener).header_bytes, 0U);
}

TEST_F(LogMessage, LengthWrapsAtSixteenBits)
{
    const std::string longest(65534, 'x');
    EXPECT_EQ(log_send_fac(1, 3, "%s", longest.c_str()), 0);
    EXPECT_EQ(receive(listener).text, longest + '\0');

    const std::string too_long = "begins here" + std::string(65536 - 5, 'x');
    EXPECT_EQ(log_send_fac(1, 3, "%s", too_long.c_str()), 0);
    const Message cut = receive(listener);
    EXPECT_EQ(cut.header, expected_header("NO_CATEGORY", 3, 1, 7));
    EXPECT_EQ(cut.text, "begins ") << "as many bytes as the header says";
    EXPECT_FALSE(std::filesystem::exists(LOG_FALLBACK_PATH));

    const std::string unlucky(65535, 'y');
    EXPECT_EQ(log_send_fac(1, 3, "%s", unlucky.c_str()), -1019);
    const std::string lines = fallback_file();
    const std::size_t second_line = lines.find('\n') + 1;
    EXPECT_EQ(second_line, sizeof "Sat Nov 21 09:18:41 2026");
    EXPECT_TRUE(lines.substr(second_line).starts_with(" [Error ")) << lines.substr(0, 100);
    EXPECT_TRUE(lines.ends_with("] " + unlucky + "\n"));
    EXPECT_EQ(log_log_to_file("one more"), 0);
    EXPECT_TRUE(fallback_file().ends_with("\n one more\n"));
    EXPECT_EQ(std::ranges::count(fallback_file(), '\n'), 4);
}

TEST_F(LogMessage, NobodyThereLeavesNoLine)
{
    std::filesystem::remove_all("/mnt/flash/log");
    EXPECT_EQ(log_log_to_file("no folder"), -1001);
    EXPECT_EQ(log_log_to_file(nullptr), -1003);
    std::filesystem::create_directories("/mnt/flash/log");
    ::shutdown(listener, SHUT_RDWR); // a daemon that died
    EXPECT_EQ(log_send_fac(1, 3, "text"), -1018);
    ::unlink(LOG_SOCKET_PATH);
    EXPECT_EQ(log_send_fac(1, 3, "text"), -1018);
    EXPECT_FALSE(std::filesystem::exists(LOG_FALLBACK_PATH));
}

TEST_F(LogMessage, FullBacklogIsWaitedForButNotForEver)
{
    const Peer sender{[](Link &link) {
        for (int i = 0; i < 20; ++i) { // more than wait for a daemon that is busy
            if (log_send_fac(1, 3, "message %d", i) != 0) {
                return;
            }
        }
        link.tell();
    }};
    for (int i = 0; i < 20; ++i) {
        EXPECT_EQ(std::string(receive(listener).text.c_str()), "message " + std::to_string(i));
    }
    ASSERT_TRUE(sender.await());

    int sent = 0;
    EXPECT_GE(elapsed_ms([&] {
        while (log_send_fac(1, 3, "nobody listens") == 0) {
            ++sent;
        }
    }),
        10000);
    EXPECT_GE(sent, 5);
}

TEST(LogHeader, BuilderWritesAllButTheReserve)
{
    log_message_header header;
    std::memset(&header, 0xEE, sizeof header);
    ASSERT_EQ(log_build_message_header("cat", 2, 3, 0xFFFF, &header), 0);
    Header bytes;
    std::memcpy(bytes.data(), &header, bytes.size());
    Header expected = expected_header("cat", 3, 2, 0);
    std::fill(expected.begin() + 68, expected.begin() + 115, 0xEE);
    EXPECT_EQ(bytes, expected);
    EXPECT_EQ(log_build_message_header("", 2, 3, 0, &header), -1008);
    EXPECT_EQ(log_build_message_header(nullptr, 2, 3, 0, &header), -1008);
    EXPECT_EQ(log_build_message_header("cat", 2, 3, 0, nullptr), -1008);
}

TEST(LogErrMsg, KeepsWhatFits)
{
    char buffer[LOG_ERR_MSG_SIZE + 1];
    for (const int length : {0, 499, 500, 2000}) {
        std::memset(buffer, 'E', sizeof buffer);
        const std::string text(static_cast<std::size_t>(length), 't');
        EXPECT_EQ(log_set_err_msg(buffer, "%s", text.c_str()), length < 500 ? 0 : -1001);
        EXPECT_EQ(buffer, text.substr(0, 499));
        EXPECT_TRUE(std::all_of(buffer + std::strlen(buffer), buffer + 500, [](char c) { return c == 0; }));
        EXPECT_EQ(buffer[500], 'E');
    }
    EXPECT_EQ(log_set_err_msg(nullptr, "text"), -1008);
}

TEST(LogNames, CodesAndCommandsHaveTheirNames)
{
    EXPECT_STREQ(log_get_error_string(0), "LOGGERS_RET_OK");
    EXPECT_STREQ(log_get_error_string(-1032), "LOGGERS_ERR_CONFIGURATION_GET");
    EXPECT_STREQ(log_get_error_string(19), "LOGGERS_ERR_SERVER_SEND");
    EXPECT_STREQ(log_get_command_string(20), "LOGGERS_CMD_ENABLE_QUEUE");
    for (const int code : {-1033, -999, -1, 33, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(log_get_error_string(code), nullptr) << code;
    }
    EXPECT_EQ(log_get_command_string(21), nullptr);
}

TEST(LogAddress, IsResolvedAndStandardized)
{
    std::ofstream{"/etc/hosts", std::ios::app} << "\n10.1.2.3 host-with-four\n2001:db8::7 host-with-six\n";
    const std::tuple<const char *, int, int, const char *> cases[] = {{"192.168.0.1", 0, 2, "192.168.0.1"},
        {"127.1", 0, 2, "127.0.0.1"}, {"2001:0DB8:0::0001", 0, 10, "2001:db8::1"},
        {"::ffff:1.2.3.4", 0, 10, "::ffff:1.2.3.4"}, {"host-with-four", 0, 2, "10.1.2.3"},
        {"host-with-six", 0, 10, "2001:db8::7"}, {"no such host", -1022, 0, ""}, {"1.2.3.4.5", -1022, 0, ""}};
    for (const auto &[text, result, expected_family, standard] : cases) {
        int family = 77;
        EXPECT_EQ(log_get_address_family(text, &family), result) << text;
        EXPECT_EQ(family, expected_family) << text;
        char out[LOG_ADDRESS_TEXT_SIZE];
        std::memset(out, 'x', sizeof out);
        EXPECT_EQ(log_standardize_ip(text, out), result) << text;
        EXPECT_STREQ(out, standard);
    }
    int family = 0;
    EXPECT_EQ(log_get_address_family(nullptr, &family), -1008);
    EXPECT_EQ(log_get_address_family("::1", nullptr), -1008);
    EXPECT_EQ(log_standardize_ip("::1", nullptr), -1008);
}

} // namespace
