// SPDX-License-Identifier: Apache-2.0
// What a log message costs its sender, beside the bare system calls with one vsnprintf. The taking side runs on the
// same thread and is not counted.
#include <switchcfg/log.h>
#include <switchcfg/socket.h>

#include "bench/support/compare.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

constexpr int batch = 5; // as many as the backlog takes

template<typename Send, typename Take>
auto sent(Send send, Take take)
{
    return [send, take] {
        bool good = true;
        const double start = seconds_of(Row::Clock::thread);
        for (int i = 0; i < batch; ++i) {
            good = send(i) && good;
        }
        const double took = seconds_of(Row::Clock::thread) - start;
        for (int i = 0; i < batch && good; ++i) {
            take();
        }
        return good ? took / batch : -1;
    };
}

int format(char *buffer, std::size_t size, const char *text, ...) __attribute__((format(printf, 3, 4)));
int format(char *buffer, std::size_t size, const char *text, ...)
{
    va_list arguments;
    va_start(arguments, text);
    const int length = std::vsnprintf(buffer, size, text, arguments);
    va_end(arguments);
    return length;
}

bool send_bare(int port)
{
    sockaddr_un endpoint{};
    endpoint.sun_family = AF_UNIX;
    std::memcpy(endpoint.sun_path, LOG_SOCKET_PATH, sizeof LOG_SOCKET_PATH);
    char text[256];
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&endpoint), sizeof endpoint) != 0) {
        return false;
    }
    const int length = format(text, sizeof text, "Link-Flap detected on port %d/%d, blocking", 1, port);
    log_message_header header{};
    header.text_length = static_cast<std::uint16_t>(length + 1);
    const bool sent =
        ::send(fd, &header, sizeof header, MSG_DONTWAIT) > 0 && ::send(fd, text, header.text_length, MSG_DONTWAIT) > 0;
    ::close(fd);
    return sent;
}

struct Listener {
    int fd = socket_us_create(LOG_SOCKET_PATH);
    Listener() = default;
    Listener(const Listener &) = delete;
    Listener &operator=(const Listener &) = delete;
    ~Listener() { ::close(fd); }
    void take() const { ::close(::accept(fd, nullptr, nullptr)); }
};

void log_message(benchmark::State &state)
{
    const Listener listener;
    const auto take = [&] { listener.take(); };
    compare_measured(state,
        {"log message to the logging daemon", "socket, connect, two sends, close, one vsnprintf", 1.1},
        sent(send_bare, take),
        sent([](int port) { return log_send_fac(3, 4, "Link-Flap detected on port %d/%d, blocking", 1, port) == 0; },
            take));
}
SWITCHCFG_ROW(log_message);

} // namespace
