// SPDX-License-Identifier: Apache-2.0
#include "support/daemon.h"
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using namespace ::testing;

Outcome sntp(const std::string &arguments)
{
    return tool("sntp " + arguments);
}

TEST(CmdSntp, ChangesAndShowsEverything)
{
    EXPECT_EQ(
        sntp("interval 30").err, "switchcfg: interval: Internal communication error (-37); the change is stored\n");
    write_file("/tmp/list", "sntpd disabled sleep 1000\n");
    const ServingDaemon manager{SWITCHLAB_PM, {"/tmp/list"}};
    for (const char *const step : {"server add 192.0.2.1", "server add 2001:db8::1", "server add 192.0.2.3", "enable",
             "auth on", "key add 5 MD5 secret", "key add 4000000000 SHA1 other", "bind 5 192.0.2.1",
             "bind 4000000000 2001:db8::1", "server del 192.0.2.3"}) {
        EXPECT_EQ(sntp(step).err, "") << step;
    }
    const json wanted = json::parse(R"json({"enabled": true, "interval": 30, "authentication": true,
        "last_server": null,
        "servers": [{"slot": 0, "address": "192.0.2.1", "key": 5},
                    {"slot": 1, "address": "2001:db8::1", "key": 4000000000}],
        "keys": [{"slot": 0, "id": 5, "type": "MD5", "value": "(hidden)", "server": "192.0.2.1"},
                 {"slot": 1, "id": 4000000000, "type": "SHA1", "value": "(hidden)", "server": "2001:db8::1"}]})json");
    EXPECT_EQ(json::parse(sntp("show --json").out), wanted);
    EXPECT_THAT(sntp("show").out, Not(HasSubstr("secret")));
    EXPECT_THAT(sntp("show --secrets").out, HasSubstr("0     5           MD5   secret  192.0.2.1\n"));
    EXPECT_THAT(file_text("/etc/ntp.keys"), HasSubstr("          5\t        MD5\t     secret \n"));
    while (tool("ps sleep").status != 0) { // the daemon was started, and its name appears a moment later
    }

    EXPECT_EQ(sntp("server del 192.0.2.1").err, "switchcfg: 192.0.2.1: Not found (-8)\n") << "the first stays";
    EXPECT_EQ(sntp("server clear 192.0.2.1").err, "");
    EXPECT_EQ(
        sntp("server clear 192.0.2.1").err, "switchcfg: 192.0.2.1: No server configured for that IP address (-8)\n");
    EXPECT_EQ(sntp("server add 2001:db8:0::1").err, "switchcfg: 2001:db8:0::1: Already exists (-5)\n");
    EXPECT_EQ(sntp("server add nowhere").err, "switchcfg: nowhere: Invalid parameter (-7)\n");
    EXPECT_EQ(sntp("key add 7 MD5 123456789").err, "switchcfg: key 7: Text exceeds maximum size (-32)\n");
    EXPECT_EQ(sntp("key add 7 MD5 'a b'").status, 1) << "the daemon could not read it";
    EXPECT_EQ(sntp("key del 5").err, "");
    EXPECT_EQ(sntp("key del 5").err, "switchcfg: key 5: Not found (-8)\n");
    EXPECT_EQ(sntp("unbind all").err, "");
    EXPECT_EQ(sntp("server clear all").err, "");
    EXPECT_THAT(sntp("show").out, HasSubstr("on, without a server"));
    EXPECT_EQ(tool("ps sleep").status, 1) << "the daemon was stopped";
    EXPECT_EQ(sntp("auth maybe").status, 2);
}

} // namespace
