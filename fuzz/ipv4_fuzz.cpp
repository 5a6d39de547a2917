// SPDX-License-Identifier: Apache-2.0
// IPv4 addresses, masks and prefixes. Each output has exactly the size that callers are told to provide.
#include "fuzz/fuzz_input.h"

#include <cstring>
#include <memory>
#include <string>
#include <switchcfg/address.h>

using namespace switchcfg::fuzz;

namespace {

using Buffer = std::unique_ptr<char[]>;

// What is accepted is kept in a form that stays as it is.
void check_normal_form(const std::string &text, int (*normalize)(const char *, char *), std::size_t size)
{
    const Buffer first{new char[size]};
    const Buffer second{new char[size]};
    if (normalize(text.c_str(), first.get()) == 0) {
        require(normalize(first.get(), second.get()) == 0);
        require(std::strcmp(first.get(), second.get()) == 0);
    }
}

void check_masks(const std::string &text)
{
    const Buffer mask{new char[IP_TEXT_SIZE]};
    if (ip_prefix_to_mask(text.c_str(), mask.get()) == 0) {
        const int prefix = ip_mask_to_prefix(mask.get());
        require(prefix >= 0 && prefix <= 32);
        require(ip_prefix_to_mask(std::to_string(prefix).c_str(), nullptr) == -1);
    }
    const int prefix = ip_mask_to_prefix(text.c_str());
    require(prefix >= -1 && prefix <= 32);
    const Buffer address{new char[IP_ADDRESS_PART_MAX + 1]};
    if (ip_addr_prefix_to_addr_mask(text.c_str(), address.get(), mask.get()) == 0) {
        require(text.starts_with(address.get()));
    }
    const int host = ip_addr_prefix_is_valid_host(text.c_str());
    require(host == 0 || str_is_ip(address.get()) == 1);
    (void)ip_addr_mask_is_valid_host(text.c_str(), "255.255.0.0");
    (void)ip_addr_mask_is_valid_host("10.1.2.3", text.c_str());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text = text_of(data, size);
    check_normal_form(text, ip_address_normalize, IP_TEXT_SIZE);
    check_normal_form(text, ip_address_normalize_valid_host, IP_TEXT_SIZE);
    check_normal_form(text, ip_address_mask_normalize, IP_PREFIX_TEXT_SIZE);
    check_masks(text);
    std::uint16_t pair[2];
    (void)ip_str_to_short(text.c_str(), pair);
    std::uint32_t binary = 0;
    if (ip_str_to_uint32(text.c_str(), &binary) == 0) {
        const Buffer dotted{new char[IP_TEXT_SIZE]};
        std::uint32_t again = 0;
        require(ip_uint32_to_str(binary, dotted.get()) == 0);
        require(ip_str_to_uint32(dotted.get(), &again) == 0 && again == binary);
    }
    return 0;
}
