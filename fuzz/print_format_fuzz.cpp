// SPDX-License-Identifier: Apache-2.0
// Conversions for addresses, with any flags, width and precision and any bytes, and the pieces of formats of the MPLS
// printer.
#include "fuzz/byte_source.h"
#include "fuzz/fuzz_input.h"

#include "funclist/mpls_sub_format.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <switchcfg/ip_addr.h>
#include <switchcfg/print_ext.h>

using namespace switchcfg::fuzz;

namespace {

std::string conversion(ByteSource &input, char letter)
{
    std::string format = "%";
    const std::uint8_t flags = input.byte();
    for (unsigned i = 0; i < 5; ++i) {
        if ((flags >> i & 1U) != 0) {
            format += "-+ #0"[i];
        }
    }
    if ((flags & 32U) != 0) {
        format += std::to_string(input.byte() * 3);
    }
    if ((flags & 64U) != 0) {
        format += "." + std::to_string(input.byte());
    }
    return format + letter;
}

void print_address(ByteSource &input, char letter, std::size_t size)
{
    const auto bytes = std::make_unique<std::uint8_t[]>(size); // exactly as much as may be read
    input.fill(bytes.get(), size);
    const void *const address = input.byte() == 255 ? nullptr : bytes.get();
    const std::string format = conversion(input, letter);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    char *text = nullptr;
    const int length = ::asprintf(&text, format.c_str(), address);
    require(length >= 0 && std::strlen(text) == static_cast<std::size_t>(length));
    std::free(text);
    char cut[8];
    require(std::snprintf(cut, sizeof cut, format.c_str(), address) == length);
#pragma GCC diagnostic pop
}

void expand_piece(ByteSource &input)
{
    const std::uint8_t kind = input.byte();
    const std::uint32_t word = input.word();
    const std::string piece = input.rest();
    // Widths beyond what is printed for people only cost time and memory.
    std::size_t digits = 0;
    for (const char c : piece) {
        digits = c >= '0' && c <= '9' ? digits + 1 : 0;
        if (digits > 3) {
            return;
        }
    }
    switchcfg::MplsValue value = switchcfg::NoValue{};
    if (kind % 4 == 1) {
        value = static_cast<std::int32_t>(word);
    } else if (kind % 4 == 2) {
        value = static_cast<double>(word);
    } else if (kind % 4 == 3) {
        value = static_cast<const void *>("a text");
    }
    (void)switchcfg::expand_mpls_piece(piece, value);
}

} // namespace

// The sanitizer reads formats itself, and ends the process over conversions that the C library prints as they stand.
extern "C" const char *__asan_default_options();
extern "C" const char *__asan_default_options()
{
    return "check_printf=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const bool registered = printExts_init() == 0 && cfg_print_ip_init() == 0;
    require(registered);
    ByteSource input{data, size};
    switch (input.byte() % 5) {
    case 0:
        print_address(input, 'M', 6);
        break;
    case 1:
        print_address(input, 'D', 4);
        break;
    case 2:
        print_address(input, 'B', 16);
        break;
    case 3:
        print_address(input, 'P', sizeof(cfg_ip_addr));
        break;
    default:
        expand_piece(input);
    }
    return 0;
}
