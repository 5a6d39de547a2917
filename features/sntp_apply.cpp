// SPDX-License-Identifier: Apache-2.0
// Putting the SNTP settings into force.
#include "features/sntp_records.h"

#include <algorithm>
#include <switchcfg/error.h>
#include <switchcfg/pm_client.h>

using namespace switchcfg;
using namespace switchcfg::sntp;

int apply_sntp() noexcept
{
    if (running_config == nullptr) {
        return result::not_mapped;
    }
    for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
        if (key_id_in(slot) == 0) {
            std::ranges::fill(bytes(running_config, config_layout::sntp_key, slot), std::uint8_t{0});
        }
    }
    const int written = write_key_file();
    const bool runs = load(running_config, config_layout::sntp_enable) != 0 && sntp_has_any_server() != 0;
    const int answer = pm_client_set_enabling(SNTP_PROCESS_NAME, runs ? 1 : 0);
    return answer < 0 ? cfg_pmg_err_code_translate(answer) : written;
}
