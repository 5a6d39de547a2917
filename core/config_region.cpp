// SPDX-License-Identifier: Apache-2.0
#include "core/config_region.h"

#include <switchcfg/config_region.h>
#include <switchcfg/mapped_file.h>
#include <switchcfg/startup.h>

namespace switchcfg {

std::uint8_t *running_config = nullptr;
std::uint8_t *default_config = nullptr;

namespace {

static_assert(config_layout::size == CFG_REGION_SIZE);
static_assert(config_layout::utc_offset_minutes.offset == CFG_UTC_OFFSET_MINUTES_AT);

// A second mapping is refused and not reported as success: whoever asks for it has lost track of its own start-up.
int map_region(std::uint8_t *&region, const char *path) noexcept
{
    if (region != nullptr) {
        return -1;
    }
    region = static_cast<std::uint8_t *>(file_map_create(path, config_layout::size));
    if (region == nullptr) {
        cfg_exit();
        return -1;
    }
    return 0;
}

int unmap_region(std::uint8_t *&region) noexcept
{
    if (region != nullptr) {
        file_unmap(region, config_layout::size);
        region = nullptr;
    }
    return 0;
}

} // namespace
} // namespace switchcfg

using switchcfg::default_config;
using switchcfg::running_config;

int cfg_data_cfg_map() noexcept
{
    return switchcfg::map_region(running_config, CFG_RUNNING_PATH);
}

int cfg_data_defcfg_map() noexcept
{
    return switchcfg::map_region(default_config, CFG_DEFAULT_PATH);
}

int cfg_data_cfg_unmap() noexcept
{
    return switchcfg::unmap_region(running_config);
}

int cfg_data_defcfg_unmap() noexcept
{
    return switchcfg::unmap_region(default_config);
}

int cfg_data_sync() noexcept
{
    if (running_config != nullptr) {
        (void)file_sync(running_config, CFG_REGION_SIZE);
    }
    return default_config != nullptr ? file_sync(default_config, CFG_REGION_SIZE) : 0;
}

void *cfg_get_cfg() noexcept
{
    return running_config;
}

void *cfg_get_default_cfg() noexcept
{
    return default_config;
}

void cfg_set_cfg(void *region) noexcept
{
    running_config = static_cast<std::uint8_t *>(region);
}
