// SPDX-License-Identifier: Apache-2.0
// IPv6 endpoints as URIs.
#include "fuzz/fuzz_input.h"

#include <array>
#include <switchcfg/address.h>

using namespace switchcfg::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text = text_of(data, size);
    std::array<std::uint8_t, 16> address{};
    std::uint32_t scope = 77;
    std::uint16_t port = 0;
    if (ipv6_parse_uri(text.c_str(), address.data(), &scope, &port) == 0) {
        require(text.find("tcp://[") != std::string::npos && scope != 77);
    } else {
        require(scope == 77);
    }
    return 0;
}
