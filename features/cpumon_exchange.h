// SPDX-License-Identifier: Apache-2.0
// One request to a CPU monitor for code inside the library: the record in wire form, and the text that came with it.
#ifndef SWITCHCFG_FEATURES_CPUMON_EXCHANGE_H
#define SWITCHCFG_FEATURES_CPUMON_EXCHANGE_H

#include "util/byte_order.h"
#include "util/owned.h"

#include <cstdint>
#include <switchcfg/cpumon.h>

namespace switchcfg::cpumon {

constexpr std::uint32_t to_wire(std::uint32_t value) noexcept
{
    return ordered<std::endian::big>(value);
}

constexpr std::uint32_t from_wire(std::uint32_t word) noexcept
{
    return ordered<std::endian::big>(word);
}

constexpr std::int32_t from_wire(std::int32_t word) noexcept
{
    return static_cast<std::int32_t>(from_wire(static_cast<std::uint32_t>(word)));
}

struct Exchange {
    explicit Exchange(cpumon_request_type type) noexcept { record.type = to_wire(type); }

    int run(const cpumon_target *target) noexcept
    {
        char *received = nullptr;
        const int result = cpumon_daemon_request_extra_data(&record, &received, target);
        text.reset(received);
        return result;
    }

    // For "%.*s": the text has no terminator.
    int length() const noexcept { return text != nullptr ? static_cast<int>(from_wire(record.text_length)) : 0; }
    const char *characters() const noexcept { return text != nullptr ? text.get() : ""; }

    cpumon_request record{};
    Malloced<char> text;
};

} // namespace switchcfg::cpumon

#endif
