// SPDX-License-Identifier: Apache-2.0
#include "tools/log_stores.h"
#include "tools/command_line/failure.h"
#include "tools/log_names.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <switchcfg/log.h>
#include <switchcfg/log_store.h>

namespace switchcfg::tool {
namespace {

struct Store {
    std::string_view name;
    const char *destination;
};

constexpr Store stores[] = {
    {"ram", LOG_STORE_RAM},
    {"internal-ram", LOG_STORE_INTERNAL_RAM},
    {"flash", LOG_STORE_FLASH},
    {"internal-flash", LOG_STORE_INTERNAL_FLASH},
};

// Sends the command and throws what went wrong with it, on the way or, by the second word of the reply, at the daemon.
void must_succeed(log_command_code code, const std::string &destination)
{
    loggers_command command{};
    command.command = code;
    std::memcpy(command.destination, destination.data(), std::min(destination.size(), sizeof command.destination - 1));
    const int result = loggers_send_command_ipv6("::1", 0, LOG_CONTROL_PORT, LOG_STORE_TIMEOUT_S, &command);
    loggers_finish_command(&command);
    if (result != LOGGERS_RET_OK) {
        throw Failure{"[::1]:" + std::to_string(LOG_CONTROL_PORT) + ": " + log_get_command_string(code) + ": " +
                      log_result_text(result)};
    }
    const auto answer = static_cast<std::int32_t>(command.word);
    if (answer < 0) {
        throw Failure{destination + ": " + log_get_command_string(code) + ": " + log_result_text(answer)};
    }
}

} // namespace

std::string log_store_by_name(const std::string &store)
{
    const auto *const known = std::ranges::find(stores, store, &Store::name);
    return known != std::end(stores) ? known->destination : store;
}

std::string fetch_store(const std::string &store)
{
    const std::string destination = log_store_by_name(store);
    std::uint32_t length = 0;
    const std::unique_ptr<char, decltype(&std::free)> text{logger_get_sized(destination.c_str(), &length), &std::free};
    if (!text) {
        must_succeed(LOGGERS_CMD_SHOW_DESTINATION, destination); // empty, or why not
        return {};
    }
    return {text.get(), length};
}

void clear_store(const std::string &store)
{
    must_succeed(LOGGERS_CMD_CLEAN_DESTINATION, log_store_by_name(store));
}

void save_store(const std::string &store, const std::string &path)
{
    constexpr int file_operation_error = -44;
    const std::string destination = log_store_by_name(store);
    errno = 0;
    const int saved = logger_save(destination.c_str(), path.c_str());
    if (saved == 0) {
        return;
    }
    if (saved == file_operation_error) {
        throw system_failure(path, "open");
    }
    const int why = errno;
    if (fetch_store(destination).empty()) {
        throw Failure{destination + ": nothing to save, the store is empty"};
    }
    throw Failure{path + ": write: " + std::strerror(why)};
}

} // namespace switchcfg::tool
