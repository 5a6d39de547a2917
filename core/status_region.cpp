// SPDX-License-Identifier: Apache-2.0
#include "core/status_region.h"

#include <switchcfg/mapped_file.h>
#include <switchcfg/status.h>

std::uint8_t *switchcfg::status_region = nullptr;

using switchcfg::status_region;

static_assert(switchcfg::status_layout::size == STATUS_REGION_SIZE);

void *get_status() noexcept
{
    return status_region;
}

int status_init() noexcept
{
    if (status_region == nullptr) {
        status_region = static_cast<std::uint8_t *>(file_map_create(STATUS_PATH, STATUS_REGION_SIZE));
    }
    return status_region != nullptr ? 0 : -1;
}

int status_finish() noexcept
{
    if (status_region != nullptr) {
        file_unmap(status_region, STATUS_REGION_SIZE);
        status_region = nullptr;
    }
    return 0;
}

int status_sync() noexcept
{
    return status_region != nullptr ? file_sync(status_region, STATUS_REGION_SIZE) : 0;
}
