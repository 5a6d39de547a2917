// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/provision.h>

#include "core/config_region.h"
#include "equip/record.h"

#include <switchcfg/ports.h>

using namespace switchcfg;

namespace {

constexpr int failed = -1;
constexpr int invalid_unit_or_port = -3;
constexpr int invalid_port_channel = -4;
constexpr int invalid_parameter = -7;

constexpr bool is_unit(int unit) noexcept
{
    return unit_is_valid(static_cast<std::uint32_t>(unit));
}

constexpr bool is_port(int unit, int port) noexcept
{
    return is_unit(unit) && static_cast<std::uint32_t>(port) < status_layout::max_ports;
}

template<typename T, typename... Index>
int read(bool valid, const Field<T> &field, Index... index) noexcept
{
    if (!valid) {
        return invalid_unit_or_port;
    }
    return running_config != nullptr ? static_cast<int>(load(running_config, field, index...)) : 0;
}

template<typename T, typename... Index>
int write(bool valid, const Field<T> &field, int value, Index... index) noexcept
{
    if (!valid) {
        return invalid_unit_or_port;
    }
    if (running_config == nullptr) {
        return failed;
    }
    store(running_config, field, static_cast<T>(value), index...);
    return 0;
}

} // namespace

int cfg_unit_get_provisioned_model(int unit) noexcept
{
    return read(is_unit(unit), config_layout::unit_provisioned_model, unit);
}

int cfg_unit_set_provisioned_model(int unit, int model) noexcept
{
    if (is_unit(unit) && (model < 0 || model >= CFG_EQUIP_RECORDS)) {
        return invalid_parameter;
    }
    return write(is_unit(unit), config_layout::unit_provisioned_model, model, unit);
}

int cfg_port_get_channel(int unit, int port) noexcept
{
    return read(is_port(unit, port), config_layout::port_channel, unit, port);
}

int cfg_port_set_channel(int unit, int port, int channel) noexcept
{
    const bool is_channel = channel >= CFG_PORT_CHANNEL_FIRST && channel <= CFG_PORT_CHANNEL_LAST;
    if (is_port(unit, port) && channel != 0 && !is_channel) {
        return invalid_port_channel;
    }
    return write(is_port(unit, port), config_layout::port_channel, channel, unit, port);
}

int cfg_port_get_disabled(int unit, int port) noexcept
{
    const int disabled = read(is_port(unit, port), config_layout::port_disabled, unit, port);
    return disabled > 0 ? 1 : disabled;
}

int cfg_port_set_disabled(int unit, int port, int disabled) noexcept
{
    return write(is_port(unit, port), config_layout::port_disabled, disabled != 0 ? 1 : 0, unit, port);
}
