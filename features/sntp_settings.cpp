// SPDX-License-Identifier: Apache-2.0
// The simple SNTP settings: on or off, polling interval, authentication.
#include "features/sntp_records.h"

using namespace switchcfg;

namespace {

template<typename T>
T get(const std::uint8_t *region, const Field<T> &field) noexcept
{
    return region != nullptr ? load(region, field) : T{};
}

template<typename T>
int is_default(const Field<T> &field) noexcept
{
    return get(running_config, field) == get(default_config, field) ? 1 : 0;
}

template<typename T>
int set(const Field<T> &field, T value) noexcept
{
    if (running_config == nullptr) {
        return sntp::result::not_mapped;
    }
    store(running_config, field, value);
    return apply_sntp();
}

template<typename T>
int set_default(const Field<T> &field) noexcept
{
    return set(field, get(default_config, field));
}

} // namespace

int cfg_get_sntp_enable() noexcept
{
    return get(running_config, config_layout::sntp_enable);
}

int cfg_get_default_sntp_enable() noexcept
{
    return get(default_config, config_layout::sntp_enable);
}

int cfg_is_default_sntp_enable() noexcept
{
    return is_default(config_layout::sntp_enable);
}

int cfg_set_sntp_enable(int enable) noexcept
{
    return set(config_layout::sntp_enable, static_cast<std::uint8_t>(enable));
}

int cfg_set_default_sntp_enable() noexcept
{
    return set_default(config_layout::sntp_enable);
}

std::uint32_t cfg_get_sntp_interval() noexcept
{
    return get(running_config, config_layout::sntp_interval);
}

std::uint32_t cfg_get_default_sntp_interval() noexcept
{
    return get(default_config, config_layout::sntp_interval);
}

int cfg_is_default_sntp_interval() noexcept
{
    return is_default(config_layout::sntp_interval);
}

int cfg_set_sntp_interval(std::uint32_t interval) noexcept
{
    return set(config_layout::sntp_interval, interval);
}

int cfg_set_default_sntp_interval() noexcept
{
    return set_default(config_layout::sntp_interval);
}

int cfg_get_sntp_auth_enable() noexcept
{
    return get(running_config, config_layout::sntp_auth_enable);
}

int cfg_get_default_sntp_auth_enable() noexcept
{
    return get(default_config, config_layout::sntp_auth_enable);
}

int cfg_is_default_sntp_auth_enable() noexcept
{
    return is_default(config_layout::sntp_auth_enable);
}

int cfg_set_sntp_auth_enable(int enable) noexcept
{
    return set(config_layout::sntp_auth_enable, static_cast<std::uint8_t>(enable));
}

int cfg_set_default_sntp_auth_enable() noexcept
{
    return set_default(config_layout::sntp_auth_enable);
}
