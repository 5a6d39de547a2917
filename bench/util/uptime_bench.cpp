// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/uptime.h>

#include "bench/support/compare.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

// What every turn of a server loop does.
void uptime_hundredths(benchmark::State &state)
{
    char text[100];
    compare(
        state, {"`uptime_cs`", "open, read, close"},
        [&] {
            const int fd = ::open("/proc/uptime", O_RDONLY | O_CLOEXEC);
            const ssize_t got = ::read(fd, text, sizeof text);
            return ::close(fd) == 0 && got > 0;
        },
        uptime_cs);
}
SWITCHCFG_ROW(uptime_hundredths);

} // namespace
