// SPDX-License-Identifier: Apache-2.0
// Names of the logging daemon's results and commands.
#include <switchcfg/log.h>

#include <iterator>

namespace {

constexpr const char *error_names[] = {
    "LOGGERS_RET_OK",
    "LOGGERS_ERR_GENERIC",
    "LOGGERS_ERR_NOT_FOUND",
    "LOGGERS_ERR_NULL_POINTER",
    "LOGGERS_ERR_PERMISSION_DENIED",
    "LOGGERS_ERR_NO_RESOURCES",
    "LOGGERS_ERR_INVALID_INPUT",
    "LOGGERS_ERR_INVALID_RANGE",
    "LOGGERS_ERR_INVALID_PARAM",
    "LOGGERS_ERR_INVALID_STR_LEN",
    "LOGGERS_ERR_INVALID_IP",
    "LOGGERS_ERR_INVALID_PATH",
    "LOGGERS_ERR_INVALID_FIFONAME",
    "LOGGERS_ERR_INVALID_DESTINATION",
    "LOGGERS_ERR_INVALID_FACILITY",
    "LOGGERS_ERR_INVALID_LEVEL",
    "LOGGERS_ERR_INVALID_COMMAND",
    "LOGGERS_ERR_SYSTEM_IO",
    "LOGGERS_ERR_SERVER_CONNECT",
    "LOGGERS_ERR_SERVER_SEND",
    "LOGGERS_ERR_SERVER_RECV",
    "LOGGERS_ERR_CONVERT_IP_STR_TO_IP_BIN",
    "LOGGERS_ERR_CONVERT_HOSTNAME_TO_IP_STR",
    "LOGGERS_ERR_FIFO_OPEN",
    "LOGGERS_ERR_FIFO_CREATE",
    "LOGGERS_ERR_FILE_OPEN",
    "LOGGERS_ERR_FILE_READ",
    "LOGGERS_ERR_FILE_WRITE",
    "LOGGERS_ERR_QUEUE_ADD_LOG",
    "LOGGERS_ERR_QUEUE_FULL",
    "LOGGERS_ERR_EXTRA_DATA_ALLOCATE",
    "LOGGERS_ERR_CONFIGURATION_SAVE",
    "LOGGERS_ERR_CONFIGURATION_GET",
};

constexpr const char *command_names[] = {
    "LOGGERS_CMD_HELP",
    "LOGGERS_CMD_SHUTDOWN",
    "LOGGERS_CMD_CREATE_DESTINATION",
    "LOGGERS_CMD_UPDATE_DESTINATION",
    "LOGGERS_CMD_REMOVE_DESTINATION",
    "LOGGERS_CMD_GET_DESTINATION",
    "LOGGERS_CMD_GET_ALL_DESTINATION",
    "LOGGERS_CMD_SHOW_DESTINATION",
    "LOGGERS_CMD_CLEAN_DESTINATION",
    "LOGGERS_CMD_CREATE_RULE",
    "LOGGERS_CMD_UPDATE_RULE",
    "LOGGERS_CMD_REMOVE_RULE",
    "LOGGERS_CMD_GET_RULE",
    "LOGGERS_CMD_GET_ALL_RULES",
    "LOGGERS_CMD_CREATE_CATEGORY",
    "LOGGERS_CMD_UPDATE_CATEGORY",
    "LOGGERS_CMD_REMOVE_CATEGORY",
    "LOGGERS_CMD_GET_CATEGORY",
    "LOGGERS_CMD_GET_ALL_CATEGORY",
    "LOGGERS_CMD_SET_ID",
    "LOGGERS_CMD_ENABLE_QUEUE",
};

static_assert(std::size(error_names) == -1000 - LOGGERS_ERR_CONFIGURATION_GET + 1);
static_assert(std::size(command_names) == LOGGERS_CMD_COUNT);

template<std::size_t Count>
const char *name_at(const char *const (&names)[Count], long long index) noexcept
{
    return index >= 0 && index < static_cast<long long>(Count) ? names[index] : nullptr;
}

} // namespace

const char *log_get_error_string(int code) noexcept
{
    return name_at(error_names, code < 0 ? -1000LL - code : code);
}

const char *log_get_command_string(int command) noexcept
{
    return name_at(command_names, command);
}
