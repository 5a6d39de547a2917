// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/uptime.h>

#include "support/guarded.h"

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iomanip>
#include <sched.h>
#include <sstream>
#include <string>
#include <string_view>
#include <sys/mman.h>
#include <sys/mount.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace {

using switchcfg::testing::Guarded;

struct Period {
    std::uint32_t seconds;
    std::vector<std::string_view> parts;
    std::vector<std::string_view> parts_in_days;
};

TEST(PeriodText, EndsBeforeThePartThatDoesNotFit)
{
    const Period periods[] = {
        {0, {"0 s"}, {"0 s"}},
        {31104000, {"1 y, ", "0 s"}, {"360 d, ", "0 s"}},
        {31104000 + 2 * 2592000 + 3 * 86400 + 4 * 3600 + 5 * 60 + 6,
            {"1 y, ", "2 mon, ", "3 d, ", "4 h, ", "5 m, ", "6 s"}, {"423 d, ", "4 h, ", "5 m, ", "6 s"}},
        {3600, {"1 h, ", "0 s"}, {"1 h, ", "0 s"}},
        {UINT32_MAX, {"138 y, ", "1 mon, ", "6 h, ", "28 m, ", "15 s"}, {"49710 d, ", "6 h, ", "28 m, ", "15 s"}},
    };
    const auto check = [](auto function, std::uint32_t seconds, const std::vector<std::string_view> &parts) {
        for (std::size_t size = 0; size <= 40; ++size) {
            std::string expected;
            for (const std::string_view part : parts) {
                if (expected.size() + part.size() >= size) {
                    break;
                }
                expected += part;
            }
            Guarded buffer{size};
            const int result = function(seconds, buffer.data(), size);
            EXPECT_EQ(result, expected.empty() ? -1 : static_cast<int>(expected.size())) << seconds << " in " << size;
            EXPECT_TRUE(expected.empty() ? buffer.untouched() : buffer.intact()) << seconds << " in " << size;
            EXPECT_TRUE(expected.empty() || buffer.data() == expected) << seconds << " in " << size;
        }
    };
    for (const Period &period : periods) {
        check(seconds_period_to_string, period.seconds, period.parts);
        check(seconds_period_to_string_days, period.seconds, period.parts_in_days);
    }
}

std::uint64_t boot_clock_cs()
{
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 100 + static_cast<std::uint64_t>(now.tv_nsec) / 10000000;
}

TEST(Uptime, CountsFromBootInSecondsAndHundredths)
{
    for (int i = 0; i < 1000; ++i) {
        const std::uint64_t before = boot_clock_cs();
        const std::uint64_t now = uptime_cs();
        const std::uint64_t after = boot_clock_cs();
        ASSERT_LE(before, now);
        ASSERT_LE(now, after);
    }
    const auto before = static_cast<int>(boot_clock_cs() / 100);
    const int seconds = uptime();
    // The call behind it rounds up.
    EXPECT_GE(seconds, before);
    EXPECT_LE(seconds, static_cast<int>(boot_clock_cs() / 100) + 1);
}

// Runs `body` with a /proc of the test's own, which holds the given file.
void with_proc_file(const std::string &name, const char *content, const std::function<void()> &body)
{
    ASSERT_EQ(::mount("none", "/proc", "tmpfs", 0, nullptr), 0) << std::strerror(errno);
    std::filesystem::create_directories(std::filesystem::path{"/proc/" + name}.parent_path());
    if (content != nullptr) {
        std::ofstream{"/proc/" + name} << content;
    }
    body();
    ASSERT_EQ(::umount2("/proc", MNT_DETACH), 0);
}

class OddProc : public testing::Test {
  protected:
    void SetUp() override
    {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
            GTEST_SKIP() << "needs a mount namespace of its own: " << std::strerror(errno);
        }
    }
};

TEST_F(OddProc, UptimeFallsBackToWholeSeconds)
{
    with_proc_file("uptime", "1234.05 99.99\n", [] { EXPECT_EQ(uptime_cs(), 123405U); });
    with_proc_file("uptime", "4294967296.99 1.00\n", [] {
        EXPECT_EQ(uptime_cs(), 429496729699U);
        Guarded buffer{32};
        EXPECT_EQ(uptime_cs_str(buffer.data(), 32), 11) << "the low 32 bits are 99";
        EXPECT_STREQ(buffer.data(), "[     0.99]");
    });
    for (const char *content : {static_cast<const char *>(nullptr), "", "1234.05\n", "1234 99\n", "x 99\n", ". 9\n"}) {
        with_proc_file("uptime", content, [content] {
            const auto before = static_cast<std::uint64_t>(uptime());
            const std::uint64_t now = uptime_cs();
            EXPECT_EQ(now % 100, 0U) << content;
            EXPECT_GE(now, before * 100);
            EXPECT_LE(now, static_cast<std::uint64_t>(uptime()) * 100);
        });
    }
}

TEST_F(OddProc, UptimeTextIsCutAtEverySize)
{
    with_proc_file("uptime", "1234.56 1.00\n", [] {
        const std::string whole = "[  1234.56]";
        for (std::size_t size = 0; size < whole.size() + 3; ++size) {
            Guarded buffer{size};
            EXPECT_EQ(uptime_cs_str(buffer.data(), size), 11);
            EXPECT_TRUE(buffer.intact());
            EXPECT_TRUE(size == 0 || buffer.data() == whole.substr(0, size - 1)) << size;
        }
    });
}

TEST_F(OddProc, MemoryUsedIsTheProgramSize)
{
    const long before = mem_used();
    constexpr std::size_t piece = 64U << 20U;
    void *const more = ::mmap(nullptr, piece, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(more, MAP_FAILED);
    EXPECT_EQ(mem_used(), before + static_cast<long>(piece));
    ::munmap(more, piece);
    EXPECT_EQ(before % ::getpagesize(), 0);

    const std::string statm = std::to_string(::getpid()) + "/statm";
    for (const auto &[content, expected] : {std::pair{static_cast<const char *>(nullptr), -1L}, {"1234\n", -1L},
             {"1234\n 5", -1L}, {"", -1L}, {"12 3\n", 12L * ::getpagesize()}}) {
        with_proc_file(statm, content, [result = expected] { EXPECT_EQ(mem_used(), result); });
    }
}

struct Calendar : testing::Test {
    Calendar() { ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1); }
};

TEST_F(Calendar, StartupTimeIsBootAsLocalTextAtEverySize)
{
    const auto boot_text = [] {
        const std::time_t boot = std::time(nullptr) - uptime();
        std::tm local{};
        std::ostringstream text;
        text << std::put_time(::localtime_r(&boot, &local), "%c\n");
        return text.str();
    };
    std::string whole = boot_text();
    for (std::size_t size = 0; size < whole.size() + 4; ++size) {
        Guarded buffer{size};
        int result = 0;
        do { // the second may change in between
            whole = boot_text();
            result = vx_startup_time(buffer.data(), size);
        } while (whole != boot_text());
        const bool fits = size > whole.size();
        std::string expected = fits ? whole : "";
        expected.resize(fits ? size : std::min(size, std::size_t{1})); // padded, or an empty text
        EXPECT_EQ(result, fits ? static_cast<int>(whole.size()) : 0) << size;
        EXPECT_EQ(std::string(buffer.data(), expected.size()), expected) << size;
        EXPECT_TRUE(buffer.intact()) << size;
    }
}

TEST_F(Calendar, OnlyRealDatesPass)
{
    for (const auto &[day, month, year, real] :
        {std::tuple{29, 2, 2023, 0}, {29, 2, 2024, 1}, {29, 2, 1900, 0}, {29, 2, 2000, 1}, {31, 4, 2024, 0},
            {31, 12, 2024, 1}, {1, 13, 2024, 0}, {0, 1, 2024, 0}, {1, 0, 2024, 0}, {1, 7, 2024, 1}}) {
        std::tm date;
        std::memset(&date, 0x5A, sizeof date);
        EXPECT_EQ(maketm(&date, day, month, year), &date);
        EXPECT_EQ(checkdate(&date), real) << day << '.' << month << '.' << year;
        EXPECT_EQ(std::tuple(date.tm_mday, date.tm_mon, date.tm_year), std::tuple(day, month - 1, year - 1900))
            << "the caller's date is not normalised";
    }
    std::tm late{};
    maketm(&late, 31, 1, 2024);
    late.tm_hour = 24;
    EXPECT_EQ(checkdate(&late), 0) << "its time of day makes it the next day";
}

TEST_F(Calendar, TimesAreLocalWithoutDaylightSaving)
{
    EXPECT_EQ(date2time_t(1970, 1, 1, 1, 0, 0), 0);
    EXPECT_EQ(date2time_t(2024, 2, 29, 12, 34, 56), 1709206496); // 11:34:56 UTC
    EXPECT_EQ(date2time_t(2024, 7, 1, 12, 0, 0), 1719831600);    // 11:00 UTC though summer time is 10:00
}

} // namespace
