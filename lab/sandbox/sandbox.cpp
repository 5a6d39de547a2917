// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/sandbox.h"

#include "lab/refusal.h"
#include "lab/sandbox/inside.h"
#include "lab/sandbox/namespaces.h"
#include "lab/sandbox/programs.h"
#include "lab/sandbox/signal_relay.h"

#include <filesystem>
#include <sys/prctl.h>
#include <unistd.h>

namespace switchlab {
namespace {

// The first process of the lab: makes its inside, starts the command, and takes care of orphans. When it ends, the
// kernel ends every process of the lab and drops its mounts.
class FirstProcess {
  public:
    FirstProcess(const RunRequest &request, const SignalRelay &signals)
        : request_(request), signals_(signals), inside_(request.keep)
    {
        if (!request.flash.image.empty()) {
            inside_.kept().keep(request.flash.image);
        }
        if (request.flash.wanted) {
            inside_.kept().keep_if_possible(std::filesystem::path{request.flash.library}.parent_path().string());
        }
        if (const std::string program = find_command(request.command.front()); !program.empty()) {
            keep_program(inside_.kept(), program);
        }
    }

    // In the new process.
    int run()
    {
        inside_.make();
        if (request_.flash.wanted) {
            start_flash_device(request_.flash);
        }
        const pid_t child = ::fork();
        if (child < 0) {
            throw refusal("fork", "");
        }
        if (child == 0) {
            become_command();
        }
        return signals_.wait_for(child);
    }

  private:
    [[noreturn]] void become_command() const
    {
        signals_.restore_for_command();
        execute(request_.command.data());
    }

    const RunRequest &request_;
    const SignalRelay &signals_;
    Inside inside_;
};

} // namespace

int run_in_lab(RunRequest &request)
try {
    const pid_t parent = ::getppid();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) {
        return exit_lab_failed;
    }
    const Maker maker = Maker::myself();
    if (request.flash.wanted) {
        prepare_flash(request.flash);
    }
    const SignalRelay signals;
    FirstProcess first{request, signals};
    const pid_t child = start_in_namespaces(lab_namespaces, [&](bool own_user_namespace) {
        if (own_user_namespace) {
            become_root_inside(maker);
        }
        return first.run();
    });
    return signals.wait_for(child);
} catch (const std::exception &why) {
    return complain(why.what(), exit_lab_failed);
}

} // namespace switchlab
