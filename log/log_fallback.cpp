// SPDX-License-Identifier: Apache-2.0
// The file that keeps what the logging daemon could not be given.
#include "util/owned.h"

#include <switchcfg/log.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <sys/uio.h>

namespace {

iovec piece(const char *text) noexcept
{
    return {const_cast<char *>(text), std::strlen(text)};
}

} // namespace

int log_log_to_file(const char *text) noexcept
{
    if (text == nullptr) {
        return LOGGERS_ERR_NULL_POINTER;
    }
    const switchcfg::Descriptor file{::open(LOG_FALLBACK_PATH, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666)};
    if (!file) {
        return LOGGERS_ERR_GENERIC;
    }
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    char date[64] = "\n";
    if (::localtime_r(&now, &local) != nullptr) {
        (void)::asctime_r(&local, date); // ends in a newline: the date is a line of its own, as readers of it know
    }
    // One write, so that entries of several processes do not mix.
    const iovec entry[] = {piece(date), piece(" "), piece(text), piece("\n")};
    (void)!::writev(file.get(), entry, 4);
    return LOGGERS_RET_OK;
}

int log_set_err_msg(char *buffer, const char *format, ...) noexcept
{
    if (buffer == nullptr || format == nullptr) {
        return LOGGERS_ERR_INVALID_PARAM;
    }
    std::memset(buffer, 0, LOG_ERR_MSG_SIZE);
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(buffer, LOG_ERR_MSG_SIZE, format, arguments);
    va_end(arguments);
    return length < 0 || length >= LOG_ERR_MSG_SIZE ? LOGGERS_ERR_GENERIC : LOGGERS_RET_OK;
}
