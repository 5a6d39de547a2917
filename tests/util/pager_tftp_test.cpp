// SPDX-License-Identifier: Apache-2.0
// Uploading with the real programs: busybox's tftp, which takes the switch's options, and the tftpd-hpa server.
#include <switchcfg/pager.h>

#include "support/overlay.h"

#include <arpa/inet.h>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <netinet/in.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr char server_program[] = "/usr/sbin/in.tftpd";
constexpr char folder[] = "/tmp/uploads";

// Started as inetd would: with the bound socket in its hands, so that no request comes too early.
class TftpServer {
  public:
    TftpServer()
    {
        std::filesystem::create_directory(folder);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(69);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        const int fd = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        bound_ = ::bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0;
        pid_ = bound_ ? ::fork() : -1;
        if (pid_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            ::dup2(fd, STDIN_FILENO);
            ::execl(server_program, server_program, "--create", "--user", "root", "--secure", folder, nullptr);
            ::_exit(127);
        }
        ::close(fd);
    }
    ~TftpServer()
    {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    TftpServer(const TftpServer &) = delete;
    TftpServer &operator=(const TftpServer &) = delete;
    bool bound() const { return bound_; }

  private:
    bool bound_ = false;
    pid_t pid_ = -1;
};

// A /bin/tftp for this lab; why there is none, or an empty text.
std::string provide_tftp()
{
    if (!std::filesystem::exists("/bin/busybox")) {
        return "/bin/busybox is missing: apt-get install busybox-static";
    }
    std::string why = switchcfg::testing::make_folder_private(std::filesystem::canonical("/bin").string());
    if (why.empty()) {
        std::filesystem::remove("/bin/tftp");
        std::filesystem::create_symlink("busybox", "/bin/tftp");
    }
    return why;
}

TEST(PagerTftp, UploadsExactlyWhatWasCollected)
{
    if (!std::filesystem::exists(server_program)) {
        GTEST_SKIP() << server_program << " is missing: apt-get install tftpd-hpa";
    }
    if (const std::string why = provide_tftp(); !why.empty()) {
        GTEST_SKIP() << why;
    }
    const TftpServer server;
    ASSERT_TRUE(server.bound());
    pager_enable(1);
    for (const std::size_t size : {std::size_t{1}, std::size_t{1024}, std::size_t{70001}}) { // 512 bytes go in a packet
        std::string expected;
        for (std::size_t i = 0; i < size; ++i) {
            const auto byte = static_cast<char>(i % 256);
            expected += byte;
            pprintf("%c", byte);
        }
        const std::string name = "table" + std::to_string(size);
        pager_finish_tftp("127.0.0.1", name.c_str());
        EXPECT_EQ(pager_get_out(), nullptr);
        std::ifstream file{std::string{folder} + "/" + name, std::ios::binary};
        EXPECT_TRUE((std::string{std::istreambuf_iterator<char>{file}, {}}) == expected) << name;
    }
}

} // namespace
