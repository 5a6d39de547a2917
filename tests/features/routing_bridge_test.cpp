// SPDX-License-Identifier: Apache-2.0
// The bridge against a routing stack that does exactly what each test says.
#include <switchcfg/routing.h>

#include "support/descriptors.h"
#include "support/file_text.h"
#include "support/peer.h"

#include <arpa/inet.h>
#include <future>
#include <semaphore>

namespace {

using namespace std::string_literals;
using namespace switchcfg::testing;

std::string word(std::uint32_t value)
{
    value = htonl(value);
    return {reinterpret_cast<const char *>(&value), 4};
}

std::string frame(std::uint32_t status, const std::string &data = {})
{
    return word(status) + word(static_cast<std::uint32_t>(data.size())) + data;
}

std::string command(std::uint32_t id, const std::string &payload = {})
{
    return "\xDA\xDA\xAD\xAD"s + word(id) + word(static_cast<std::uint32_t>(payload.size())) + payload;
}

// The daemon's side of one connection.
class Connection {
  public:
    explicit Connection(int listener) : fd_(socket_us_accept(listener)) {}
    ~Connection() { ::close(fd_); }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    std::string read(std::size_t length) const
    {
        std::string bytes(length, '\0');
        const ssize_t got = ::recv(fd_, bytes.data(), length, MSG_WAITALL);
        bytes.resize(static_cast<std::size_t>(got < 0 ? 0 : got));
        return bytes;
    }
    void expect(const std::string &bytes) const { EXPECT_EQ(read(bytes.size()), bytes); }
    bool closed() const { return read(1).empty(); }
    bool write(const std::string &bytes) const
    {
        return bytes.empty() || socket_send(fd_, bytes.data(), static_cast<std::int32_t>(bytes.size())) > 0;
    }

  private:
    int fd_;
};

class RoutingBridge : public ::testing::Test {
  protected:
    RoutingBridge()
    {
        EXPECT_EQ(cfg_init(), 0);
        listener_ = socket_is_create_local(DC_PORT);
        EXPECT_GE(listener_, 0);
        descriptors_ = open_descriptors();
    }
    ~RoutingBridge() override
    {
        if (daemon_.joinable()) {
            daemon_.join();
        }
        cfg_dc_finish_connection();
        EXPECT_EQ(open_descriptors(), descriptors_);
        EXPECT_EQ(dc_register_callback(nullptr, [](void *, void *) { return 0; }), 0) << "was not cleared";
        const Peer other{[](Link &link) {
            if (lock_try_write(DCLockGetSetFileFD) == 0) {
                link.tell();
            }
        }};
        EXPECT_TRUE(other.await()) << "the lock was not given back";
        ::close(listener_);
    }
    void daemon(const std::function<void(int listener)> &script)
    {
        daemon_ = std::thread{[this, script] { script(listener_); }};
    }

    std::thread daemon_;
    int listener_ = -1;
    int descriptors_ = 0;
};

int send(std::uint32_t id, const std::string &payload = {}, std::string *reply = nullptr)
{
    void *data = &data;
    std::uint32_t length = 77;
    const int result = dc_socket_send(id, payload.data(), static_cast<std::uint32_t>(payload.size()), &data, &length);
    const Freed<void> owner{data};
    if (reply != nullptr) {
        *reply = data == nullptr ? "(none)" : std::string(static_cast<const char *>(data), length);
    }
    return result;
}

TEST_F(RoutingBridge, FramesAreBigEndianAndTheConnectionStays)
{
    std::promise<void> sent;
    daemon([&](int listener) {
        const Connection peer{listener};
        peer.expect("\xDA\xDA\xAD\xAD\0\0\1\1\0\0\0\3abc"s);
        peer.write("\0\0\0\1\0\0\0\5route"s);
        peer.expect("\xDA\xDA\xAD\xAD\xFE\xDC\xBA\x98\0\0\0\0"s);
        peer.write("\0\0\0\6\0\0\0\0"s);
        peer.expect(command(6));
        peer.write(frame(1, "nobody asked"));
        sent.set_value();
        peer.expect(command(2));
        peer.write("\xFF\xFF\xFF\xF0\0\0\0\1x"s);
        EXPECT_TRUE(peer.closed()) << "by cfg_exit";
    });
    std::string reply;
    EXPECT_EQ(send(257, "abc", &reply), 1);
    EXPECT_EQ(reply, "route");
    EXPECT_EQ(send(0xFEDCBA98, "", &reply), 6);
    EXPECT_EQ(reply, "(none)");
    EXPECT_EQ(send(6), 0);
    sent.get_future().wait();
    EXPECT_EQ(dc_socket_send(2, nullptr, 0, nullptr, nullptr), -16) << "its own result, whatever it is";
    EXPECT_EQ(cfg_exit(), 0);
    EXPECT_EQ(cfg_init(), 0);
}

TEST_F(RoutingBridge, PartsGoToTheCallbackAndTheLastOneToTheCaller)
{
    daemon([](int listener) {
        const Connection peer{listener};
        peer.expect(command(257));
        peer.write(frame(1000, "one") + frame(1000) + frame(1000, "second") + frame(1));
        peer.expect(command(257));
        peer.write(frame(1000, "one") + frame(1, "end"));
    });
    struct {
        std::uint32_t length = 0;
        std::string all{};
    } seen;
    const auto note = [](void *user_data, void *data) {
        auto &now = *static_cast<decltype(seen) *>(user_data);
        now.all += static_cast<const char *>(data) + std::to_string(now.length) + ' ';
        return -1; // told, and otherwise of no consequence
    };
    EXPECT_EQ(dc_register_callback(&seen, note), 0);
    EXPECT_EQ(dc_register_callback(&seen, note), -1);
    void *data = nullptr;
    const int result = dc_socket_send(257, nullptr, 0, &data, &seen.length);
    EXPECT_EQ(cfg_dc_cvt_dcl_to_cfg_error_code(result), 0);
    EXPECT_EQ(seen.all, "one3 second6 ");
    EXPECT_EQ(std::string(static_cast<char *>(data)), "second");
    EXPECT_EQ(seen.length, 0U) << "of the very last reply";
    std::free(data);
    EXPECT_EQ(send(257), 1) << "and no callback: it was registered for one exchange";
    EXPECT_EQ(seen.all, "one3 second6 ");
}

TEST_F(RoutingBridge, EveryBadReplyFailsAndTheNextCommandStartsAnew)
{
    std::vector<std::pair<std::string, int>> cases{
        {frame(1001, "what?"), -37},
        {word(1) + word(0xFFFFFFFF), -2},
        {word(1000) + word(DC_REPLY_LIMIT + 1), -2},
        {"HTTP/1.1 400 Bad Request\r\n\r\n", -2},
        {word(1) + word(DC_REPLY_LIMIT), -37},
    };
    const std::string whole = frame(1000, "part") + frame(1, "data");
    for (std::size_t length = 0; length < whole.size(); ++length) {
        cases.push_back({whole.substr(0, length), -37});
    }
    daemon([cases](int listener) {
        for (const auto &[bad, result] : cases) {
            const Connection peer{listener};
            peer.expect(command(257, "x"));
            peer.write(bad);
        }
    });
    std::string reply;
    for (const auto &[bad, result] : cases) {
        EXPECT_EQ(dc_register_callback(nullptr, [](void *, void *) { return 0; }), 0);
        EXPECT_EQ(send(257, "x", &reply), result) << bad.size();
        EXPECT_EQ(reply, "(none)");
    }
    EXPECT_EQ(dc_register_callback(nullptr, [](void *, void *) { return 0; }), 0);
    EXPECT_EQ(dc_socket_send(257, nullptr, 1, nullptr, nullptr), -7);
}

// With a payload the second write may notice, and the command is sent again; without one it has gone out and is not.
TEST_F(RoutingBridge, ADaemonThatEndedGivesAnErrorAndNoSignal)
{
    constexpr int ends = 10;
    std::signal(SIGPIPE, SIG_DFL);
    std::counting_semaphore<ends> closed{0};
    daemon([&](int listener) {
        for (int i = 0; i < ends; ++i) {
            {
                const Connection peer{listener};
                peer.expect(command(1, i < ends / 2 ? "payload" : ""));
                peer.write(frame(3));
            }
            closed.release();
        }
    });
    for (int i = 0; i < ends; ++i) {
        const std::string payload = i < ends / 2 ? "payload" : "";
        int result = send(1, payload);
        if (result == -37) {
            EXPECT_GT(i, 0);
            result = send(1, payload);
        } else {
            EXPECT_TRUE(i == 0 || !payload.empty());
        }
        EXPECT_EQ(cfg_dc_cvt_dcl_to_cfg_error_code(result), -7);
        closed.acquire();
    }
}

TEST_F(RoutingBridge, FourCommandsStartOnAFreshConnection)
{
    constexpr std::uint32_t ids[] = {1, 215, 2, 366, 367, 369};
    daemon([&](int listener) {
        auto peer = std::make_unique<Connection>(listener);
        for (const std::uint32_t id : ids) {
            if (id > 2) {
                EXPECT_TRUE(peer->closed());
                peer = std::make_unique<Connection>(listener);
            }
            peer->expect(command(id));
            peer->write(frame(1));
        }
    });
    for (const std::uint32_t id : ids) {
        EXPECT_EQ(send(id), 1);
    }
}

TEST_F(RoutingBridge, ADaemonThatNeverStopsTalkingIsLeft)
{
    std::promise<void> talking;
    daemon([&](int listener) {
        {
            const Connection peer{listener};
            peer.expect(command(1));
            peer.write(frame(1));
            for (bool first = true; peer.write(std::string(100000, 'x')); first = false) {
                if (first) {
                    talking.set_value();
                }
            }
        }
        const Connection peer{listener};
        peer.expect(command(1));
        peer.write(frame(1));
    });
    EXPECT_EQ(send(1), 1);
    talking.get_future().wait();
    EXPECT_LT(elapsed_ms([] { EXPECT_EQ(send(1), 1); }), 20000);
}

TEST_F(RoutingBridge, ThreadsAndForkedChildrenGetTheirOwnAnswers)
{
    constexpr int threads = 4;
    constexpr int commands = 50;
    daemon([](int listener) {
        const auto echo = [](const Connection &peer, int count) {
            for (int i = 0; i < count; ++i) {
                const std::string request = peer.read(16);
                peer.write(frame(1, request.substr(12)));
            }
        };
        const Connection parent{listener};
        echo(parent, 1);
        const Connection child{listener};
        echo(child, 1);
        echo(parent, threads * commands);
    });
    const auto asks = [](std::uint32_t number) {
        std::string reply;
        return send(1, word(number), &reply) == 1 && reply == word(number);
    };
    EXPECT_TRUE(asks(1));
    Peer child{[&](Link &link) {
        if (asks(2)) {
            link.tell();
        }
        cfg_dc_finish_connection();
    }};
    EXPECT_TRUE(child.await());
    child.join();
    std::vector<std::thread> all;
    for (std::uint32_t thread = 0; thread < threads; ++thread) {
        all.emplace_back([&, thread] {
            for (std::uint32_t i = 0; i < commands; ++i) {
                EXPECT_TRUE(asks(thread << 16 | i));
            }
        });
    }
    for (std::thread &thread : all) {
        thread.join();
    }
}

TEST_F(RoutingBridge, ResultFilesAreReadInOrderAndRemoved)
{
    const std::string folder = "/tmp/cli4294967295";
    std::filesystem::create_directory(folder);
    write_file(folder + "/file.2", "stale");
    int round = 0;
    daemon([&](int listener) {
        const Connection peer{listener};
        const auto answer = [&](std::uint32_t status, const std::vector<std::string> &files) {
            peer.expect(command(257, "n"));
            for (std::size_t i = 0; i < files.size(); ++i) {
                write_file(folder + "/file." + std::to_string(i), files[i]);
            }
            peer.write(frame(status));
        };
        answer(1, {"first\n", "second\n"});
        answer(1, {"0123456789"});
        answer(1, {"0123456789", "a"});
        answer(1, {});
        answer(6, {"not read"});
        peer.expect(command(257, "n"));
        std::filesystem::create_symlink("/etc/passwd", folder + "/file.0");
        peer.write(frame(1));
    });
    for (const auto &[result, expected] :
        {std::pair{0, "first\nsecond\n"}, {0, "0123456789"}, {-32, "0123456789"}, {0, ""}, {-8, ""}, {-44, ""}}) {
        std::vector<char> text(round++ == 0 ? 100 : 11, '?');
        std::uint32_t used = 77;
        EXPECT_EQ(cfg_dc_read_data_from_file(
                      257, "n", 1, 4294967295U, text.data(), static_cast<std::uint32_t>(text.size()), &used),
            result)
            << round;
        EXPECT_STREQ(text.data(), expected);
        EXPECT_EQ(used, std::strlen(expected));
        EXPECT_FALSE(std::filesystem::exists(folder));
    }
    char byte = '?';
    std::filesystem::create_directory_symlink("/etc", folder);
    EXPECT_EQ(cfg_dc_read_data_from_file(257, "n", 1, 4294967295U, &byte, 1, nullptr), -44) << "not our folder";
    EXPECT_EQ(byte, '\0');
    EXPECT_EQ(cfg_dc_read_data_from_file(257, "n", 1, 1, &byte, 0, nullptr), -7);
}

TEST(RoutingNames, AndResultCodes)
{
    EXPECT_STREQ(dc_get_cmd_id_name(1), "DC_CMD_ADD_STATIC_ROUTE");
    EXPECT_STREQ(dc_get_cmd_id_name(392), "DC_VXLBI_GET_XC");
    for (const std::uint32_t id : {0U, 36U, 393U, 0x10001U, 0xFFFFFFFFU}) {
        EXPECT_STREQ(dc_get_cmd_id_name(id), "Unknown");
    }
    int code = -2;
    for (const int expected : {-1, -1, -1, 0, -1, -7, -7, -2, -8, -1}) {
        EXPECT_EQ(cfg_dc_cvt_dcl_to_cfg_error_code(code), expected) << code;
        ++code;
    }
}

} // namespace
