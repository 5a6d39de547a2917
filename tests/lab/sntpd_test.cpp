// SPDX-License-Identifier: Apache-2.0
// The SNTP settings from end to end: configuration, process manager, daemon and, where there is one, a real time server
// that reads the same key file.
#include "support/comes.h"
#include "support/daemon.h"
#include "support/file_text.h"
#include "support/spawned.h"

#include <switchcfg/sntp.h>
#include <switchcfg/startup.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

using namespace switchcfg::testing;
using ::testing::HasSubstr;

constexpr char log_path[] = "/tmp/sntpd.log";
constexpr char time_server[] = "/usr/sbin/chronyd";

// What the daemon has said since the last time, once this is part of it.
std::string said_with(const std::string &part)
{
    static std::size_t seen = 0;
    std::string news;
    comes([&] {
        news = file_text(log_path).substr(seen);
        return news.find(part) != std::string::npos && news.ends_with('\n');
    });
    seen += news.size();
    return news;
}

class Sntpd : public ::testing::Test {
  protected:
    void SetUp() override
    {
        write_file("/tmp/list", std::string{"sntpd disabled "} + SWITCHLAB_SNTPD + " --look 10 >>" + log_path + "\n");
        manager = std::make_unique<Daemon>(SWITCHLAB_PM, std::vector<std::string>{"/tmp/list"});
        ASSERT_TRUE(manager->ready());
        ASSERT_EQ(cfg_init(), 0);
    }

    std::unique_ptr<Daemon> manager;
};

TEST_F(Sntpd, FollowsSettingsAndKeyFile)
{
    ASSERT_EQ(cfg_set_sntp_enable(1), 0);
    EXPECT_EQ(file_text(log_path), "") << "not without a server";
    ASSERT_EQ(cfg_add_sntp_server("127.0.0.1"), 0);
    EXPECT_THAT(said_with("127.0.0.1 does not answer"),
        ::testing::StartsWith("sntpd: asks 127.0.0.1 every 64 s, not authenticated; keys: none\n"));
    ASSERT_EQ(cfg_set_sntp_interval(7), 0);
    EXPECT_THAT(said_with("every 7 s"), HasSubstr("every 7 s"));
    ASSERT_EQ(cfg_sntp_add_key(5, "MD5", "secret"), 0);
    ASSERT_EQ(cfg_set_sntp_auth_enable(1), 0);
    EXPECT_THAT(said_with("is not asked"), HasSubstr("keys: 5 (MD5)\nsntpd: 127.0.0.1 is not asked: it has no key\n"));
    write_file(SNTP_KEY_FILE, "1 MD5 one # fine\n\n 2 MD5\n1 SHA1 again\n0 MD5 x\n99999999999 MD5 x\n");
    EXPECT_THAT(said_with("ntp.keys"), HasSubstr("keys: 1 (MD5); /etc/ntp.keys:3: no key; /etc/ntp.keys:4: no key; "
                                                 "/etc/ntp.keys:5: no key; /etc/ntp.keys:6: no key\n"));
    ASSERT_EQ(cfg_set_sntp_enable(0), 0);
    EXPECT_EQ(file_text(log_path).find("secret"), std::string::npos);
    ASSERT_EQ(cfg_set_sntp_enable(1), 0);
    EXPECT_THAT(said_with("asks"), HasSubstr("keys: 5 (MD5)\n")) << "rewritten from the configuration";
}

TEST_F(Sntpd, ExchangesTheTimeWithAServerThatReadsTheSameKeys)
{
    if (::access(time_server, X_OK) != 0) {
        GTEST_SKIP() << "chrony is not installed";
    }
    ASSERT_EQ(cfg_sntp_add_key(5, "MD5", "five"), 0);
    ASSERT_EQ(cfg_sntp_add_key(4294967295U, "SHA1", "12345678"), 0);
    write_file("/tmp/chrony.conf", std::string{"local stratum 5\nallow 127.0.0.1\nbindaddress 127.0.0.1\ncmdport 0\n"
                                               "bindcmdaddress /\npidfile /tmp/chronyd.pid\nkeyfile "} +
                                       SNTP_KEY_FILE + "\n");
    const Spawned server{time_server, "-d", "-x", "-u", "root", "-f", "/tmp/chrony.conf", "-l", "/tmp/chrony.log"};
    ASSERT_TRUE(comes([] { return file_text("/proc/net/udp").find("0100007F:007B") != std::string::npos; }));
    ASSERT_EQ(cfg_add_sntp_server("127.0.0.1"), 0);
    ASSERT_EQ(cfg_sntp_define_key_server(5, "127.0.0.1"), 0);
    ASSERT_EQ(cfg_set_sntp_auth_enable(1), 0);
    ASSERT_EQ(cfg_set_sntp_enable(1), 0);
    EXPECT_THAT(said_with("answers"), HasSubstr(", authenticated with key 5\n")) << file_text("/tmp/chrony.log");
    char last[SNTP_ADDRESS_TEXT_SIZE] = "";
    EXPECT_TRUE(comes([&] { return sntp_dump_lastOk_ip_addr(last) == 0; }));
    EXPECT_STREQ(last, "127.0.0.1");
    ASSERT_EQ(cfg_sntp_undefine_key_server("127.0.0.1"), 0);
    ASSERT_EQ(cfg_sntp_define_key_server(4294967295U, "127.0.0.1"), 0);
    EXPECT_THAT(said_with("answers"), HasSubstr(", authenticated with key 4294967295\n"));
    ASSERT_EQ(cfg_set_sntp_key_value(0, "changed"), 0); // the server has read the file before
    ASSERT_EQ(cfg_sntp_undefine_key_server("127.0.0.1"), 0);
    ASSERT_EQ(cfg_sntp_define_key_server(5, "127.0.0.1"), 0);
    EXPECT_EQ(said_with("does not answer").find("answers"), std::string::npos) << "with another key";
}

} // namespace
