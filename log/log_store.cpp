// SPDX-License-Identifier: Apache-2.0
// The stored logs: fetched, cleared and saved by commands to the logging daemon.
#include "util/owned.h"

#include <switchcfg/error.h>
#include <switchcfg/log.h>
#include <switchcfg/log_store.h>
#include <switchcfg/robust_io.h>

#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <memory>

namespace {

using switchcfg::Malloced;

constexpr int file_operation_error = -44;

struct Fetched {
    Malloced<char> text;
    std::uint32_t length = 0;
};

int send(std::uint32_t code, const char *name, loggers_command &command) noexcept
{
    command.command = code;
    std::memcpy(command.destination, name, ::strnlen(name, sizeof command.destination - 1));
    return loggers_send_command_ipv6("::1", 0, LOG_CONTROL_PORT, LOG_STORE_TIMEOUT_S, &command);
}

Fetched fetch(const char *name) noexcept
{
    loggers_command command{};
    if (name == nullptr || send(LOGGERS_CMD_SHOW_DESTINATION, name, command) != LOGGERS_RET_OK) {
        return {};
    }
    Fetched fetched{Malloced<char>{static_cast<char *>(command.extra_data)}, command.element_count};
    if (command.element_size == 0) {
        return {}; // elements of no size: nothing to read, whatever their count
    }
    return fetched;
}

int clear(const char *name) noexcept
{
    loggers_command command{};
    if (send(LOGGERS_CMD_CLEAN_DESTINATION, name, command) != LOGGERS_RET_OK) {
        return -1;
    }
    loggers_finish_command(&command);
    Warning_times = 0;
    return 0;
}

} // namespace

char *logger_get(const char *name) noexcept
{
    return fetch(name).text.release();
}

char *logger_get_sized(const char *name, std::uint32_t *length_out) noexcept
{
    Fetched fetched = fetch(name);
    if (length_out != nullptr) {
        *length_out = fetched.length;
    }
    return fetched.text.release();
}

int logger_save(const char *name, const char *path) noexcept
{
    const Fetched fetched = fetch(name);
    if (!fetched.text) {
        return -1;
    }
    const switchcfg::Descriptor file{path == nullptr ? -1 : ::open(path, O_RDWR | O_CREAT | O_TRUNC, 0666)};
    if (!file) {
        return file_operation_error;
    }
    return vx_write_nointr(file.get(), fetched.text.get(), fetched.length) < 0 ? -1 : 0;
}

char *logram_get() noexcept
{
    return logger_get(LOG_STORE_RAM);
}

int logram_clear() noexcept
{
    return clear(LOG_STORE_RAM);
}

char *loginternalram_get() noexcept
{
    return logger_get(LOG_STORE_INTERNAL_RAM);
}

int loginternalram_clear() noexcept
{
    return clear(LOG_STORE_INTERNAL_RAM);
}

char *logflash_get() noexcept
{
    return logger_get(LOG_STORE_FLASH);
}

int logflash_clear() noexcept
{
    return clear(LOG_STORE_FLASH);
}

char *loginternalflash_get() noexcept
{
    return logger_get(LOG_STORE_INTERNAL_FLASH);
}

int loginternalflash_clear() noexcept
{
    return clear(LOG_STORE_INTERNAL_FLASH);
}
