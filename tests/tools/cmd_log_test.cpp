// SPDX-License-Identifier: Apache-2.0
// switchcfg log and switchcfg request against the logging daemon of the lab.
#include "support/daemon.h"
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using namespace ::testing;

void wait_for_line(const std::string &store, const std::string &text)
{
    while (tool("log show " + store).out.find(text) == std::string::npos) {
    }
}

TEST(CmdLog, SendsShowsSavesClearsAndFollows)
{
    const ServingDaemon daemon{SWITCHLAB_LOGGERD};
    EXPECT_EQ(tool("log send --facility local0 --level err 100%s of it").status, 0);
    EXPECT_EQ(tool("log send --category LINK --level 7 up").status, 0);
    EXPECT_EQ(tool("log send last").status, 0);
    wait_for_line("ram", "last");
    EXPECT_THAT(tool("log show flash").out, EndsWith(" local0.err: 100%s of it\n"));
    EXPECT_THAT(tool("log show INTERNAL_RAM_FILE").out, EndsWith(" LINK.debug: up\n"));
    const json shown = json::parse(tool("log show ram --match last --json").out);
    EXPECT_EQ(shown["store"], "RAM_FILE");
    ASSERT_EQ(shown["lines"].size(), 1U);

    EXPECT_EQ(tool("log save ram /tmp/saved").status, 0);
    EXPECT_EQ(file_text("/tmp/saved"), tool("log show ram").out);
    expect_refused("log save ram /no/such/file", "/no/such/file: open: No such file");
    expect_refused("log save ram /dev/full", "/dev/full: write: No space left");
    EXPECT_EQ(tool("log clear ram").status, 0);
    EXPECT_EQ(tool("log show ram").out, "");
    expect_refused("log save ram /tmp/other", "the store is empty");
    expect_refused("log show other", "other: LOGGERS_CMD_SHOW_DESTINATION: LOGGERS_ERR_INVALID_DESTINATION (-1013)");
    expect_refused("log clear other", "LOGGERS_ERR_INVALID_DESTINATION");
    expect_refused("log send --level loud text", "no level is named 'loud'");
    expect_refused("log send --facility 255 text", "no facility is named '255'");

    ASSERT_EQ(tool("log send before").status, 0);
    wait_for_line("ram", "before");
    // What is sent until the follower has begun is not its business, so one is sent until it has seen two.
    const Outcome followed =
        run_command(std::string{SWITCHCFG_TOOL} + " log follow ram --count 2 --interval 0.01 & follower=$!; "
                                                  "while kill -0 $follower 2>/dev/null; do " SWITCHCFG_TOOL
                                                  " log send after; done; wait $follower");
    EXPECT_EQ(followed.status, 0);
    EXPECT_EQ(std::ranges::count(followed.out, '\n'), 2);
    EXPECT_THAT(followed.out, HasSubstr("after"));
    EXPECT_EQ(followed.out.find("before"), std::string::npos);
}

TEST(CmdLog, SaysWhenNobodyIsThereAndListsNames)
{
    expect_refused(
        "log send text", "/tmp/logtest: the message was not handed over: LOGGERS_ERR_SERVER_CONNECT (-1018)");
    expect_refused("log show ram", "[::1]:63003: LOGGERS_CMD_SHOW_DESTINATION: LOGGERS_ERR_SERVER_CONNECT");
    EXPECT_EQ(json::parse(tool("log errors --json").out).size(), 32U);
    EXPECT_EQ(json::parse(tool("log commands --json").out)[20]["name"], "LOGGERS_CMD_ENABLE_QUEUE");
}

TEST(CmdRequest, ExchangesOneRecord)
{
    const ServingDaemon daemon{SWITCHLAB_LOGGERD};
    const Outcome raw = tool("request 63003 --hex 'fe ff:ff-ff' --length 4688 --raw"); // the same in either order
    EXPECT_EQ(raw.status, 0);
    ASSERT_EQ(raw.out.size(), 4688U);
    std::int32_t answer = 0;
    std::memcpy(&answer, &raw.out[4], 4);
    EXPECT_EQ(answer, -1016);
    write_file("/tmp/record", raw.out);
    const json reply = json::parse(tool("request 63003 --ipv6 ::1 --file /tmp/record --json").out);
    EXPECT_EQ(reply["bytes"], 4688);
    EXPECT_THAT(reply["reply"].get<std::string>(), StartsWith("feffffff"));
    EXPECT_THAT(tool("request 63003 --file - --length 4688 < /tmp/record").out, StartsWith("00000000  fe ff ff ff "));

    expect_refused("request 63003 --hex 00 --timeout 0", "127.0.0.1:63003: no reply of 1 bytes within 0 s");
    expect_refused("request 9 --hex 00", "127.0.0.1:9: connect: Connection refused");
    expect_refused("request 63003 --hex 0g", "unexpected 'g'");
    expect_refused("request 63003 --hex 000", "the last byte lacks a digit");
    expect_refused("request 63003", "no record");
    expect_refused("request 63003 --hex 0000 --length 1", "more than --length 1");
    expect_refused("request 63003 --ipv6 1.2.3.4 --hex 00", "'1.2.3.4' is no IPv6 address");
    expect_refused("request 63003 --ipv6 fe80::1%none --hex 00", "none: interface");
}

} // namespace
