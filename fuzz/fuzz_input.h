// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_FUZZ_FUZZ_INPUT_H
#define SWITCHCFG_FUZZ_FUZZ_INPUT_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace switchcfg::fuzz {

inline void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

inline std::string text_of(const std::uint8_t *data, std::size_t size)
{
    return {reinterpret_cast<const char *>(data), size};
}

} // namespace switchcfg::fuzz

#endif
