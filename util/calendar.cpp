// SPDX-License-Identifier: Apache-2.0
// Calendar dates and times: local time and its checks.
#include <switchcfg/text.h>
#include <switchcfg/uptime.h>

#include <cstring>
#include <ctime>

int vx_startup_time(char *buffer, std::size_t size) noexcept
{
    const std::time_t now = std::time(nullptr);
    if (now == -1) {
        return -1;
    }
    const std::time_t boot = now - uptime();
    std::tm local{};
    std::memset(buffer, 0, size);
    if (::localtime_r(&boot, &local) == nullptr) {
        return -1;
    }
    return strftime_safe(buffer, size, "%c\n", &local);
}

int checkdate(const std::tm *date) noexcept
{
    std::tm normal = *date;
    const std::time_t when = std::mktime(&normal);
    std::tm real{};
    if (::localtime_r(&when, &real) == nullptr) {
        return 0;
    }
    return date->tm_mday == real.tm_mday && date->tm_mon == real.tm_mon && date->tm_year == real.tm_year ? 1 : 0;
}

std::tm *maketm(std::tm *date, int day, int month, int year) noexcept
{
    *date = {};
    date->tm_mday = day;
    date->tm_mon = month - 1;
    date->tm_year = year - 1900;
    return date;
}

std::time_t date2time_t(int year, int month, int day, int hour, int minute, int second) noexcept
{
    std::tm date{};
    date.tm_year = year - 1900;
    date.tm_mon = month - 1;
    date.tm_mday = day;
    date.tm_hour = hour;
    date.tm_min = minute;
    date.tm_sec = second;
    return std::mktime(&date);
}
