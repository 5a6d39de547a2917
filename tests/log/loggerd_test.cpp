// SPDX-License-Identifier: Apache-2.0
// The library against the logging daemon of the lab, as the switch uses the two.
#include <switchcfg/log.h>
#include <switchcfg/log_store.h>
#include <switchcfg/request_channel.h>

#include "support/daemon.h"
#include "support/file_text.h"
#include "support/peer.h"

namespace {

using namespace switchcfg::testing;

std::string stored(const char *name)
{
    std::uint32_t length = 0;
    const Freed<char> text{logger_get_sized(name, &length)};
    EXPECT_TRUE(text == nullptr || text.get()[length] == '\0');
    return text ? std::string(text.get(), length) : std::string{};
}

// Waits for a message to arrive: what was handed over may still be on its way into the store.
std::string stored_with(const char *name, const std::string &text)
{
    for (;;) {
        std::string all = stored(name);
        if (all.find(text) != std::string::npos) {
            return all;
        }
    }
}

std::int32_t result_of(std::uint32_t code, const char *destination, std::string *extra = nullptr)
{
    loggers_command command{};
    command.command = code;
    std::memcpy(command.destination, destination, ::strnlen(destination, sizeof command.destination));
    EXPECT_EQ(loggers_send_command_ipv4("127.0.0.1", LOG_CONTROL_PORT, 10, &command), 0);
    if (extra != nullptr && command.extra_data != nullptr) {
        extra->assign(static_cast<char *>(command.extra_data), command.element_count * command.element_size);
    }
    loggers_finish_command(&command);
    return static_cast<std::int32_t>(command.word);
}

TEST(Loggerd, StoresAreFetchedSavedAndCleared)
{
    const ServingDaemon daemon{SWITCHLAB_LOGGERD};
    EXPECT_EQ(logram_get(), nullptr) << "empty";
    EXPECT_EQ(logger_save("RAM_FILE", "/tmp/saved"), -1);
    EXPECT_FALSE(std::filesystem::exists("/tmp/saved"));

    ASSERT_EQ(log_send_fac(16, 5, "first\nin two lines"), 0);
    ASSERT_EQ(log_send_cat("LINK", 4, "second"), 0);
    ASSERT_EQ(log_send_cat("LINK", 7, "third"), 0);
    const std::string internal = stored_with("INTERNAL_RAM_FILE", " LINK.debug: third\n");
    const std::string ram = stored("RAM_FILE");
    EXPECT_EQ(lines_of(ram).size(), 2U);
    EXPECT_NE(ram.find(" local0.notice: first#012in two lines\n"), std::string::npos) << ram;
    EXPECT_NE(ram.find(" LINK.warning: second\n"), std::string::npos);
    const Freed<char> flash{logflash_get()};
    EXPECT_EQ(flash.get(), ram.substr(ram.find('\n') + 1));

    ::umask(027);
    write_file("/tmp/saved", std::string(10000, 'o'));
    EXPECT_EQ(logger_save("RAM_FILE", "/tmp/saved"), 0);
    EXPECT_EQ(file_text("/tmp/saved"), ram);
    EXPECT_EQ(logger_save("RAM_FILE", "/no/such/folder/file"), -44);
    EXPECT_EQ(logger_save("RAM_FILE", "/dev/full"), -1);
    EXPECT_EQ(logger_save("RAM_FILE", "/tmp/other"), 0);
    struct stat info {};
    EXPECT_EQ(::stat("/tmp/other", &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0640U);

    Warning_times = 3;
    EXPECT_EQ(logram_clear(), 0);
    EXPECT_EQ(Warning_times, 0);
    EXPECT_EQ(stored("RAM_FILE"), "");
    EXPECT_EQ(lines_of(stored("FLASH_FILE")).size(), 1U);
    EXPECT_EQ(logflash_clear(), 0);
    EXPECT_EQ(loginternalram_clear(), 0);
    EXPECT_EQ(loginternalflash_clear(), 0);
    EXPECT_EQ(logflash_get(), nullptr);
    EXPECT_EQ(loginternalram_get(), nullptr);
}

TEST(Loggerd, FlashStoresOutliveTheDaemonAndNothingAnswersWithoutIt)
{
    {
        ServingDaemon daemon{SWITCHLAB_LOGGERD};
        ASSERT_EQ(log_send_fac(3, 2, "remember me"), 0);
        stored_with("FLASH_FILE", "remember me");
        daemon.kill9();
    }
    EXPECT_EQ(log_send_fac(3, 2, "lost"), LOGGERS_ERR_SERVER_CONNECT);
    Warning_times = 3;
    EXPECT_EQ(logflash_clear(), -1);
    EXPECT_EQ(Warning_times, 3) << "unchanged by a clear that failed";
    EXPECT_EQ(logflash_get(), nullptr);
    const Daemon again{SWITCHLAB_LOGGERD}; // over the socket file of the dead one
    ASSERT_TRUE(again.ready());
    EXPECT_EQ(log_send_fac(3, 2, "back"), 0);
    EXPECT_EQ(lines_of(stored_with("FLASH_FILE", "back")).size(), 2U);
    EXPECT_EQ(stored("RAM_FILE").find("remember me"), std::string::npos);
}

TEST(Loggerd, StoresStayWithinTheirLimits)
{
    const ServingDaemon daemon{SWITCHLAB_LOGGERD, {"--ram-limit", "4000", "--flash-limit", "4000"}};
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(log_send_fac(16, 3, "message number %d", i), 0);
    }
    for (const char *store : {"RAM_FILE", "FLASH_FILE"}) {
        const std::string text = stored_with(store, "message number 499\n");
        EXPECT_LE(text.size(), 4000U);
        EXPECT_GE(lines_of(text).size(), 40U);
        EXPECT_EQ(text.substr(0, 2), "20") << "begins with a whole line";
    }
}

TEST(Loggerd, SurvivesHostilePeersAndAnswersEveryCommand)
{
    const ServingDaemon daemon{SWITCHLAB_LOGGERD};
    std::array<char, 118> header{};
    std::vector<int> stuck;
    const auto send_raw = [&](std::size_t bytes) {
        const int fd = socket_us_connect(LOG_SOCKET_PATH);
        socket_send(fd, header.data(), static_cast<std::int32_t>(bytes));
        return fd;
    };
    ::close(send_raw(118)); // no category
    header.fill('x');
    ::close(send_raw(118)); // no end of the category
    std::memset(&header[60], 0, 58);
    ::close(send_raw(118)); // no text
    ::close(send_raw(0));
    ::close(send_raw(117));
    header[66] = header[67] = 5; // a text that never comes
    ::close(send_raw(118));
    for (int i = 0; i < 20; ++i) {
        stuck.push_back(send_raw(i % 2 == 0 ? 118 : 10));
    }
    ASSERT_EQ(log_send_fac(16, 5, "still here"), 0);
    EXPECT_EQ(lines_of(stored_with("RAM_FILE", "still here\n")).size(), 1U);
    const std::string notes = stored("INTERNAL_FLASH_FILE");
    for (const char *note :
        {"without a proper category", "announces no text", "before its header", "before its text"}) {
        EXPECT_NE(notes.find(note), std::string::npos) << note;
    }

    // A client that says nothing holds the control port for as long as the daemon's own time-out, no longer.
    stuck.push_back(daemon_client_req_connect(LOG_CONTROL_PORT));
    stuck.push_back(daemon_client_req_connect_ipv6(LOG_CONTROL_PORT, in6addr_loopback.s6_addr, 0));
    EXPECT_EQ(lines_of(stored("RAM_FILE")).size(), 1U);
    stored_with("INTERNAL_FLASH_FILE", "a sender took too long");
    for (const int fd : stuck) {
        ::close(fd);
    }
    ASSERT_EQ(log_send_fac(16, 5, "to the end"), 0);
    EXPECT_EQ(lines_of(stored_with("RAM_FILE", "to the end\n")).size(), 2U);

    EXPECT_EQ(Daemon{SWITCHLAB_LOGGERD}.exit_status(), 1) << "one at a time, and the first keeps its socket";
    std::string extra;
    EXPECT_EQ(result_of(LOGGERS_CMD_GET_ALL_DESTINATION, "", &extra), 0);
    ASSERT_EQ(extra.size(), 4 * 64U);
    EXPECT_STREQ(&extra[3 * 64], "INTERNAL_FLASH_FILE");
    EXPECT_EQ(result_of(LOGGERS_CMD_HELP, "", &extra), 0);
    EXPECT_EQ(lines_of(extra).size(), 21U);
    EXPECT_EQ(result_of(LOGGERS_CMD_SHOW_DESTINATION, "NO_FILE"), LOGGERS_ERR_INVALID_DESTINATION);
    EXPECT_EQ(result_of(LOGGERS_CMD_SHOW_DESTINATION, std::string(80, 'x').c_str()), LOGGERS_ERR_INVALID_STR_LEN);
    EXPECT_EQ(result_of(LOGGERS_CMD_REMOVE_DESTINATION, "RAM_FILE"), LOGGERS_ERR_PERMISSION_DENIED);
    EXPECT_EQ(result_of(0xFFFFFFFF, ""), LOGGERS_ERR_INVALID_COMMAND);
    EXPECT_EQ(result_of(LOGGERS_CMD_SHUTDOWN, ""), 0);
    EXPECT_EQ(daemon.exit_status(), 0);
    EXPECT_EQ(log_send_fac(3, 2, "lost"), LOGGERS_ERR_SERVER_CONNECT);
}

TEST(Loggerd, ManySendersLoseAndMixNothing)
{
    constexpr int senders = 64;
#if defined(__SANITIZE_ADDRESS__) || !defined(__OPTIMIZE__)
    constexpr int messages = 200;
#else
    constexpr int messages = 2000;
#endif
    const ServingDaemon daemon{SWITCHLAB_LOGGERD, {"--ram-limit", "100000000"}};
    auto *results = static_cast<int(*)[messages]>(
        ::mmap(nullptr, sizeof(int) * senders * messages, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    const auto text_of = [](int sender, int message) {
        return "sender " + std::to_string(sender) + " message " + std::to_string(message) + " " +
               std::string(static_cast<std::size_t>(message % 101), static_cast<char>('A' + sender % 26)) + ".";
    };
    {
        std::vector<std::unique_ptr<Peer>> all;
        for (int sender = 0; sender < senders; ++sender) {
            all.push_back(std::make_unique<Peer>([&, sender](Link &link) {
                link.wait();
                for (int i = 0; i < messages; ++i) {
                    results[sender][i] = log_send_fac(sender % 24, 6, "%s", text_of(sender, i).c_str());
                }
                link.tell();
            }));
        }
        for (const auto &sender : all) {
            sender->go();
        }
        for (const auto &sender : all) {
            ASSERT_TRUE(sender->await());
        }
    }
    ASSERT_EQ(log_send_fac(0, 6, "the end"), 0);
    std::map<std::string, int> seen;
    for (const std::string &line : lines_of(stored_with("RAM_FILE", "the end\n"))) {
        ++seen[line.substr(line.find(": ") + 2)];
    }
    std::size_t handed_over = 0;
    std::size_t not_sent = 0;
    for (int sender = 0; sender < senders; ++sender) {
        for (int i = 0; i < messages; ++i) {
            handed_over += results[sender][i] == 0;
            not_sent += results[sender][i] == LOGGERS_ERR_SERVER_SEND;
            if (results[sender][i] == 0) {
                ASSERT_EQ(seen[text_of(sender, i)], 1) << text_of(sender, i);
            }
        }
    }
    EXPECT_EQ(seen.size(), handed_over + 1) << "nothing but what was sent";
    EXPECT_GT(handed_over, 0U);
    EXPECT_EQ(lines_of(file_text(LOG_FALLBACK_PATH)).size(), 2 * not_sent);
}

} // namespace
