// SPDX-License-Identifier: Apache-2.0
// Time since boot, periods as text, calendar checks.
#include <switchcfg/uptime.h>

#include "util/owned.h"

#include <array>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <optional>
#include <span>
#include <string_view>
#include <sys/sysinfo.h>
#include <unistd.h>

namespace {

using switchcfg::Descriptor;

// What the file holds before its first blank. The kernel gives the files read here whole with one read.
std::optional<std::string_view> first_word(const char *path, std::span<char> work) noexcept
{
    const Descriptor fd{::open(path, O_RDONLY | O_CLOEXEC)};
    if (!fd) {
        return {};
    }
    const ssize_t count = ::read(fd.get(), work.data(), work.size());
    if (count < 0) {
        return {};
    }
    const std::string_view content{work.data(), static_cast<std::size_t>(count)};
    const std::size_t blank = content.substr(0, content.find('\n')).find(' ');
    if (blank == std::string_view::npos) {
        return {};
    }
    return content.substr(0, blank);
}

// Takes the number off the front of the text.
template<typename Number>
bool take_number(std::string_view &text, Number &number) noexcept
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc{};
}

class PeriodText {
  public:
    PeriodText(char *buffer, std::size_t size) noexcept : buffer_(buffer), size_(size) {}

    // Whole or not at all, and nothing behind a part that was left out.
    void add(unsigned count, const char *unit) noexcept
    {
        std::array<char, 20> part;
        const auto length = static_cast<std::size_t>(std::snprintf(part.data(), part.size(), "%u %s", count, unit));
        full_ = full_ || size_ - length_ <= length;
        if (!full_) {
            std::memcpy(buffer_ + length_, part.data(), length + 1);
            length_ += length;
        }
    }
    void add_unless_zero(unsigned count, const char *unit) noexcept
    {
        if (count != 0) {
            add(count, unit);
        }
    }
    int result() const noexcept { return length_ > 0 ? static_cast<int>(length_) : -1; }

  private:
    char *buffer_;
    std::size_t size_;
    std::size_t length_ = 0;
    bool full_ = false;
};

int finish_period(PeriodText &text, unsigned days, std::uint32_t seconds) noexcept
{
    text.add_unless_zero(days, "d, ");
    text.add_unless_zero(seconds / 3600 % 24, "h, ");
    text.add_unless_zero(seconds / 60 % 60, "m, ");
    text.add(seconds % 60, "s");
    return text.result();
}

constexpr std::uint32_t seconds_per_day = 86400;

} // namespace

int uptime() noexcept
{
    struct sysinfo info {};
    return ::sysinfo(&info) == 0 ? static_cast<int>(info.uptime) : -1;
}

std::uint64_t uptime_cs() noexcept
{
    std::array<char, 100> work;
    std::uint64_t seconds = 0;
    std::uint64_t hundredths = 0; // the kernel always writes two digits
    if (auto word = first_word("/proc/uptime", work)) {
        if (take_number(*word, seconds) && word->starts_with('.')) {
            word->remove_prefix(1);
            if (take_number(*word, hundredths)) {
                return seconds * 100 + hundredths;
            }
        }
    }
    return static_cast<std::uint64_t>(uptime()) * 100;
}

int uptime_cs_str(char *buffer, std::size_t size) noexcept
{
    // Daemons on machines of either word size show the same text, so the count wraps at 32 bits everywhere.
    const unsigned long count = static_cast<std::uint32_t>(uptime_cs());
    return std::snprintf(buffer, size, "[%6lu.%02lu]", count / 100, count % 100);
}

int seconds_period_to_string(std::uint32_t seconds, char *buffer, std::size_t size) noexcept
{
    const std::uint32_t days = seconds / seconds_per_day;
    PeriodText text{buffer, size};
    text.add_unless_zero(days / 30 / 12, "y, ");
    text.add_unless_zero(days / 30 % 12, "mon, ");
    return finish_period(text, days % 30, seconds);
}

int seconds_period_to_string_days(std::uint32_t seconds, char *buffer, std::size_t size) noexcept
{
    PeriodText text{buffer, size};
    return finish_period(text, seconds / seconds_per_day, seconds);
}

long mem_used() noexcept
{
    std::array<char, 32> path;
    (void)std::snprintf(path.data(), path.size(), "/proc/%d/statm", static_cast<int>(::getpid()));
    std::array<char, 100> work;
    auto word = first_word(path.data(), work);
    long pages = 0;
    long total = 0;
    if (!word || !take_number(*word, pages)) {
        return -1;
    }
    // A 32-bit process may use more than half its addresses.
    return __builtin_mul_overflow(pages, static_cast<long>(::getpagesize()), &total) ? LONG_MAX : total;
}
