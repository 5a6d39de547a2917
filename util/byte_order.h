// SPDX-License-Identifier: Apache-2.0
// Words of frames and files whose byte order is part of their definition. The order is an argument, never an #if, so
// the big-endian path is the one that is tested on every machine.
#ifndef SWITCHCFG_UTIL_BYTE_ORDER_H
#define SWITCHCFG_UTIL_BYTE_ORDER_H

#include <bit>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace switchcfg {

// The same function converts to and from the given order.
template<std::endian Order, typename T>
constexpr T ordered(T value) noexcept
{
    static_assert(std::is_unsigned_v<T>);
    if constexpr (Order == std::endian::native || sizeof(T) == 1) {
        return value;
    } else if constexpr (sizeof(T) == 2) {
        return __builtin_bswap16(value);
    } else if constexpr (sizeof(T) == 4) {
        return __builtin_bswap32(value);
    } else {
        return __builtin_bswap64(value);
    }
}

template<std::endian Order, typename T>
inline T load_ordered(const void *place) noexcept
{
    T value;
    std::memcpy(&value, place, sizeof value);
    return ordered<Order>(value);
}

template<std::endian Order, typename T>
inline void store_ordered(void *place, T value) noexcept
{
    value = ordered<Order>(value);
    std::memcpy(place, &value, sizeof value);
}

} // namespace switchcfg

#endif
