// SPDX-License-Identifier: Apache-2.0
// Rebooting the switch.
#include <switchcfg/backtrace.h>
#include <switchcfg/debug.h>
#include <switchcfg/process.h>

#include <cstdlib>
#include <unistd.h>

void reboot() noexcept
{
    devel_vprint_implementation("systemAPI", __LINE__, __func__, "Rebooting...");
    if (devel_debug_level() != 0) {
        backtrace_print();
    }
    (void)!std::system(
        "/sbin/reboot"); // NOLINT(cert-env33-c): what it gives does not matter, there is nothing else to do
    for (;;) {
        ::sleep(999999);
    }
}
