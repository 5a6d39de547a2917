// SPDX-License-Identifier: Apache-2.0
#include "lab/refusal.h"
#include "lab/stack/look_commands.h"
#include "lab/stack/progress.h"
#include "lab/stack/visitor.h"

#include <CLI/CLI.hpp>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <unistd.h>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

constexpr int look_interval_ms = 100;

// A log file of a part, read through the part's root folder: nobody has to enter it.
class Log {
  public:
    Log(std::string part, const Descriptor &root, const char *path, int colour)
        : part_(std::move(part)), colour_(colour),
          file_(::openat(root.get(), path + 1, O_RDONLY | O_CLOEXEC | O_NOFOLLOW))
    {
    }

    // Whole lines that were added since the last time, each behind the part's name when there are several.
    void print(bool several)
    {
        char block[4096];
        ssize_t got = 0;
        while (file_ && (got = ::read(file_.get(), block, sizeof block)) > 0) {
            rest_.append(block, static_cast<std::size_t>(got));
            std::size_t first = 0;
            for (std::size_t end = 0; (end = rest_.find('\n', first)) != std::string::npos; first = end + 1) {
                const std::string line = rest_.substr(first, end - first);
                if (!several) {
                    std::printf("%s\n", line.c_str());
                } else if (colour_ != 0) {
                    std::printf("\033[%dm%-7s\033[0m | %s\n", colour_, part_.c_str(), line.c_str());
                } else {
                    std::printf("%-7s | %s\n", part_.c_str(), line.c_str());
                }
            }
            rest_.erase(0, first);
        }
        (void)std::fflush(stdout);
    }

  private:
    std::string part_;
    int colour_;
    Descriptor file_;
    std::string rest_{};
};

void show_logs(const std::string &name, const std::string &wanted, bool follow)
{
    LabView lab = view_lab(name);
    if (!wanted.empty()) {
        (void)lab.part(wanted);
    }
    std::vector<Log> logs;
    for (const LabPart &part : lab.parts) {
        if (part.root && (wanted.empty() || &lab.part(wanted) == &part)) {
            const int colour = colour_wanted(STDOUT_FILENO) ? 31 + (part.number + 1) % 6 : 0;
            const char *const path = part.number < 0 ? "/var/log/notifications.log" : "/var/log/daemons.log";
            logs.emplace_back(part.name, part.root, path, colour);
        }
    }
    for (;;) {
        for (Log &log : logs) {
            log.print(wanted.empty());
        }
        pollfd end{lab.process.get(), POLLIN, 0};
        if (!follow || ::poll(&end, 1, look_interval_ms) > 0) {
            return;
        }
    }
}

} // namespace

void add_logs_command(CLI::App &app)
{
    CLI::App *const command = app.add_subcommand(
        "logs", "What the daemons of the units say, and the notifications that the station receives");
    const auto name = std::make_shared<std::string>();
    const auto unit = std::make_shared<std::string>();
    const auto follow = std::make_shared<bool>(false);
    command->add_option("UNIT", *unit, "Counted from 0, or station; all by default");
    command->add_option("--name", *name, "Which lab, when there are several")->envname(lab_name_variable);
    command->add_flag("-f,--follow", *follow, "Go on until Ctrl-C or the end of the lab");
    command->footer("Examples:\n"
                    "  switchlab logs -f          everything, as it comes\n"
                    "  switchlab logs 1           unit 1 only\n"
                    "  switchlab logs station     the notifications that were received\n");
    command->callback([=] { show_logs(*name, *unit, *follow); });
}

} // namespace switchlab
