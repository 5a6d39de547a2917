// SPDX-License-Identifier: Apache-2.0
// The lab's CPU monitor against what the machine itself says, through the library and the tool.
#include "features/mpu_network.h"
#include "support/daemon.h"
#include "support/file_text.h"
#include "support/output.h"
#include "support/peer.h"
#include "support/tool.h"

#include <switchcfg/cpumon.h>
#include <switchcfg/request_channel.h>

#include <cstring>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <unistd.h>
#include <vector>

namespace {

using nlohmann::json;
using namespace switchcfg::testing;
using ::testing::HasSubstr;
using ::testing::StartsWith;

cpumon_target loopback()
{
    cpumon_target target{};
    target.port = CPUMON_PORT;
    std::memcpy(target.address, in6addr_loopback.s6_addr, 16);
    return target;
}

std::vector<std::string> words_of(const std::string &line)
{
    std::istringstream in{line};
    return {std::istream_iterator<std::string>{in}, {}};
}

std::string table(const std::vector<std::uint32_t> &summary, const std::vector<std::uint32_t> &main, std::uint32_t mode)
{
    const cpumon_target target = loopback();
    return output_of([&] {
        cpumon_print_table(&target, summary.data(), static_cast<std::uint32_t>(summary.size()), main.data(),
            static_cast<std::uint32_t>(main.size()), mode);
    });
}

TEST(CpumonDaemon, ReportsWhatTheMachineSays)
{
    const Daemon monitor{SWITCHLAB_CPUMON, {"--interval", "50"}};
    ASSERT_TRUE(monitor.ready());
    constexpr std::size_t big = 64UL << 20U;
    const Peer busy{[](Link &link) {
        ::prctl(PR_SET_NAME, "<busy & big>");
        std::vector<char> memory(big, 'x');
        link.tell();
        for (std::size_t i = 0;; ++i) {
            static_cast<volatile char &>(memory[i % big]) = 'y';
        }
    }};
    ASSERT_TRUE(busy.await());
    const std::string pid = std::to_string(busy.pid());
    std::vector<std::string> lines;
    for (int look = 0; look < 2000 && (lines.size() < 2 || words_of(lines[1])[0] != pid); ++look) {
        lines = lines_of(table({}, {9, 14}, 0)); // until it has been seen to work
    }
    EXPECT_EQ(words_of(lines.at(0)), (std::vector<std::string>{"PID", "5", "s", "%"})) << "only the columns asked for";
    EXPECT_EQ(words_of(lines.at(1))[0], pid) << "the busiest first";
    EXPECT_GT(std::stod(words_of(lines[1])[1]), 5.0);

    lines = lines_of(table({2, 1}, {3, 10, 1}, CPUMON_MEMORY_SUMMARY));
    EXPECT_EQ(words_of(lines.at(0)), (std::vector<std::string>{"KIND", "TOTAL", "KiB"})) << "in the order asked for";
    std::string total;
    std::ifstream{"/proc/meminfo"} >> total >> total;
    EXPECT_EQ(words_of(lines.at(1)), (std::vector<std::string>{"memory", total}));
    EXPECT_EQ(lines.at(3), "");
    const auto biggest = words_of(lines.at(5));
    EXPECT_EQ(biggest.back(), pid);
    EXPECT_GE(std::stoul(biggest[0]), big / 1024);

    lines = lines_of(table({2, 14}, {}, CPUMON_PROCESSOR_SUMMARY));
    EXPECT_EQ(static_cast<long>(lines.size()), ::sysconf(_SC_NPROCESSORS_ONLN) + 3) << "header, all, each, line end";
    EXPECT_EQ(table({}, {99}, 0), "Error in received request from CPUMON\n") << "an unknown column";
    EXPECT_EQ(table({1}, {}, 3), "Error in received request from CPUMON\n");

    const cpumon_target target = loopback();
    std::uint32_t figures[2] = {};
    EXPECT_EQ(cpumon_get_mem_info(&target, figures), 0);
    EXPECT_EQ(std::to_string(figures[0]), total);
    EXPECT_EQ(cpumon_get_cpu_info(&target, figures), 0);
    EXPECT_LE(figures[0], 100U);
    cpumon_process_name name{static_cast<std::uint32_t>(monitor.pid()), {}};
    EXPECT_EQ(cpumon_get_translated_name(&target, &name), 0);
    EXPECT_STREQ(name.name, "CPU monitor");
    name.process_id = 99999999;
    EXPECT_EQ(cpumon_get_translated_name(&target, &name), CPUMON_FAILED);
    EXPECT_THAT(output_of([&] { cpumon_print_xml(stdout, &target); }),
        HasSubstr("<process pid=\"" + pid + "\" name=\"&lt;busy &amp; big&gt;\" state=\"R\""));
    EXPECT_THAT(output_of([&] { cpumon_print_old_xml(stdout, &target); }),
        HasSubstr("<pid>" + pid + "</pid><name>&lt;busy &amp; big&gt;</name>"));
}

TEST(CpumonDaemon, OutlivesRudeClients)
{
    const Daemon monitor{SWITCHLAB_CPUMON};
    ASSERT_TRUE(monitor.ready());
    const int silent = daemon_client_req_connect(CPUMON_PORT); // served for two seconds, then given up
    for (const std::size_t length : {0U, 1U, 707U}) {
        const int fd = daemon_client_req_connect(CPUMON_PORT);
        const std::string part(length, '\xff');
        ASSERT_EQ(::write(fd, part.data(), part.size()), static_cast<ssize_t>(length));
        ::close(fd);
    }
    std::string junk(sizeof(cpumon_request), '\xff');
    EXPECT_EQ(daemon_client_req(CPUMON_PORT, 10, junk.data(), static_cast<std::uint32_t>(junk.size())), 0);
    EXPECT_STREQ(junk.c_str() + 160, "request 4294967295 is not known");
    ::close(silent);
}

TEST(CmdCpu, ShowsTheUnitsOfAStack)
{
    const std::string refused = make_network("eth0.3", {"febf::1", "febf::101", "febf::102"});
    if (!refused.empty()) {
        GTEST_SKIP() << refused;
    }
    ASSERT_EQ(tool("stack populate 1,1").status, 0);
    const Daemon first{SWITCHLAB_CPUMON, {"--address", "febf::1%eth0.3"}};
    const Daemon second{SWITCHLAB_CPUMON, {"--address", "febf::102%eth0.3", "--unit", "2"}};
    ASSERT_TRUE(first.ready() && second.ready());
    EXPECT_THAT(tool("cpu").out, StartsWith("\nProcessor Utilization Information of local unit:\n\nDate : "));
    const std::string detailed = tool("cpu 1 --detail").out;
    EXPECT_THAT(detailed, StartsWith("\nGlobal Processor Utilization Information of unit 2:\n\n"));
    EXPECT_THAT(detailed, HasSubstr("PROCESSOR  USER %  SYSTEM %  IDLE %  BUSY %\nall "));
    EXPECT_THAT(tool("memory 1 --grep monit").out, "") << "filtered as everything that is printed";
    const json figures = json::parse(tool("memory --json").out);
    EXPECT_EQ(figures["unit"], 0);
    EXPECT_GT(figures["memory"][0], figures["memory"][1]);
    EXPECT_EQ(figures["lines"][1], "Processor Memory Information of local unit:");

    EXPECT_EQ(tool("memory 1 --html /tmp/page.html --xml /tmp/figures.xml").status, 0);
    EXPECT_THAT(file_text("/tmp/page.html"), HasSubstr("<caption>Unit 2, by process</caption>"));
    EXPECT_THAT(file_text("/tmp/figures.xml"), HasSubstr("<cpumon unit=\"2\">"));
    if (run_command("command -v tidy").status == 0) {
        EXPECT_EQ(run_command("tidy -q -e /tmp/page.html").err, "");
        EXPECT_EQ(run_command("tidy -q -e -xml /tmp/figures.xml").err, "");
    } else {
        std::puts("page and document are not checked: tidy is not installed");
    }
    expect_refused("cpu standby", "standby: Error in connection with CPUMON (febf::101%eth0.3 port 61263)\n");
    expect_refused("cpu 5", "unit 5: Invalid unit/port number (-3)\n");
    expect_refused("cpu five", "'five' is neither a unit, 0 to 7, nor standby");
    expect_refused("cpu --html /no/such/folder", "/no/such/folder: open: No such file or directory\n");
    expect_refused("cpu standby --xml /tmp/none.xml", "no answer");
    EXPECT_NE(::access("/tmp/none.xml", F_OK), 0) << "no file of nothing";
}

} // namespace
