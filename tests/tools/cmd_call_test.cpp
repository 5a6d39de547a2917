// SPDX-License-Identifier: Apache-2.0
#include "support/daemon.h"
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using namespace ::testing;

Outcome call(const std::string &arguments)
{
    return tool("call " + arguments);
}

class CmdCall : public Test {
  protected:
    void SetUp() override { ASSERT_TRUE(daemon_.ready()); }
    Daemon daemon_{SWITCHLAB_BCMD};
};

TEST_F(CmdCall, CallsByNameOrNumberWithInputFromAnywhere)
{
    EXPECT_EQ(call("unit-port speed-get 1 52").out, "result 1000\n");
    EXPECT_EQ(call("unit-port 5 1 0x34").out, "result 1000\n");
    EXPECT_EQ(call("unit-port BCMD_PORT_SPEED_GET 1 52").out, "result 1000\n");
    EXPECT_EQ(call("general echo --input text:hello").out, "result 0\nhello\n");
    EXPECT_EQ(call("general echo --input 0x68690a").out, "result 0\nhi\n");
    EXPECT_EQ(call("general echo --input 68ff").out, "result 0\n00000000  68 ff" + std::string(44, ' ') + "h.\n");
    write_file("/tmp/ff", "from a file");
    EXPECT_EQ(call("general echo --input /tmp/ff").out, "result 0\nfrom a file\n");
    EXPECT_EQ(run_command("cd /tmp && " SWITCHCFG_TOOL " call general echo --input ff").out, "result 0\nfrom a file\n")
        << "a file comes before digits";
    EXPECT_EQ(run_command("printf piped | " SWITCHCFG_TOOL " call general echo --input - --output -").out, "piped");
    EXPECT_EQ(call("general diag-bulk 300 --output /tmp/bulk").out, "result 0\n300 bytes written to /tmp/bulk\n");
    EXPECT_EQ(file_text("/tmp/bulk").size(), 300U);
    EXPECT_EQ(call("general mac-table-page 0 1 --output -").out.size(), 16U);
    EXPECT_EQ(call("mpls dump --grep Label").out, "Label    Out      Port       Next hop\n");
}

TEST_F(CmdCall, PrintsJsonAndStatistics)
{
    const json echo = json::parse(run_command(SWITCHCFG_TOOL " --json call general echo 1 --input text:hi").out);
    EXPECT_EQ(echo, json({{"family", "general"}, {"function", "echo"}, {"number", 2}, {"result", 0},
                        {"output", {{"length", 2}, {"text", "hi"}}}}));
    EXPECT_EQ(json::parse(call("general diag-bulk 2 7 --json").out)["output"]["hex"], "0708");
    const Outcome failed = call("general diag-fail 8 --json");
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(json::parse(failed.out)["result"], -8);
    EXPECT_EQ(failed.err, "switchcfg: general diag-fail: Not found (-8)\n");

    EXPECT_THAT(call("stats").out, HasSubstr("BCMD_GENERAL_DIAG_FAIL 199 (8, 0, 0, 0): -8\n"));
    const json stats = json::parse(call("stats --json").out);
    EXPECT_EQ(stats["executed"], 5);
    EXPECT_EQ(stats["commands"].size(), 5U);
    EXPECT_EQ(stats["commands"][2]["result"], -8);
    EXPECT_FALSE(stats["commands"][4].contains("result")) << "the request for the statistics runs";
}

TEST_F(CmdCall, SaysWhyItCannot)
{
    EXPECT_THAT(call("vhw rule-count").err, HasSubstr("the daemon does not serve it (-37)"));
    EXPECT_THAT(call("general no-such").err, HasSubstr("'no-such' is no function of the family general"));
    EXPECT_EQ(call("general 100000").status, 1);
    EXPECT_THAT(call("general echo --input nowhere").err, HasSubstr("neither a file nor"));
    EXPECT_THAT(call("general diag-bulk 5 --output /none/x").err, HasSubstr("/none/x: write: "));
    EXPECT_EQ(call("general echo 1 2 3 4 5").status, 2);
    EXPECT_EQ(call("general echo 4294967296").status, 2);
    EXPECT_EQ(call("elsewhere echo").status, 2);
    daemon_.kill9();
    const Outcome gone = call("general echo");
    EXPECT_EQ(gone.status, 1);
    EXPECT_THAT(gone.err, HasSubstr("no switch-chip daemon"));
}

TEST(CmdCallWithoutADaemon, ListsAndCompletes)
{
    EXPECT_THAT(call("list vhw").out, StartsWith("FAMILY  NUMBER  FUNCTION"));
    EXPECT_THAT(call("list --json").out, HasSubstr("\"function\": \"diag-shell\",\n    \"timeout_s\": 32000"));
    EXPECT_EQ(offered("call unit-port sp"), "speed-get speed-set ");
    EXPECT_EQ(offered("call m"), "mpls ");
    EXPECT_EQ(offered("call general echo --in"), "--input ");
    EXPECT_EQ(offered("call list v"), "vhw ");
}

} // namespace
