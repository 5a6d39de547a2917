// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/debug.h>

#include "bench/support/compare.h"

#include <unistd.h>

namespace {

using namespace switchcfg::bench;

int look_for_terminals()
{
    return ::access("/var/run/debug_terminals", F_OK);
}

void debug_line_unheard(benchmark::State &state)
{
    compare(state, {"debug line while nobody listens", "the system call that finds that out"}, look_for_terminals,
        [] { debug_process(27, "%s():%d | Command %s has taken the LOCK DCL", "dc_take_write_lock", 10, "name"); });
}
SWITCHCFG_ROW(debug_line_unheard);

void trace_silent(benchmark::State &state)
{
    compare(state, {"developer trace that is off", "the system call of a debug line"}, look_for_terminals,
        [] { devel_vprint_implementation("systemAPI", 1, "f", "%s: exited, status %d", "program", 0); });
}
SWITCHCFG_ROW(trace_silent);

} // namespace
