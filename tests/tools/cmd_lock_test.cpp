// SPDX-License-Identifier: Apache-2.0
#include "support/peer.h"
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
using ::testing::HasSubstr;

TEST(CmdLock, ListNamesTheHolderAndHow)
{
    Peer holder{[](Link &link) {
        ::prctl(PR_SET_NAME, "holder");
        cfg_init();
        lock_write(cfg_lock_table[CFG_LOCK_TRAPS].fd);
        lock_read(cfg_lock_table[CFG_LOCK_DEBUGS].fd);
        link.tell();
        link.wait();
    }};
    ASSERT_TRUE(holder.await());
    const json locks = json::parse(tool("lock list --json").out);
    ASSERT_EQ(locks.size(), 10U);
    EXPECT_EQ(locks[2]["name"], "Traps");
    EXPECT_EQ(locks[2]["file"], "/tmp/lock_trap");
    EXPECT_EQ(locks[2]["holders"],
        json::array({{{"pid", holder.pid()}, {"process", "holder"}, {"mode", "exclusive"}, {"waiting", false}}}));
    EXPECT_EQ(locks[5]["holders"][0]["mode"], "shared");
    EXPECT_EQ(locks[0]["holders"], json::array());
    EXPECT_EQ(locks[8]["file"], "/tmp/dcGetSetLock");

    holder.kill9();
    EXPECT_EQ(json::parse(tool("lock list --json").out)[2]["holders"], json::array());
}

TEST(CmdLock, RunHoldsTheLockAndPassesTheStatusOn)
{
    const auto held = tool("lock run FW -- " SWITCHCFG_TOOL " lock list --json");
    EXPECT_EQ(json::parse(held.out)[1]["holders"][0]["mode"], "exclusive");
    const auto shared = tool("lock run --shared DC -- " SWITCHCFG_TOOL " lock list --json");
    EXPECT_EQ(json::parse(shared.out)[8]["holders"][0]["mode"], "shared");
    EXPECT_EQ(tool("lock run CFG -- sh -c 'exit 7'").status, 7);
    EXPECT_EQ(tool("lock run CFG -- sh -c 'kill -9 $$'").status, 137);
    EXPECT_THAT(tool("lock run CFG -- /no/such/command").err, HasSubstr("No such file"));
    EXPECT_THAT(tool("lock run Nope -- true").err, HasSubstr("no lock is named 'Nope'"));
}

} // namespace
