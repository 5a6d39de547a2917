// SPDX-License-Identifier: Apache-2.0
// What the routing stack may answer. Each connection of the bridge leads to a local socket that holds the input and is
// at its end behind it; the lock is on a file without a name.
#include "fuzz/fuzz_input.h"

#include <switchcfg/debug.h>
#include <switchcfg/locks.h>
#include <switchcfg/routing.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using switchcfg::fuzz::require;

std::string input;

int count_part(void *length, void *data)
{
    const std::uint32_t size = *static_cast<std::uint32_t *>(length);
    const auto *bytes = static_cast<const std::uint8_t *>(data);
    require(size > 0 && bytes[size] == 0);
    return std::accumulate(bytes, bytes + size, 0) % 2 == 0 ? 0 : -1;
}

} // namespace

extern "C" int __wrap_vx_connect_timeout(int fd, const sockaddr *, socklen_t, std::uint32_t);
extern "C" int __wrap_vx_connect_timeout(int fd, const sockaddr *, socklen_t, std::uint32_t)
{
    int pair[2];
    require(::socketpair(AF_UNIX, SOCK_STREAM, 0, pair) == 0);
    require(::write(pair[1], input.data(), input.size()) == static_cast<ssize_t>(input.size()));
    require(::shutdown(pair[1], SHUT_WR) == 0 && ::dup2(pair[0], fd) == fd);
    // The far end stays open to take the command, until the next connection.
    static int far_end = -1;
    ::close(far_end);
    far_end = pair[1];
    return ::close(pair[0]);
}

extern "C" void debug_process(int debug_class, const char *format, ...) noexcept
{
    char line[256];
    va_list arguments;
    va_start(arguments, format);
    require(debug_class == 27 && std::vsnprintf(line, sizeof line, format, arguments) > 0);
    va_end(arguments);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0) {
        return 0;
    }
    if (DCLockGetSetFileFD == 0) {
        DCLockGetSetFileFD = ::memfd_create("lock", 0);
    }
    input.assign(reinterpret_cast<const char *>(data) + 1, size - 1);
    const int commands = 1 + (*data & 3);
    for (int i = 0; i < commands; ++i) { // more than one: what the first left is thrown away
        void *reply = nullptr;
        std::uint32_t length = 0;
        require(dc_register_callback(&length, count_part) == 0);
        const int result = dc_socket_send(257, "ab", (*data >> 6) % 3, (*data & 4) != 0 ? nullptr : &reply, &length);
        require(result != DC_STATUS_MORE && result != DC_STATUS_PROTOCOL_ERROR && length <= DC_REPLY_LIMIT);
        require(reply == nullptr || length == 0 || static_cast<char *>(reply)[length] == '\0');
        std::free(reply);
    }
    cfg_dc_finish_connection();
    return 0;
}
