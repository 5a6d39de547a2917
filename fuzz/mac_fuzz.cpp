// SPDX-License-Identifier: Apache-2.0
// MAC addresses; the first byte of the input is the separator.
#include "fuzz/fuzz_input.h"

#include <array>
#include <cstdio>
#include <cstring>
#include <switchcfg/address.h>

using namespace switchcfg::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    const std::string text = text_of(data + 1, size - 1);
    std::array<std::uint8_t, 6> mac{};
    for (const char separator : {static_cast<char>(*data), '\0'}) {
        if (parse_mac_address(text.c_str(), mac.data(), separator) == 0) {
            std::array<char, 18> written;
            std::array<std::uint8_t, 6> again{};
            (void)std::snprintf(written.data(), written.size(), "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2],
                mac[3], mac[4], mac[5]);
            require(parse_mac_address(written.data(), again.data(), 0) == 0 && again == mac);
            require(std::strlen(text.c_str()) >= 11 && std::strlen(text.c_str()) <= 17);
        }
    }
    return 0;
}
