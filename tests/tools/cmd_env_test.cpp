// SPDX-License-Identifier: Apache-2.0
#include "support/flash_device.h"
#include "support/tool.h"

namespace {

using namespace switchcfg::testing;
namespace fs = std::filesystem;
using ::testing::HasSubstr;

Outcome env(const std::string &arguments)
{
    return tool("env " + arguments);
}

void expect_done(const std::string &arguments)
{
    const Outcome outcome = env(arguments);
    EXPECT_EQ(outcome.status, 0) << arguments << ": " << outcome.err;
    EXPECT_EQ(outcome.out + outcome.err, "") << arguments;
}

json checked(int status, const std::string &options = "")
{
    const Outcome outcome = env(options + " check --json");
    EXPECT_EQ(outcome.status, status) << outcome.out;
    return json::parse(outcome.out);
}

void make_switch()
{
    fs::create_directories("/mnt/flash/bkp");
    expect_done("set HV 0");
    expect_done("set a 1 --save");
}

TEST(CmdEnv, ChangesAreSharedAtOnceAndSavedOnRequest)
{
    expect_refused("env list", "/dev/flash_env: it cannot be read, or holds no environment");
    expect_refused("env save", "nothing to save");
    make_switch();
    EXPECT_EQ(json::parse(env("list --json").out), json({{"HV", "0"}, {"a", "1"}}));
    const json good = checked(0);
    EXPECT_EQ(good["flash"]["crc"]["holds"], true);
    EXPECT_EQ(good["flash"]["used"], 9);
    EXPECT_EQ(good["flash"]["free"], 65521);
    EXPECT_EQ(good["backup"]["in_step"], true);

    expect_done("set a 2");
    EXPECT_EQ(env("get a").out, "2\n");
    EXPECT_EQ(checked(0)["flash"]["unsaved"], json::parse(R"([{"name":"a","shadow":"2","flash":"1"}])"));
    expect_done("restore");
    EXPECT_EQ(env("get a").out, "1\n") << "memory follows what flash was given";
    expect_done("unset a --save");
    expect_refused("env get a", "no variable is named 'a'");
    EXPECT_EQ(checked(0)["flash"]["variables"], 1);
}

TEST(CmdEnv, RefusalsSayWhyAndChangeNothing)
{
    make_switch();
    const std::string before = env("export").out;
    expect_refused("env unset nothing", "no variable is named 'nothing'");
    expect_refused("env unset HV", "--force removes it all the same");
    expect_refused("env set '' x", "'' cannot be the name");
    expect_refused("env set a=b x", "'a=b' cannot be the name");
    expect_refused("env set a", "value is required", 2);
    expect_refused("env set big \"$(printf %070000d 0)\"", "there is room for 65530");
    write_file("/tmp/bad", "b=2\n\nc\n");
    expect_refused("env import /tmp/bad", "/tmp/bad:3: not NAME=VALUE");
    write_file("/tmp/bad", "# text\nb=\\x0\n");
    expect_refused("env import /tmp/bad", "/tmp/bad:2: '\\x0' is no escape");
    expect_refused("env import /tmp/none", "No such file");
    expect_refused("env fbmp --on l4", "no feature is named 'l4'");
    expect_refused("env fbmp --on l3 --off l3", "on and off at once");
    EXPECT_EQ(env("export").out, before);

    FlashDevice flash;
    flash.fail_program(1);
    expect_refused("env save", "Internal operation error (-1)");
    for (const char *const command : {"save", "backup", "restore", "start", "set x y --save"}) {
        expect_refused(std::string{"env --image /tmp/image "} + command, "for the switch");
    }
}

TEST(CmdEnv, CheckFindsDamageAndSaysWhere)
{
    make_switch();
    FlashDevice flash;
    flash.rot(9, 0); // the value of a
    json found = checked(1);
    EXPECT_EQ(found["flash"]["crc"]["holds"], false);
    EXPECT_EQ(found["backup"]["crc"]["holds"], true);
    EXPECT_EQ(found["backup"]["in_step"], false);
    EXPECT_EQ(found["backup"]["first_difference"], 9);
    const Outcome text = env("check");
    EXPECT_EQ(text.status, 1);
    EXPECT_THAT(text.out, HasSubstr("differs from flash from byte 9 on"));

    expect_done("save");
    checked(0);
    fs::remove("/mnt/flash/bkp/env");
    EXPECT_EQ(checked(1)["backup"]["readable"], false);
    expect_done("start");
    checked(0);
    flash.erase_chip();
    EXPECT_EQ(checked(1)["flash"]["has_end"], false);
}

TEST(CmdEnv, TextBringsEveryEnvironmentBack)
{
    make_switch();
    expect_done(R"sh(set '#odd name' "$(printf 'a=b\\c\n\t\r\001\177 end ')")sh");
    expect_done("set empty ''");
    expect_done("set utf8 'Grüße'");
    expect_done("set minus -- -1");
    expect_done("save");
    expect_done("export /tmp/text");
    EXPECT_THAT(file_text("/tmp/text"), HasSubstr("\n\\x23odd name=a=b\\\\c\\n\\t\\r\\x01\\x7F end \n"));
    expect_done("--image /tmp/image import /tmp/text");
    EXPECT_EQ(file_text("/tmp/image"), file_text("/mnt/flash/bkp/env"));

    write_file("/tmp/text", "# replaces all but HV\r\nb=2\r\nb=3\n");
    expect_done("import --replace --save < /tmp/text");
    EXPECT_EQ(env("export").out, "HV=0\nb=3\n");

    // Changes that fit together are made in any order.
    const std::string large(40000, 'x');
    write_file("/tmp/first", "big=" + large + "\nsmall=\n");
    write_file("/tmp/second", "small=" + large + "\nbig=\n");
    expect_done("import /tmp/first");
    expect_done("import /tmp/second");
    EXPECT_EQ(env("get small").out, large + "\n");
}

TEST(CmdEnv, ImageFileIsReplacedAsAWholeAndKeepsItsPlace)
{
    write_file("/tmp/text", "HV=0\nFBMP=5\n");
    expect_done("--image /tmp/image import /tmp/text");
    fs::permissions("/tmp/image", fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("/tmp/image", "/tmp/link");
    expect_done("--image /tmp/link set a 1");
    EXPECT_TRUE(fs::is_symlink("/tmp/link"));
    EXPECT_EQ(fs::status("/tmp/image").permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(json::parse(env("--image /tmp/image list --json").out), json({{"HV", "0"}, {"FBMP", "5"}, {"a", "1"}}));
    EXPECT_EQ(checked(0, "--image /tmp/image")["variables"], 3);
    expect_done("--image /tmp/image fbmp --off l3 --on poe");
    EXPECT_EQ(env("--image /tmp/image get FBMP").out, "129028\n");

    write_file("/tmp/image", "abc");
    expect_refused("env --image /tmp/image list", "3 bytes has no CRC word");
    write_file("/tmp/image", std::string(65536, '\xFF'));
    expect_refused("env --image /tmp/image list", "its end is missing");
    EXPECT_EQ(checked(1, "--image /tmp/image")["has_end"], false);
    expect_refused("env --image /tmp/none check", "cannot be read");
    EXPECT_FALSE(fs::exists("/var/status")) << "none of this needs a switch";
}

TEST(CmdEnv, FeaturesGoByNameAndByWhatTheHardwareCanDo)
{
    make_switch();
    const Outcome refused = env("fbmp --on l3");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.out, "L3 will not be enabled. This equipment doesn't support this feature.\n");
    EXPECT_EQ(env("get FBMP").status, 1);
    expect_done("fbmp --on l3 mpls --anyway");
    EXPECT_EQ(env("get FBMP").out, "5\n");
    expect_done("set FBMP 2053");
    const json features = json::parse(env("fbmp --json").out);
    EXPECT_EQ(features["stored"], 2053);
    EXPECT_EQ(features["applied"], 0);
    EXPECT_EQ(features["features"]["mpls"]["stored"], 4);
    EXPECT_THAT(env("fbmp").out, HasSubstr("0x800 of 0x1F800"));
    expect_done("set FBMP five");
    expect_refused("env fbmp", "'five' is no decimal number");
}

} // namespace
