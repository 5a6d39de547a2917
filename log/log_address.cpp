// SPDX-License-Identifier: Apache-2.0
// What the logging interface asks the system's resolver.
#include <switchcfg/log.h>

#include <arpa/inet.h>
#include <cstring>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>

namespace {

struct FreeAddresses {
    void operator()(addrinfo *list) const noexcept { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

Addresses resolve(const char *host) noexcept
{
    addrinfo *list = nullptr;
    return ::getaddrinfo(host, nullptr, nullptr, &list) == 0 ? Addresses{list} : Addresses{};
}

} // namespace

int log_get_address_family(const char *host, int *family_out) noexcept
{
    if (host == nullptr || family_out == nullptr) {
        return LOGGERS_ERR_INVALID_PARAM;
    }
    const Addresses found = resolve(host);
    *family_out = found ? found->ai_family : 0;
    return found ? LOGGERS_RET_OK : LOGGERS_ERR_CONVERT_HOSTNAME_TO_IP_STR;
}

int log_standardize_ip(const char *text, char *out) noexcept
{
    if (text == nullptr || out == nullptr) {
        return LOGGERS_ERR_INVALID_PARAM;
    }
    std::memset(out, 0, LOG_ADDRESS_TEXT_SIZE);
    const Addresses found = resolve(text);
    if (!found) {
        return LOGGERS_ERR_CONVERT_HOSTNAME_TO_IP_STR;
    }
    if (found->ai_family == AF_INET) {
        sockaddr_in address;
        std::memcpy(&address, found->ai_addr, sizeof address);
        (void)::inet_ntop(AF_INET, &address.sin_addr, out, LOG_ADDRESS_TEXT_SIZE);
    } else if (found->ai_family == AF_INET6) {
        sockaddr_in6 address;
        std::memcpy(&address, found->ai_addr, sizeof address);
        (void)::inet_ntop(AF_INET6, &address.sin6_addr, out, LOG_ADDRESS_TEXT_SIZE);
    }
    return LOGGERS_RET_OK;
}
