// SPDX-License-Identifier: Apache-2.0
// What a daemon may answer on the request channel, the process manager among them: the first byte says what is asked,
// the rest is what comes back, with the end of the connection behind it.
#include "fuzz/scripted_peer.h"

#include <cstring>
#include <switchcfg/pm_client.h>
#include <switchcfg/request_channel.h>
#include <vector>

using namespace switchcfg::fuzz;

namespace {

constexpr std::uint8_t loopback[16] = {};

int ask_process_manager(unsigned which)
{
    static int (*const requests[])(const char *) noexcept = {
        pm_client_start, pm_client_stop, pm_client_kill, pm_client_restart, pm_client_enable, pm_client_disable};
    const char *const name = (which & 64U) != 0 ? "a name that is longer than the field of the record" : "agent";
    which %= 8;
    if (which < std::size(requests)) {
        return requests[which](name);
    }
    return which == 6 ? pm_client_set_enabling(nullptr, 1) : pm_client_show_all();
}

void check_process_manager(unsigned which)
{
    const int result = ask_process_manager(which);
    std::int32_t told = -1;
    if (peer_says.size() >= sizeof(pm_request)) {
        std::memcpy(&told, &peer_says[offsetof(pm_request, result)], sizeof told);
    }
    require(result == told);
}

// A record of any length, one exchange or several on a connection.
void check_channel(unsigned which)
{
    const std::size_t length = 1 + which % 64 * 7;
    std::vector<char> record(length, 'q');
    if ((which & 64U) != 0) {
        const int result =
            daemon_client_req_ipv6(63003, loopback, 0, 1, record.data(), static_cast<std::uint32_t>(length));
        require(result == (peer_says.size() >= length ? 0 : -1));
        require(result != 0 || std::memcmp(record.data(), peer_says.data(), length) == 0);
        return;
    }
    const int fd = daemon_client_req_connect(62000);
    // The peer reads nothing, so it can be asked only so often.
    const std::size_t replies = std::min<std::size_t>(peer_says.size() / length, 64);
    for (std::size_t came = 0; came < replies; ++came) {
        require(daemon_client_req_send(fd, 1, record.data(), static_cast<std::uint32_t>(length)) == 0);
        require(std::memcmp(record.data(), &peer_says[came * length], length) == 0);
    }
    if (replies < 64) {
        require(daemon_client_req_send(fd, 1, record.data(), static_cast<std::uint32_t>(length)) == -1);
    } else {
        ::close(fd);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0 || size > 16384) {
        return 0;
    }
    const pm_client_settings settings{62010, nullptr};
    pm_client_init(&settings);
    peer_says = text_of(data + 1, size - 1);
    (data[0] & 128U) != 0 ? check_channel(data[0]) : check_process_manager(data[0]);
    require_all_closed();
    return 0;
}
