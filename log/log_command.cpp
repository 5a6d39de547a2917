// SPDX-License-Identifier: Apache-2.0
// Commands to the logging daemon's control port. What comes back is not trusted.
#include "util/owned.h"

#include <switchcfg/log.h>
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>

#include <arpa/inet.h>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/sysinfo.h>

static_assert(offsetof(loggers_command, command) == 0);
static_assert(offsetof(loggers_command, word) == 4);
static_assert(offsetof(loggers_command, destination) == 8);
static_assert(offsetof(loggers_command, body) == 72);
#if UINTPTR_MAX == UINT32_MAX
static_assert(offsetof(loggers_command, extra_data) == 4172);
static_assert(sizeof(loggers_command) == LOGGERS_COMMAND_SIZE);
#else
static_assert(offsetof(loggers_command, extra_data_slot) == 4172);
static_assert(offsetof(loggers_command, extra_data) == LOGGERS_COMMAND_SIZE);
#endif
static_assert(offsetof(loggers_command, element_count) == 4176);
static_assert(offsetof(loggers_command, element_size) == 4180);
static_assert(offsetof(loggers_command, tail) + sizeof(loggers_command::tail) == LOGGERS_COMMAND_SIZE);

namespace {

using switchcfg::Descriptor;
using switchcfg::Malloced;

void clear_pointer(loggers_command &command) noexcept
{
    command.extra_data = nullptr;
#if UINTPTR_MAX != UINT32_MAX
    command.extra_data_slot = 0;
#endif
}

void clear_extra_data(loggers_command &command) noexcept
{
    clear_pointer(command);
    command.element_count = 0;
    command.element_size = 0;
}

bool claims_pointer(const loggers_command &command) noexcept
{
#if UINTPTR_MAX != UINT32_MAX
    if (command.extra_data_slot != 0) {
        return true;
    }
#endif
    return command.extra_data != nullptr;
}

// A daemon that claims more than the machine has is lying.
bool can_be_true(std::uint64_t bytes) noexcept
{
    constexpr std::uint64_t surely_fits = 1U << 20;
    if (bytes <= surely_fits) {
        return true;
    }
    struct sysinfo machine {};
    return bytes < UINT32_MAX && bytes < PTRDIFF_MAX && ::sysinfo(&machine) == 0 &&
           bytes <= static_cast<std::uint64_t>(machine.totalram) * machine.mem_unit;
}

int read_extra_data(int fd, std::uint32_t timeout, loggers_command &command) noexcept
{
    if (claims_pointer(command)) {
        return LOGGERS_ERR_INVALID_PARAM;
    }
    const std::uint64_t bytes = std::uint64_t{command.element_count} * command.element_size;
    if (!can_be_true(bytes)) {
        return LOGGERS_ERR_EXTRA_DATA_ALLOCATE;
    }
    Malloced<void> data{std::calloc(static_cast<std::size_t>(bytes) + 1, 1)}; // one NUL more, for careless readers
    if (!data) {
        return LOGGERS_ERR_EXTRA_DATA_ALLOCATE;
    }
    if (vx_read_timeout(fd, data.get(), static_cast<std::uint32_t>(bytes), timeout) < 0) {
        return LOGGERS_ERR_SERVER_RECV;
    }
    command.extra_data = data.release();
    return LOGGERS_RET_OK;
}

int exchange(int connection, std::uint32_t timeout, loggers_command &command) noexcept
{
    if (connection < 0) {
        return LOGGERS_ERR_SERVER_CONNECT;
    }
    Descriptor fd{connection};
    int result = LOGGERS_RET_OK;
    if (daemon_client_req_send(fd.get(), timeout, &command, LOGGERS_COMMAND_SIZE) < 0) {
        (void)fd.release(); // closed already
        result = LOGGERS_ERR_SERVER_SEND;
    } else if (command.element_count != 0) {
        result = read_extra_data(fd.get(), timeout, command);
    }
    // Nothing of a failed reply may ever be freed, and a reply without elements has no data, whatever is in its slot.
    if (result != LOGGERS_RET_OK) {
        clear_extra_data(command);
    } else if (command.element_count == 0) {
        clear_pointer(command);
    }
    return result;
}

int check_arguments(const char *address, const loggers_command *command, int family) noexcept
{
    if (address == nullptr || command == nullptr) {
        return LOGGERS_ERR_NULL_POINTER;
    }
    int found = 0;
    const int resolved = log_get_address_family(address, &found);
    if (resolved != LOGGERS_RET_OK) {
        return resolved;
    }
    return found == family ? LOGGERS_RET_OK : LOGGERS_ERR_INVALID_IP;
}

} // namespace

int loggers_send_command_ipv4(
    const char *address, std::uint32_t port, std::uint32_t timeout, loggers_command *command) noexcept
{
    const int checked = check_arguments(address, command, AF_INET);
    if (checked != LOGGERS_RET_OK) {
        return checked;
    }
    clear_extra_data(*command);
    // The address says only that IPv4 is meant: the daemon listens on this machine.
    return exchange(daemon_client_req_connect(port & 0xFFFF), timeout, *command);
}

int loggers_send_command_ipv6(const char *address, std::uint32_t scope_id, std::uint32_t port, std::uint32_t timeout,
    loggers_command *command) noexcept
{
    const int checked = check_arguments(address, command, AF_INET6);
    if (checked != LOGGERS_RET_OK) {
        return checked;
    }
    clear_extra_data(*command);
    in6_addr binary{};
    if (::inet_pton(AF_INET6, address, &binary) != 1) {
        return LOGGERS_ERR_CONVERT_IP_STR_TO_IP_BIN;
    }
    return exchange(daemon_client_req_connect_ipv6(port & 0xFFFF, binary.s6_addr, scope_id), timeout, *command);
}

void loggers_finish_command(loggers_command *command) noexcept
{
    if (command == nullptr || command->extra_data == nullptr || command->element_count == 0) {
        return;
    }
    std::free(command->extra_data);
    clear_extra_data(*command);
}
