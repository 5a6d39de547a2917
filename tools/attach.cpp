// SPDX-License-Identifier: Apache-2.0
#include "tools/attach.h"

#include "tools/command_line/failure.h"

#include <csignal>
#include <switchcfg/config_region.h>
#include <switchcfg/signals.h>
#include <switchcfg/startup.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {

void attach()
{
    if (cfg_init() != 0) {
        throw system_failure(
            cfg_get_cfg() == nullptr ? CFG_RUNNING_PATH : CFG_DEFAULT_PATH, "cannot map the configuration");
    }
    signal_default(SIGINT);
    signal_default(SIGQUIT);
    if (get_status() == nullptr) {
        throw system_failure(STATUS_PATH, "cannot map the status region");
    }
}

} // namespace switchcfg::tool
