// SPDX-License-Identifier: Apache-2.0
// A look-up by name beside pgrep, a program that does the same.
#include <switchcfg/process.h>

#include "bench/support/compare.h"
#include "bench/support/crowd.h"

#include <fcntl.h>
#include <spawn.h>

namespace {

using namespace switchcfg::bench;

bool pgrep()
{
    posix_spawn_file_actions_t quiet;
    ::posix_spawn_file_actions_init(&quiet);
    ::posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    const char *const arguments[] = {"pgrep", "-x", "the one", nullptr};
    pid_t child = 0;
    int status = -1;
    const bool found =
        ::posix_spawnp(&child, "pgrep", &quiet, nullptr, const_cast<char *const *>(arguments), environ) == 0 &&
        ::waitpid(child, &status, 0) == child && status == 0;
    ::posix_spawn_file_actions_destroy(&quiet);
    return found;
}

void peer_pgrep(benchmark::State &state)
{
    const Crowd crowd{500};
    if (!pgrep()) {
        state.SkipWithError("pgrep is not installed");
        return;
    }
    compare(state, {"process by name, over 500 processes", "pgrep", 0, Row::Clock::wall}, pgrep, [] {
        std::int32_t *const list = pid_by_name("the one");
        std::free(list);
        return list != nullptr;
    });
}
SWITCHCFG_ROW(peer_pgrep);

} // namespace
