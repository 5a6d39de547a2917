// SPDX-License-Identifier: Apache-2.0
// What a log message costs its sender, beside the bare system calls with one vsnprintf, and beside syslog(3). The
// taking side runs on the same thread and is not counted.
#include <switchcfg/log.h>
#include <switchcfg/socket.h>

#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

namespace {

constexpr int batch = 5; // as many as the backlog takes

template<typename Send, typename Take>
void measure(benchmark::State &state, Send &&send, Take &&take)
{
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 0; i < batch; ++i) {
            if (!send(i)) {
                state.SkipWithError("the message was not sent");
                return;
            }
        }
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        state.SetIterationTime(took.count() / batch);
        for (int i = 0; i < batch; ++i) {
            take();
        }
    }
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

void log_message_floor(benchmark::State &state)
{
    const Listener listener;
    measure(state, send_bare, [&] { listener.take(); });
}
BENCHMARK(log_message_floor)->UseManualTime();

void log_message(benchmark::State &state)
{
    const Listener listener;
    measure(
        state, [](int port) { return log_send_fac(3, 4, "Link-Flap detected on port %d/%d, blocking", 1, port) == 0; },
        [&] { listener.take(); });
}
BENCHMARK(log_message)->UseManualTime();

// Against a socket of ours, so that no log of this machine fills up; where a system logger runs there is no row.
void log_message_syslog(benchmark::State &state)
{
    constexpr char path[] = "/dev/log";
    if (::access(path, F_OK) == 0) {
        state.SkipWithError("a system logger runs here");
        return;
    }
    const int taker = socket_ud_create(path);
    if (taker < 0) {
        state.SkipWithError("/dev/log cannot be made");
        return;
    }
    measure(
        state,
        [](int port) {
            ::syslog(LOG_WARNING, "Link-Flap detected on port %d/%d, blocking", 1, port);
            return true;
        },
        [&] {
            char buffer[1024];
            benchmark::DoNotOptimize(::recv(taker, buffer, sizeof buffer, 0));
        });
    ::closelog();
    ::close(taker);
    ::unlink(path);
}
BENCHMARK(log_message_syslog)->UseManualTime();

} // namespace
