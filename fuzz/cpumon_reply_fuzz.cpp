// SPDX-License-Identifier: Apache-2.0
// Whatever a CPU monitor sends: replies of any length, texts of any announced length, results of any sign.
#include "fuzz/fuzz_input.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <switchcfg/cpumon.h>
#include <switchcfg/pager.h>
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace switchcfg::fuzz;

namespace {

std::string sent;

// A length that memory would be found for costs the fuzzer too much; what lies beyond is refused unread.
void tame_length()
{
    constexpr std::size_t place = 156;
    if (sent.size() < place + 4) {
        return;
    }
    std::uint32_t length;
    std::memcpy(&length, &sent[place], sizeof length);
    length = ntohl(length);
    if (length <= INT32_MAX) {
        length = htonl(length & 0xfffffU);
        std::memcpy(&sent[place], &length, sizeof length);
    }
}

} // namespace

// The peer is a socket that holds the input, and its end.
int daemon_client_req_connect_ipv6(std::uint32_t, const std::uint8_t[16], std::uint32_t) noexcept
{
    std::array<int, 2> ends{};
    require(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0);
    require(::send(ends[1], sent.data(), sent.size(), MSG_DONTWAIT) == static_cast<ssize_t>(sent.size()));
    ::close(ends[1]);
    return ends[0];
}

int daemon_client_req_send(int fd, std::uint32_t seconds, void *buffer, std::uint32_t length) noexcept
{
    if (vx_read_timeout(fd, buffer, length, seconds) == 0) {
        return 0;
    }
    ::close(fd);
    return -1;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    sent = text_of(data, std::min<std::size_t>(size, 64U << 10U));
    tame_length();
    pager_init_file("/dev/null");
    const cpumon_target target{};
    const std::uint32_t columns[] = {1, 2, 3};
    cpumon_request record{};
    char *text = nullptr;
    const int result = cpumon_daemon_request_extra_data(&record, &text, &target);
    require(result == 0 || (result <= -1011 && result >= -1013 && text == nullptr));
    require(result != 0 || (text != nullptr) == (record.text_length != 0));
    std::free(text);
    const int printed = cpumon_print_table(&target, columns, 3, columns, 3, CPUMON_MEMORY_SUMMARY);
    require(printed == (result == 0 ? 0 : -1));
    require(cpumon_print_xml(pager_get_out(), &target) == (result == 0 ? 0 : CPUMON_FAILED));
    cpumon_process_name name{1, {}};
    if (cpumon_get_translated_name(&target, &name) == 0) {
        require(std::memchr(name.name, '\0', sizeof name.name) != nullptr);
    }
    const int lowest = ::dup(0); // nothing has been left open
    require(lowest < 16);
    ::close(lowest);
    return 0;
}
