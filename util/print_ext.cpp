// SPDX-License-Identifier: Apache-2.0
// Conversions for MAC and IP addresses.
#include <switchcfg/ip_addr.h>
#include <switchcfg/print_ext.h>

#include "util/owned.h"

#include <arpa/inet.h>
#include <cstdint>
#include <cstdio>
#include <netinet/in.h>
#include <printf.h>

using switchcfg::Malloced;

namespace {

constexpr char null_text[] = "<null pointer>";

// The argument list holds the address of each argument; ours are pointers.
template<typename T>
const T *pointer_argument(const void *const *arguments) noexcept
{
    return *static_cast<const T *const *>(arguments[0]);
}

// Width and left-justification apply; precision and the other flags are ignored so that a format written for %s works.
int print(FILE *stream, const printf_info *info, const char *text) noexcept
{
    return std::fprintf(stream, "%*s", info->left != 0 ? -info->width : info->width, text);
}

// Prints and frees a text that asprintf made.
int print_made(FILE *stream, const printf_info *info, int length, char *made) noexcept
{
    if (length < 0) {
        return -1;
    }
    const Malloced<char> text{made};
    return print(stream, info, text.get());
}

int print_mac(FILE *stream, const printf_info *info, const void *const *arguments) noexcept
{
    const auto *mac = pointer_argument<std::uint8_t>(arguments);
    if (mac == nullptr) {
        return print(stream, info, null_text);
    }
    char *text = nullptr;
    const int length =
        ::asprintf(&text, "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    return print_made(stream, info, length, text);
}

int print_ipv4(FILE *stream, const printf_info *info, const void *const *arguments) noexcept
{
    const auto *ip = pointer_argument<std::uint8_t>(arguments);
    if (ip == nullptr) {
        return print(stream, info, null_text);
    }
    char *text = nullptr;
    const int length = ::asprintf(&text, "%d.%d.%d.%d", ip[0], ip[1], ip[2], ip[3]);
    return print_made(stream, info, length, text);
}

int print_ipv6(FILE *stream, const printf_info *info, const void *const *arguments) noexcept
{
    const auto *ip = pointer_argument<std::uint8_t>(arguments);
    if (ip == nullptr) {
        return print(stream, info, null_text);
    }
    char text[INET6_ADDRSTRLEN];
    return ::inet_ntop(AF_INET6, ip, text, sizeof text) != nullptr ? print(stream, info, text) : -1;
}

int print_address(FILE *stream, const printf_info *info, const void *const *arguments) noexcept
{
    const auto *ip = pointer_argument<cfg_ip_addr>(arguments);
    if (ip == nullptr) {
        return print(stream, info, null_text);
    }
    char text[INET6_ADDRSTRLEN] = "";
    if (ip->length == 16) {
        ::inet_ntop(AF_INET6, ip->addr, text, sizeof text);
    } else if (ip->length == 4) {
        ::inet_ntop(AF_INET, ip->addr, text, INET_ADDRSTRLEN);
    }
    return print(stream, info, text);
}

int one_pointer(const printf_info * /*info*/, std::size_t room, int *types, int * /*sizes*/) noexcept
{
    if (room > 0) {
        types[0] = PA_POINTER;
    }
    return 1;
}

// Not register_printf_function, which the C library deprecates: that one differs only in what the second callback is
// told, and for a plain pointer there is nothing more to tell.
void register_letter(char letter, printf_function *handler) noexcept
{
    ::register_printf_specifier(letter, handler, one_pointer);
}

} // namespace

int printExts_init() noexcept
{
    register_letter('D', print_ipv4);
    register_letter('M', print_mac);
    return 0;
}

int cfg_print_ip_init() noexcept
{
    register_letter('B', print_ipv6);
    register_letter('P', print_address);
    return 0;
}
