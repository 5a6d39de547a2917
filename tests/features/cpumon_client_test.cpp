// SPDX-License-Identifier: Apache-2.0
#include "support/descriptors.h"
#include "support/file_text.h"
#include "support/output.h"
#include "support/peer.h"

#include "features/mpu_network.h"

#include <switchcfg/cpumon.h>

#include <arpa/inet.h>
#include <net/if.h>

namespace {

using namespace switchcfg::testing;
using namespace ::testing;

constexpr std::size_t record_size = 708;
using Bytes = std::string;

Bytes word(std::uint32_t value)
{
    const char bytes[] = {static_cast<char>(value >> 24U), static_cast<char>(value >> 16U),
        static_cast<char>(value >> 8U), static_cast<char>(value)};
    return {bytes, sizeof bytes};
}

// The reply as it stands on the wire, by the offsets of its fields.
Bytes reply(std::int32_t result = 0, std::uint32_t text_length = 0, const Bytes &message = "")
{
    return Bytes(156, '\0') + word(text_length) + message + Bytes(512 - message.size(), '\0') +
           word(static_cast<std::uint32_t>(result)) + word(42) + word(0x10203040) + word(7) + word(0) +
           Bytes("translated\0\0\0\0\0\0", 16);
}

// A monitor on every address. What it was sent lies in /tmp/request, where it was reached in /tmp/reached.
class Monitor {
  public:
    explicit Monitor(const std::function<void(int)> &answer)
        : peer_{[&answer](Link &link) {
              ::alarm(60);
              std::signal(SIGPIPE, SIG_IGN);
              const int listener = socket_is6_create_any(CPUMON_PORT);
              link.tell();
              for (;;) {
                  serve(::accept(listener, nullptr, nullptr), answer);
              }
          }}
    {
        EXPECT_TRUE(peer_.await());
    }
    explicit Monitor(const Bytes &sent) : Monitor{[sent](int fd) { (void)!::write(fd, sent.data(), sent.size()); }} {}

  private:
    static void serve(int fd, const std::function<void(int)> &answer)
    {
        Bytes request(record_size, '\0');
        (void)vx_read_timeout(fd, request.data(), record_size, 5);
        sockaddr_in6 own{};
        socklen_t size = sizeof own;
        char text[INET6_ADDRSTRLEN] = "";
        (void)::getsockname(fd, reinterpret_cast<sockaddr *>(&own), &size);
        (void)::inet_ntop(AF_INET6, &own.sin6_addr, text, sizeof text);
        write_file("/tmp/request", request);
        write_file("/tmp/reached", text);
        answer(fd);
        ::close(fd);
    }

    Peer peer_;
};

cpumon_target loopback()
{
    cpumon_target target{};
    target.port = CPUMON_PORT;
    std::memcpy(target.address, in6addr_loopback.s6_addr, 16);
    return target;
}

const std::uint32_t usage_columns[] = {9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21};
const std::uint32_t usage_summary[] = {2, 3, 4, 14, 10};

int print_usage(const cpumon_target &target)
{
    return cpumon_print_table(&target, usage_summary, 5, usage_columns, 13, CPUMON_PROCESSOR_SUMMARY);
}

TEST(CpumonClient, SpeaksTheWireForm)
{
    const int before = open_descriptors();
    const cpumon_target target = loopback();
    {
        const Monitor monitor{reply(0, 5) + "table and more than announced"};
        EXPECT_EQ(output_of([&] { EXPECT_EQ(print_usage(target), 0); }), "table\n");
        const Bytes golden{"\0\0\0\2"
                           "\0\0\0\x09\0\0\0\x0a\0\0\0\x0b\0\0\0\x0c\0\0\0\x0d\0\0\0\x0e\0\0\0\x0f\0\0\0\x10"
                           "\0\0\0\x11\0\0\0\x12\0\0\0\x13\0\0\0\x14\0\0\0\x15\0\0\0\0\0\0\0\0\0\0\0\0"
                           "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                           "\0\0\0\x02\0\0\0\x03\0\0\0\x04\0\0\0\x0e\0\0\0\x0a\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                           "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"
                           "\0\0\0\1",
            156};
        EXPECT_EQ(file_text("/tmp/request"), golden + Bytes(record_size - 156, '\0'));
        EXPECT_EQ(
            output_of([&] { EXPECT_EQ(cpumon_print_table(&target, nullptr, 5, usage_columns, 1, 2), 0); }), "table\n");
        EXPECT_EQ(file_text("/tmp/request"), word(2) + word(9) + Bytes(700, '\0')) << "no mode without a summary";
    }
    {
        const Monitor monitor{reply()};
        std::uint32_t usage = 0;
        EXPECT_EQ(cpumon_get_cpu_info(&target, &usage), 0);
        EXPECT_EQ(usage, 42U);
        EXPECT_EQ(file_text("/tmp/request"), word(4) + Bytes(704, '\0'));
        std::uint32_t memory[2] = {};
        EXPECT_EQ(cpumon_get_mem_info(&target, memory), 0);
        EXPECT_EQ(memory[0], 0x10203040U);
        EXPECT_EQ(memory[1], 7U);
        EXPECT_EQ(file_text("/tmp/request"), word(5) + Bytes(704, '\0'));
        cpumon_process_name process{0x01020304, {}};
        EXPECT_EQ(cpumon_get_translated_name(&target, &process), 0);
        EXPECT_STREQ(process.name, "translated");
        EXPECT_EQ(file_text("/tmp/request"), word(6) + Bytes(684, '\0') + Bytes("\1\2\3\4", 4) + Bytes(16, '\0'));
        EXPECT_EQ(output_of([&] { EXPECT_EQ(print_usage(target), 0); }), "\n")
            << "a text of no length is an empty line";
        EXPECT_EQ(output_of([&] { EXPECT_EQ(cpumon_print_xml(stdout, &target), 0); }), "\n");
        EXPECT_EQ(file_text("/tmp/request"), Bytes(record_size, '\0'));
        EXPECT_EQ(output_of([&] { EXPECT_EQ(cpumon_print_old_xml(stdout, &target), 0); }), "\n");
        EXPECT_EQ(file_text("/tmp/request"), word(1) + Bytes(704, '\0'));
    }
    EXPECT_EQ(cpumon_print_table(&target, nullptr, 0, usage_columns, 0, 1), 0) << "nothing is asked, nobody is reached";
    EXPECT_EQ(cpumon_print_table(&target, usage_summary, 16, nullptr, 0, 1), -1);
    EXPECT_EQ(cpumon_print_table(&target, nullptr, 0, usage_columns, 23, 1), -1);
    EXPECT_EQ(open_descriptors(), before);
}

TEST(CpumonClient, SaysWhatFailed)
{
    const int before = open_descriptors();
    const cpumon_target target = loopback();
    const auto request = [&](int code, const char *message, bool text_wanted = true) {
        cpumon_request record{};
        char *text = reinterpret_cast<char *>(&record);
        EXPECT_EQ(cpumon_daemon_request_extra_data(&record, text_wanted ? &text : nullptr, &target), code);
        EXPECT_EQ(Bytes(record.message, ::strnlen(record.message, sizeof record.message)), message);
        EXPECT_TRUE(!text_wanted || text == nullptr);
        std::uint32_t figures[2] = {1, 2};
        cpumon_process_name process{1, "kept"};
        const int short_code = code == 0 ? 0 : CPUMON_FAILED;
        EXPECT_EQ(cpumon_get_translated_name(&target, &process), short_code);
        EXPECT_EQ(cpumon_get_mem_info(&target, figures), short_code);
        EXPECT_EQ(cpumon_get_cpu_info(&target, figures), short_code);
        EXPECT_TRUE(short_code == 0 || (figures[0] == 1 && std::strcmp(process.name, "kept") == 0));
        EXPECT_EQ(output_of([&] { EXPECT_EQ(cpumon_print_xml(stdout, &target), short_code); }), code == 0 ? "\n" : "");
        const std::string printed = code == 0 ? "\n" : *message == '\0' ? "" : Bytes{message} + "\n";
        EXPECT_EQ(output_of([&] { EXPECT_EQ(print_usage(target), code == 0 ? 0 : -1); }), printed);
        const auto page = [&](std::FILE *stream) {
            EXPECT_EQ(cpumon_print_table_html(stream, &target, nullptr, 0, usage_columns, 1, 0), code == 0 ? 0 : -1);
        };
        EXPECT_EQ(output_of([&] { EXPECT_EQ(text_of(page), code == 0 ? "\n" : ""); }), code == 0 ? "" : printed)
            << "messages are no part of the page";
    };
    request(-1011, "Error in connection with CPUMON");
    EXPECT_EQ(cpumon_get_cpu_info(nullptr, nullptr), CPUMON_FAILED);
    for (const std::size_t length : {0U, 1U, 156U, 707U}) {
        const Monitor hasty{reply().substr(0, length)};
        request(-1012, "Error in sending request to CPUMON");
    }
    {
        const Monitor failing{reply(-1, 4, "out of order") + "text"};
        request(-1013, "Error in received request from CPUMON");
    }
    const std::string unterminated(512, 'm');
    for (const std::uint32_t length : {5U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
        const Monitor liar{reply(0, length, length == 5 ? unterminated : "") + "text"};
        request(-1013, length == 5 ? unterminated.c_str() : "");
    }
    {
        const Monitor talking{reply(0, 0, "a message is none of a table that came")};
        request(0, "a message is none of a table that came", false);
    }
    EXPECT_EQ(open_descriptors(), before);
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    EXPECT_LT(used.ru_maxrss, 1024 * 1024) << "KiB: what was announced was not taken";
}

// Whatever a monitor says, and however slowly, a request ends in the time it has.
TEST(CpumonClient, WaitsNoLongerThanItSays)
{
    const auto drip = [](int fd) {
        for (char c = 'a'; ::send(fd, &c, 1, MSG_NOSIGNAL) == 1;) {
            ::usleep(100000);
        }
    };
    const Monitor monitor{[&](int fd) {
        if (file_text("/tmp/request")[3] == CPUMON_CPU) { // else the reply comes at once and its text drips
            (void)!::write(fd, reply(0, 1000000).data(), record_size);
        }
        if (::fork() == 0) {
            drip(fd);
            ::_exit(0);
        }
    }};
    const cpumon_target target = loopback();
    long long text_ms = 0;
    std::thread other{[&] {
        text_ms = elapsed_ms([&] {
            cpumon_request record{};
            record.type = htonl(CPUMON_CPU);
            char *text = nullptr;
            EXPECT_EQ(cpumon_daemon_request_extra_data(&record, &text, &target), CPUMON_FAILED);
        });
    }};
    const long long reply_ms = elapsed_ms([&] {
        std::uint32_t figures[2];
        EXPECT_EQ(cpumon_get_mem_info(&target, figures), CPUMON_FAILED);
    });
    other.join();
    EXPECT_GE(text_ms, 2900);
    EXPECT_LT(text_ms, 6000);
    EXPECT_GE(reply_ms, 9900);
    EXPECT_LT(reply_ms, 14000);
}

class CpumonUnits : public ::testing::Test {
  protected:
    void SetUp() override
    {
        ASSERT_EQ(cfg_init(), 0);
        status = static_cast<std::uint8_t *>(get_status());
    }

    void set(std::size_t offset, std::int32_t value) const { std::memcpy(status + offset, &value, 4); }
    void add(int unit, std::int32_t model) const
    {
        const auto record = static_cast<std::size_t>(unit) * 8000;
        set(record + 48, 1);
        set(record + 1348, model);
    }
    static std::string address_of(int unit, int standby)
    {
        cpumon_target target{};
        const int result = cfg_cpumon_get_target(unit, standby, &target);
        char text[INET6_ADDRSTRLEN] = "";
        (void)::inet_ntop(AF_INET6, target.address, text, sizeof text);
        EXPECT_TRUE(result != 0 || target.port == 61263);
        return result == 0 ? text : std::to_string(result);
    }

    std::uint8_t *status = nullptr;
};

TEST_F(CpumonUnits, TheirMonitorsFollowFromTheStatusRegion)
{
    const int before = open_descriptors();
    EXPECT_EQ(address_of(0, 0), "-3") << "not there";
    add(0, 1);
    add(1, 1);
    add(2, 15); // a board with one processor
    EXPECT_EQ(address_of(0, 0), "febf::1");
    EXPECT_EQ(address_of(0, 1), "febf::101");
    EXPECT_EQ(address_of(1, 0), "febf::102");
    EXPECT_EQ(address_of(1, 1), "febf::102");
    EXPECT_EQ(address_of(2, 0), "febf::3");
    set(56, 7); // this is the second board
    EXPECT_EQ(address_of(0, 0), "febf::101");
    EXPECT_EQ(address_of(0, 1), "febf::1");
    EXPECT_EQ(address_of(1, 0), "febf::2");
    add(0, 3); // with stacking ports
    const std::uint8_t mac[] = {0x02, 0, 0x54, 0x51, 0x52, 9};
    std::memcpy(status + 8000 + 760, mac, 6);
    EXPECT_EQ(address_of(1, 0), "fe80::54ff:fe51:5209");
    EXPECT_EQ(address_of(0, 1), "-149");
    EXPECT_EQ(cfg_cpumon_table_cpu_usage_standby(), -149);
    std::uint32_t figures[2];
    for (const int unit : {8, -1, 7, 1000000}) {
        EXPECT_EQ(output_of([&] {
            EXPECT_EQ(cfg_cpumon_table_cpu_usage_unit(unit), -3);
            EXPECT_EQ(cfg_cpumon_table_cpu_memory_detail_unit(unit), -3);
            EXPECT_EQ(cfg_cpumon_get_cpu_table_html(stdout, unit), -3);
            EXPECT_EQ(cfg_cpumon_get_cpu_info(unit, 0, figures), -3);
            EXPECT_EQ(cfg_cpumon_get_cpu_mem_info(unit, 1, figures), -3);
        }),
            "");
    }
    EXPECT_EQ(cfg_cpumon_get_cpu_info(1, 0, figures), -1013) << "there, but without a monitor";
    EXPECT_EQ(cfg_cpumon_get_status_xml(stdout), -1013);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(CpumonUnits, EachTableAsksItsBoardForItsColumns)
{
    const std::string refused = make_network("eth0.3", {"febf::1", "febf::101", "febf::102"});
    if (!refused.empty()) {
        GTEST_SKIP() << refused;
    }
    add(0, 1);
    add(1, 1);
    cpumon_target target{};
    ASSERT_EQ(cfg_cpumon_get_target(1, 0, &target), 0);
    EXPECT_EQ(target.scope_id, ::if_nametoindex("eth0.3"));
    const Monitor monitor{reply(0, 5) + "table"};
    const auto words_of = [](std::initializer_list<std::uint32_t> ids, std::size_t count) {
        Bytes list;
        for (const std::uint32_t id : ids) {
            list += word(id);
        }
        list.resize(4 * count);
        return list;
    };
    const Bytes usage = words_of({9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21}, 22);
    const Bytes memory = words_of({1, 2, 3, 4}, 22);
    const Bytes none(64, '\0');
    const Bytes usage_detail = words_of({2, 3, 4, 14, 10}, 15) + word(1);
    const Bytes memory_detail = words_of({2, 1, 3, 6, 7}, 15) + word(2);
    const struct {
        std::string heading;
        Bytes lists;
        int (*local)();
        int (*unit)(int);
        int (*standby)();
    } tables[] = {
        {"Processor Utilization", usage + none, cfg_cpumon_table_cpu_usage_local, cfg_cpumon_table_cpu_usage_unit,
            cfg_cpumon_table_cpu_usage_standby},
        {"Global Processor Utilization", usage + usage_detail, cfg_cpumon_table_cpu_usage_detail_local,
            cfg_cpumon_table_cpu_usage_detail_unit, cfg_cpumon_table_cpu_usage_detail_standby},
        {"Processor Memory", memory + none, cfg_cpumon_table_cpu_memory_local, cfg_cpumon_table_cpu_memory_unit,
            cfg_cpumon_table_cpu_memory_standby},
        {"Global Processor Memory", memory + memory_detail, cfg_cpumon_table_cpu_memory_detail_local,
            cfg_cpumon_table_cpu_memory_detail_unit, cfg_cpumon_table_cpu_memory_detail_standby},
    };
    const std::int32_t offset = 90;
    std::memcpy(static_cast<char *>(cfg_get_cfg()) + 10547940, &offset, 4);
    for (const auto &table : tables) {
        const auto expect = [&](const std::function<int()> &print, const char *whose, const char *reached) {
            EXPECT_THAT(output_of([&] { EXPECT_EQ(print(), 0); }),
                MatchesRegex("\n" + table.heading + " Information of " + whose + ":\n\nDate : [^\n]+\n\ntable\n"));
            EXPECT_EQ(file_text("/tmp/request").substr(0, 156), word(2) + table.lists) << table.heading;
            EXPECT_EQ(file_text("/tmp/reached"), reached) << table.heading;
        };
        expect(table.local, "local unit", "febf::1");
        expect([&] { return table.unit(1); }, "unit 2", "febf::102");
        expect(table.standby, "standby MPU", "febf::101");
    }
    EXPECT_STREQ(std::getenv("TZ"), "STD-1:-30") << "the date is local";
    EXPECT_THAT(output_of([] { EXPECT_EQ(cfg_cpumon_table_cpu_usage_unit(0), 0); }), HasSubstr("of unit 1:"));
    EXPECT_EQ(file_text("/tmp/reached"), "febf::101") << "the other board of the local unit";

    EXPECT_EQ(output_of([] { EXPECT_EQ(cfg_cpumon_get_cpu_table_html(stdout, 0), 0); }), "table\n");
    EXPECT_EQ(file_text("/tmp/request").substr(0, 156), word(3) + usage + usage_detail);
    EXPECT_EQ(file_text("/tmp/reached"), "febf::1");
    EXPECT_EQ(output_of([] { EXPECT_EQ(cfg_cpumon_get_mem_table_html(stdout, 1), 0); }), "table\n");
    EXPECT_EQ(file_text("/tmp/request").substr(0, 156), word(3) + memory + memory_detail);
    EXPECT_EQ(file_text("/tmp/reached"), "febf::102");
    EXPECT_EQ(output_of([] { EXPECT_EQ(cfg_cpumon_get_status_xml(stdout), 0); }), "table\n");
    EXPECT_EQ(file_text("/tmp/request")[3], 1);
    std::uint32_t figures[2] = {};
    EXPECT_EQ(cfg_cpumon_get_cpu_info(0, 1, figures), 0);
    EXPECT_EQ(figures[0], 42U);
    EXPECT_EQ(file_text("/tmp/reached"), "febf::101");
    EXPECT_EQ(cfg_cpumon_get_cpu_mem_info(1, 0, figures), 0);
    EXPECT_EQ(figures[0], 0x10203040U);
    char name[CPUMON_NAME_SIZE] = "";
    EXPECT_EQ(cfg_cpumon_get_translated_name(0x0a0b0c0d, name), 0);
    EXPECT_STREQ(name, "translated");
    EXPECT_EQ(file_text("/tmp/request").substr(688, 4), "\x0a\x0b\x0c\x0d");
    EXPECT_EQ(file_text("/tmp/reached"), "febf::1");
}

} // namespace
