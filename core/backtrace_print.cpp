// SPDX-License-Identifier: Apache-2.0
#include "util/owned.h"

#include <switchcfg/backtrace.h>
#include <switchcfg/signals.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <dlfcn.h>
#include <execinfo.h>
#include <syslog.h>
#include <unistd.h>

namespace {

using switchcfg::Malloced;
using switchcfg::Stream;

constexpr char rule[] = "#####################################################";

// Inlined into each printer, so that entry 0 is the printer itself.
template<int Depth>
struct Stack {
    std::array<void *, Depth> frames;
    int depth;
    Malloced<char *> symbols;

    [[gnu::always_inline]] Stack() noexcept
        : depth(::backtrace(frames.data(), Depth)), symbols(::backtrace_symbols(frames.data(), depth))
    {
        if (symbols == nullptr) {
            depth = 0;
        }
    }
};

// asctime's own form, newline included: the blank line it leaves is part of the log's look.
const char *date_now(std::array<char, 64> &text) noexcept
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    return ::asctime_r(::localtime_r(&now, &local), text.data());
}

int bounded(int wanted, size_t len) noexcept
{
    return len == 0 ? 0 : std::min(wanted, static_cast<int>(len) - 1);
}

void on_segv(int /*signo*/)
{
    backtrace_print();
}

} // namespace

char *backtrace_get() noexcept
{
    const Stack<10> stack;
    char *text = nullptr;
    if (::asprintf(&text, "Obtained %d stack frames:\n", stack.depth) < 0) {
        return nullptr;
    }
    for (int i = 0; i < stack.depth; ++i) {
        const Malloced<char> previous{text};
        if (::asprintf(&text, "%s%s\n", previous.get(), stack.symbols.get()[i]) < 0) {
            return nullptr;
        }
    }
    return text;
}

void backtrace_print() noexcept
{
    const Stack<50> stack;
    for (int i = 0; i < stack.depth; ++i) {
        (void)std::fprintf(stderr, "%s\r\n", stack.symbols.get()[i]);
    }
}

void backtrace_print_file(const char *dir) noexcept
{
    const Stack<50> stack;
    char *path = nullptr;
    if (::asprintf(&path, "%sbacktrace.log", dir) < 0) {
        return;
    }
    const Malloced<char> owned{path};
    const Stream log{std::fopen(path, "a")};
    if (log == nullptr) {
        return;
    }
    std::array<char, 64> date;
    (void)std::fprintf(log.get(), "\n%s\n# My PID: %d\n# Date: %s\n%s\n", rule, ::getpid(), date_now(date), rule);
    for (int i = 0; i < stack.depth; ++i) {
        (void)std::fprintf(log.get(), "%s\r\n", stack.symbols.get()[i]);
    }
}

void backtrace_print_syslog(int priority) noexcept
{
    const Stack<50> stack;
    std::array<char, 64> date;
    ::syslog(priority, "%s", rule);
    ::syslog(priority, "# My PID: %d", ::getpid());
    ::syslog(priority, "# Date: %s", date_now(date));
    ::syslog(priority, "%s", rule);
    for (int i = 0; i < stack.depth; ++i) {
        ::syslog(priority, "%s", stack.symbols.get()[i]);
    }
}

void backtrace_print_nomalloc() noexcept
{
    void *frames[15];
    ::backtrace_symbols_fd(frames, ::backtrace(frames, 15), STDERR_FILENO);
}

int name_of_func(void *addr, char *buf, size_t len) noexcept
{
    Dl_info known{};
    if (::dladdr(addr, &known) == 0 || known.dli_fname == nullptr) {
        return bounded(std::snprintf(buf, len, "@ [%p] ", addr), len);
    }
    if (known.dli_sname == nullptr) {
        return bounded(std::snprintf(buf, len, "@ %s[%p] ", known.dli_fname, addr), len);
    }
    const auto distance = static_cast<char *>(addr) - static_cast<char *>(known.dli_saddr);
    return bounded(std::snprintf(buf, len, "@ %s(%s%c%p)[%p] ", known.dli_fname, known.dli_sname,
                       distance < 0 ? '-' : '+', reinterpret_cast<void *>(std::abs(distance)), addr),
        len);
}

int name_of_caller(int depth, char *buf, size_t len) noexcept
{
    std::array<void *, 64> frames;
    if (depth >= 0 && depth < static_cast<int>(frames.size()) - 2 &&
        ::backtrace(frames.data(), depth + 2) == depth + 2) {
        return name_of_func(frames[static_cast<size_t>(depth) + 1], buf, len);
    }
    if (len > 0) {
        buf[0] = '\0';
    }
    return 0;
}

int sigsegv_backtrace_print() noexcept
{
    return signal_handler(SIGSEGV, on_segv);
}
