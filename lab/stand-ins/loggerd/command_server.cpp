// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/loggerd/command_server.h"

#include <switchcfg/log.h>
#include <switchcfg/log_store.h>
#include <switchcfg/request_channel.h>
#include <switchcfg/robust_io.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>

namespace switchlab::loggerd {

namespace {

constexpr std::uint32_t patience_s = 2; // for a whole command: nobody else is served meanwhile
constexpr auto reply_patience = std::chrono::seconds{5};

// The result stands in the second word of the reply.
struct Answer {
    std::int32_t result = LOGGERS_RET_OK;
    std::string extra{};
    std::uint32_t element_size = 1;
};

// Rules and categories are fixed here, so what would change them is refused.
constexpr Answer refused()
{
    return {LOGGERS_ERR_PERMISSION_DENIED};
}

Answer all_commands()
{
    Answer answer;
    for (int code = 0; code < LOGGERS_CMD_COUNT; ++code) {
        answer.extra += log_get_command_string(code);
        answer.extra += '\n';
    }
    return answer;
}

Answer all_destinations(const Journal &journal)
{
    Answer answer;
    answer.element_size = sizeof loggers_command::destination;
    for (std::string name : journal.names()) {
        name.resize(answer.element_size, '\0');
        answer.extra += name;
    }
    return answer;
}

Answer show(const Journal &journal, std::string_view name)
{
    std::optional<std::string> text = journal.text(name);
    return text ? Answer{LOGGERS_RET_OK, std::move(*text)} : Answer{LOGGERS_ERR_FILE_READ};
}

Answer about_destination(std::uint32_t code, Journal &journal, std::string_view name)
{
    if (!journal.has(name)) {
        return {LOGGERS_ERR_INVALID_DESTINATION};
    }
    switch (code) {
    case LOGGERS_CMD_SHOW_DESTINATION:
        return show(journal, name);
    case LOGGERS_CMD_CLEAN_DESTINATION:
        return {journal.clear(name) ? LOGGERS_RET_OK : LOGGERS_ERR_FILE_WRITE};
    case LOGGERS_CMD_GET_DESTINATION:
        return {};
    default:
        return refused();
    }
}

Answer answer_to(const loggers_command &command, Journal &journal)
{
    const std::size_t length = ::strnlen(command.destination, sizeof command.destination);
    switch (command.command) {
    case LOGGERS_CMD_HELP:
        return all_commands();
    case LOGGERS_CMD_GET_ALL_DESTINATION:
        return all_destinations(journal);
    case LOGGERS_CMD_UPDATE_DESTINATION:
    case LOGGERS_CMD_REMOVE_DESTINATION:
    case LOGGERS_CMD_GET_DESTINATION:
    case LOGGERS_CMD_SHOW_DESTINATION:
    case LOGGERS_CMD_CLEAN_DESTINATION:
        return length == sizeof command.destination
                   ? Answer{LOGGERS_ERR_INVALID_STR_LEN}
                   : about_destination(command.command, journal, {command.destination, length});
    case LOGGERS_CMD_SHUTDOWN:
    case LOGGERS_CMD_GET_ALL_RULES:
    case LOGGERS_CMD_GET_ALL_CATEGORY:
        return {};
    case LOGGERS_CMD_UPDATE_RULE:
    case LOGGERS_CMD_REMOVE_RULE:
    case LOGGERS_CMD_GET_RULE:
    case LOGGERS_CMD_UPDATE_CATEGORY:
    case LOGGERS_CMD_REMOVE_CATEGORY:
    case LOGGERS_CMD_GET_CATEGORY:
        return {LOGGERS_ERR_NOT_FOUND};
    case LOGGERS_CMD_CREATE_DESTINATION:
    case LOGGERS_CMD_CREATE_RULE:
    case LOGGERS_CMD_CREATE_CATEGORY:
    case LOGGERS_CMD_SET_ID:
    case LOGGERS_CMD_ENABLE_QUEUE:
        return refused();
    default:
        return {LOGGERS_ERR_INVALID_COMMAND};
    }
}

// A client that reads slowly or not at all loses the rest of its reply.
void send_within_patience(int fd, std::string_view bytes)
{
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + reply_patience;
    while (!bytes.empty()) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd wait{fd, POLLOUT, 0};
        if (left <= 0 || ::poll(&wait, 1, static_cast<int>(left)) <= 0) {
            return;
        }
        const ssize_t sent = ::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0) {
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

struct Service {
    daemon_server server{};
    Journal &journal;
    int ready_fd;
};

int tick(void *argument)
{
    auto *service = static_cast<Service *>(argument);
    if (service->ready_fd >= 0) { // the first tick: the port is open
        (void)vx_write(service->ready_fd, "", 1);
        ::close(service->ready_fd);
        service->ready_fd = -1;
    }
    return 0;
}

int serve_connection(void *argument, int fd)
{
    auto *service = static_cast<Service *>(argument);
    loggers_command command{};
    if (vx_read_timeout(fd, &command, LOGGERS_COMMAND_SIZE, patience_s) < 0) {
        service->journal.note("a command that did not arrive whole");
        return -1;
    }
    const Answer answer = answer_to(command, service->journal);
    std::memcpy(&command.word, &answer.result, sizeof command.word);
    command.element_size = answer.extra.empty() ? 0 : answer.element_size;
    command.element_count = static_cast<std::uint32_t>(answer.extra.size() / answer.element_size);
    std::string reply{reinterpret_cast<const char *>(&command), LOGGERS_COMMAND_SIZE};
    reply += answer.extra;
    send_within_patience(fd, reply);
    if (command.command == LOGGERS_CMD_SHUTDOWN) {
        service->journal.note("shut down by command");
        ::unlink(LOG_SOCKET_PATH);
        std::_Exit(EXIT_SUCCESS);
    }
    return 0;
}

} // namespace

void serve_commands(Journal &journal, int ready_fd)
{
    Service service{{}, journal, ready_fd};
    service.server = {LOG_CONTROL_PORT, 100, &service, tick, serve_connection};
    (void)daemon_server_loop6(&service.server);
}

} // namespace switchlab::loggerd
