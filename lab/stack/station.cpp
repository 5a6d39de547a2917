// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/station.h"

#include "lab/mounts.h"
#include "lab/refusal.h"
#include "lab/sandbox/namespaces.h"
#include "lab/sandbox/programs.h"
#include "lab/sandbox/sandbox.h"
#include "lab/text_file.h"

#include <algorithm>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sstream>
#include <string_view>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace switchlab {
namespace {

namespace fs = std::filesystem;

constexpr char settings_path[] = "/etc/switchlab-snmptrapd.conf";
// One line per notification: when, from whom, and its bindings.
constexpr char settings[] = "disableAuthorization yes\n"
                            "format2 %.2h:%.2j:%.2k %b %V| %v\\n\n";
constexpr timespec receiver_look_interval{0, 10'000'000};

// In a build folder beside switchlab, installed with the other data.
std::string notification_names()
{
    std::error_code ignored;
    for (const char *place : {"mibs", "../share/switchcfg/mibs"}) {
        const fs::path folder = (own_folder() / place).lexically_normal();
        if (fs::is_directory(folder, ignored)) {
            return folder.string() + ":" + (folder / "base").string();
        }
    }
    return {};
}

bool receives()
{
    // "sl local_address ...", the port in hexadecimal behind the colon.
    std::istringstream table{read_file("/proc/self/net/udp")};
    for (std::string line; std::getline(table, line);) {
        if (line.find(":00A2 ") != std::string::npos) {
            return true;
        }
    }
    return false;
}

[[noreturn]] void become_receiver(const std::string &receiver, const std::string &names)
{
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    const switchcfg::Descriptor nothing{::open("/dev/null", O_RDWR | O_CLOEXEC)};
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(nothing.get(), standard);
    }
    std::vector<std::string> words{receiver, "-f", "-C", "-n", "-OsQ", "-c", settings_path, "-Lf", notification_log,
        "-p", "/var/run/snmptrapd.pid"};
    if (!names.empty()) {
        words.insert(words.end(), {"-M", names, "-m", "SWITCHCFG-MIB"});
    }
    words.emplace_back("udp:162");
    std::vector<char *> command;
    command.reserve(words.size() + 1);
    for (std::string &word : words) {
        command.push_back(word.data());
    }
    command.push_back(nullptr);
    execute(command.data());
}

int receive(const Events &events)
{
    std::string receiver = find_command("snmptrapd");
    if (receiver.empty()) {
        receiver = "/usr/sbin/snmptrapd";
    }
    if (::access(receiver.c_str(), X_OK) != 0) {
        events.trouble(the_station,
            "snmptrapd is not installed (Debian: apt-get install snmptrapd): nobody receives notifications");
        events.stage(the_station, "ready");
        for (;;) {
            (void)::pause();
        }
    }
    write_file(settings_path, settings);
    make_folders("/var/lib/snmp/cert_indexes", 0700); // it would tell us that it made them
    write_file(notification_log, "");
    const std::string names = notification_names();
    const pid_t child = ::fork();
    if (child < 0) {
        throw refusal("fork", "");
    }
    if (child == 0) {
        become_receiver(receiver, names);
    }
    bool ready = false;
    for (;;) {
        const int options = ready ? 0 : WNOHANG;
        if (::waitpid(-1, nullptr, options) == child) {
            events.trouble(the_station, "snmptrapd has ended");
            return exit_lab_failed;
        }
        if (!ready && receives()) {
            ready = true;
            events.stage(the_station, "ready");
        }
        (void)::nanosleep(&receiver_look_interval, nullptr);
    }
}

} // namespace

int run_station(Inside &inside, const Events &events)
try {
    ::prctl(PR_SET_NAME, "switchlab-stati");
    constexpr std::string_view name = "station";
    (void)::sethostname(name.data(), name.size());
    inside.make();
    events.entrance(the_station, nlohmann::json::object(), nlohmann::json::array());
    return receive(events);
} catch (const std::exception &why) {
    events.trouble(the_station, why.what());
    return exit_lab_failed;
}

} // namespace switchlab
