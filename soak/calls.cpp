// SPDX-License-Identifier: Apache-2.0
// A daemon that makes the calls of the demo over and over and leaves nothing behind: scripts/analysis leaks runs it
// inside a unit of a lab, under valgrind.
//     switchcfg-calls ROUNDS
// Says how many bytes the heap holds and how many descriptors are open after a tenth of the rounds and at the end; exit
// status 1 when either has grown or calls fail throughout.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <malloc.h>
#include <memory>
#include <netinet/in.h>
#include <switchcfg/address.h>
#include <switchcfg/bootenv.h>
#include <switchcfg/config_region.h>
#include <switchcfg/cpumon.h>
#include <switchcfg/equip.h>
#include <switchcfg/error.h>
#include <switchcfg/funclist.h>
#include <switchcfg/locks.h>
#include <switchcfg/log.h>
#include <switchcfg/log_store.h>
#include <switchcfg/pager.h>
#include <switchcfg/pm_client.h>
#include <switchcfg/ports.h>
#include <switchcfg/process.h>
#include <switchcfg/provision.h>
#include <switchcfg/routing.h>
#include <switchcfg/sntp.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>
#include <switchcfg/trap.h>

namespace {

struct Free {
    void operator()(void *memory) const { std::free(memory); }
};
template<typename T>
using Owned = std::unique_ptr<T, Free>;

bool configuration(int round)
{
    const int lock = cfg_lock_table[CFG_LOCK_CFG].fd;
    bool good = lock_write(lock) == 0;
    good = cfg_port_set_channel(0, round % 24, 512 + round % 128) == 0 && good;
    const int first = cfg_add_sntp_server("192.0.2.1"); // it stays, once it is there
    good = (first == 0 || first == -5) && good;
    good = cfg_add_sntp_server("192.0.2.7") == 0 && cfg_del_sntp_server("192.0.2.7") == 0 && good;
    good = lock_free(lock) == 0 && good;
    return cfg_data_sync() == 0 && good;
}

bool lookups(int round)
{
    char name[64];
    int interface = 0;
    (void)cfg_equip_get_name_tq5200(round % 90, 0, name, sizeof name);
    (void)cfg_equip_get_unit_ipv6_addr(static_cast<std::uint32_t>(round % 8), &interface, name, sizeof name);
    return cfg_equip_get_user_ports(0) > 0 && cfg_strerror(-(round % 200)) != nullptr && status_get_num_units() > 0;
}

bool logs(int round)
{
    const bool sent = log_send_cat("calls", 6, "round %d", round) == 0;
    const Owned<char> text{round % 50 == 0 ? logram_get() : nullptr};
    return sent;
}

bool traps(int round)
{
    static trap_entry entries[TRAP_QUEUE_LENGTH];
    return send_trap_linkUp(0, round % 24, nullptr) == 0 && trap_queue_peek(entries, TRAP_QUEUE_LENGTH) >= 0;
}

bool boot_environment(int round)
{
    char **list = nullptr;
    int count = 0;
    const bool listed = bootenv_get_all(&list, &count) == 0;
    for (int i = 0; listed && i < count; ++i) {
        std::free(list[i]);
    }
    std::free(list);
    const bool set = bootenv_set("calls", std::to_string(round).c_str()) == 0;
    const bool saved = round % 1000 != 0 || bootenv_grava() == 0;
    return listed && set && saved && Owned<char>{bootenv_get("calls")} != nullptr;
}

bool processes(int round)
{
    const Owned<std::int32_t> found{pid_by_name("switchlab-pm")};
    const Owned<char> line{pid_cmdline(1)};
    if (round % 20 == 0) {
        char *out = nullptr;
        char *err = nullptr;
        const int result = system_capture("echo captured; echo wrong >&2", &out, &err);
        const Owned<char> texts[] = {Owned<char>{out}, Owned<char>{err}};
        return result == 0 && found != nullptr;
    }
    return found != nullptr;
}

bool daemons(int)
{
    cpumon_target target{};
    target.port = CPUMON_PORT;
    target.address[15] = 1;
    cpumon_request record{};
    record.type = htonl(CPUMON_XML);
    char *text = nullptr;
    const bool monitored = cpumon_daemon_request_extra_data(&record, &text, &target) == 0;
    const Owned<char> owned{text};
    void *reply = nullptr;
    std::uint32_t length = 0;
    const bool routed = dc_socket_send(257, nullptr, 0, &reply, &length) > 0;
    const Owned<void> routes{reply};
    return pm_client_start("agent") == 0 && monitored && routed;
}

bool chip(int)
{
    void *output = nullptr;
    std::uint32_t length = 0;
    const int result = bcm_cmd(BCMD_GENERAL_ECHO, 0, 0, 0, 0, "echo", 5, &output, &length);
    const Owned<void> owned{output};
    return result >= 0 && output != nullptr;
}

bool paged(int round)
{
    pager_init_null();
    (void)pprintf("round %d of %s\n", round, cfg_strerror(-3));
    pager_finish();
    char text[64];
    return ip_address_normalize("192.000.002.001", text) == 0;
}

struct Family {
    const char *name;
    bool (*call)(int round);
    int failed = 0;
};

std::size_t heap_bytes()
{
    return static_cast<std::size_t>(::mallinfo2().uordblks);
}

long open_descriptors()
{
    const std::filesystem::directory_iterator entries{"/proc/self/fd"};
    return std::distance(begin(entries), end(entries));
}

} // namespace

int main(int argc, char **argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 10000;
    Family families[] = {{"configuration", configuration}, {"look-ups", lookups}, {"logs", logs}, {"traps", traps},
        {"boot environment", boot_environment}, {"processes", processes}, {"daemons", daemons}, {"chip", chip},
        {"pager", paged}};
    const pm_client_settings manager{PM_CLIENT_PORT, nullptr};
    pm_client_init(&manager);
    std::size_t bytes = 0;
    long descriptors = 0;
    for (int round = 0; round < rounds; ++round) {
        if (round % (rounds / 10 + 1) == 0 && (cfg_exit() != 0 || cfg_init() != 0)) { // a daemon that starts over
            std::fprintf(stderr, "cfg_init fails\n");
            return 1;
        }
        for (Family &family : families) {
            family.failed += family.call(round) ? 0 : 1;
        }
        if (round == rounds / 10) {
            bytes = heap_bytes();
            descriptors = open_descriptors();
        }
    }
    const std::size_t bytes_now = heap_bytes();
    const long descriptors_now = open_descriptors();
    std::printf("%d rounds of %zu families; heap %zu bytes after a tenth, %zu at the end; descriptors %ld, %ld\n",
        rounds, std::size(families), bytes, bytes_now, descriptors, descriptors_now);
    bool good = bytes_now <= bytes + 4096 && descriptors_now <= descriptors;
    for (const Family &family : families) {
        std::printf("%-20s failed %d times\n", family.name, family.failed);
        good = good && family.failed * 10 <= rounds;
    }
    (void)cfg_exit();
    return good ? 0 : 1;
}
