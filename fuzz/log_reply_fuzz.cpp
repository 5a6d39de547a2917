// SPDX-License-Identifier: Apache-2.0
// What the logging daemon may answer to commands, and the stored logs fetched with them.
#include "fuzz/scripted_peer.h"

#include <cstdlib>
#include <cstring>
#include <switchcfg/error.h>
#include <switchcfg/log.h>
#include <switchcfg/log_store.h>

using namespace switchcfg::fuzz;

namespace {

// A count that memory would be found for costs the fuzzer too much; what lies beyond is refused unread.
void tame_counts()
{
    constexpr std::size_t place = 4176;
    std::uint32_t counts[2];
    if (peer_says.size() < place + sizeof counts) {
        return;
    }
    std::memcpy(counts, &peer_says[place], sizeof counts);
    const std::uint64_t bytes = std::uint64_t{counts[0]} * counts[1];
    if (bytes > (1U << 20U) && bytes < UINT32_MAX) {
        counts[0] %= 512;
        counts[1] %= 512;
        std::memcpy(&peer_says[place], counts, sizeof counts);
    }
}

void send_command()
{
    loggers_command command{};
    command.command = LOGGERS_CMD_GET_ALL_RULES;
    const int result = loggers_send_command_ipv6("::1", 0, LOG_CONTROL_PORT, 1, &command);
    require(result == LOGGERS_RET_OK || log_get_error_string(result) != nullptr);
    require(result == LOGGERS_RET_OK || (command.extra_data == nullptr && command.element_count == 0));
    if (command.extra_data != nullptr) {
        require(peer_says.size() >= LOGGERS_COMMAND_SIZE + std::size_t{command.element_count} * command.element_size);
        // One NUL more than was announced.
        const auto *const bytes = static_cast<const char *>(command.extra_data);
        require(bytes[std::size_t{command.element_count} * command.element_size] == '\0');
    }
    loggers_finish_command(&command);
    require(command.extra_data == nullptr);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size > 16384) {
        return 0;
    }
    // Few inputs grow to a whole record by themselves.
    peer_says.assign(LOGGERS_COMMAND_SIZE, '\0');
    if (size > 12 && (data[0] & 1U) != 0) {
        std::memcpy(&peer_says[4168], data + 1, 12); // pointer slot, count and size
        peer_says.append(reinterpret_cast<const char *>(data) + 13, size - 13);
    } else {
        peer_says = text_of(data, size);
    }
    tame_counts();
    send_command();
    std::uint32_t length = 77;
    char *const text = logger_get_sized(LOG_STORE_RAM, &length);
    require(text != nullptr ? std::strlen(text) <= peer_says.size() : length == 0);
    std::free(text);
    const int saved = logger_save("a destination", "/dev/null");
    require(saved == 0 || saved == -1);
    Warning_times = 1;
    require(logram_clear() == -1 || Warning_times == 0);
    require_all_closed();
    return 0;
}
