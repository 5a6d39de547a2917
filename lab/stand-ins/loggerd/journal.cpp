// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/loggerd/journal.h"

#include <switchcfg/log_store.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <system_error>

namespace switchlab::loggerd {

namespace {

enum StoreIndex : std::size_t { ram, internal_ram, flash, internal_flash };

constexpr std::array level_names{"emerg", "alert", "crit", "err", "warning", "notice", "info", "debug"};
constexpr std::array facility_names{"kern", "user", "mail", "daemon", "auth", "syslog", "lpr", "news", "uucp", "cron",
    "authpriv", "ftp", "ntp", "audit", "alert", "clock", "local0", "local1", "local2", "local3", "local4", "local5",
    "local6", "local7"};

constexpr unsigned warning_level = 4;
constexpr unsigned debug_level = 7;

template<std::size_t Count>
std::string name_of(const std::array<const char *, Count> &names, unsigned number)
{
    return number < Count ? names[number] : std::to_string(number);
}

std::string now()
{
    const std::time_t seconds = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&seconds, &local);
    std::array<char, 32> text{};
    (void)std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local);
    return text.data();
}

// A line stays a line whatever a message contains.
std::string printable(std::string_view text)
{
    while (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    std::string line;
    for (const char character : text) {
        const auto code = static_cast<unsigned char>(character);
        if ((code < 0x20 && character != '\t') || code == 0x7F) {
            constexpr char digits[] = "01234567";
            line += {'#', digits[code / 64], digits[code / 8 % 8], digits[code % 8]};
        } else {
            line += character;
        }
    }
    return line;
}

} // namespace

Journal::Journal(const Limits &limits) : echo_(limits.echo)
{
    std::error_code ignored; // without the folder the flash stores stay empty
    std::filesystem::create_directories(limits.flash_folder, ignored);
    stores_.emplace_back(LOG_STORE_RAM, limits.ram);
    stores_.emplace_back(LOG_STORE_INTERNAL_RAM, limits.ram);
    stores_.emplace_back(LOG_STORE_FLASH, limits.flash, limits.flash_folder + "/flash.log");
    stores_.emplace_back(LOG_STORE_INTERNAL_FLASH, limits.flash, limits.flash_folder + "/internal_flash.log");
}

void Journal::add(const log_message_header &header, std::string_view text)
{
    const std::string source =
        header.facility == LOG_NO_FACILITY ? header.category : name_of(facility_names, header.facility);
    const std::string line =
        now() + " " + printable(source) + "." + name_of(level_names, header.level) + ": " + printable(text);
    const std::lock_guard lock{mutex_};
    if (echo_) {
        (void)std::printf("%s\n", line.c_str());
        (void)std::fflush(stdout);
    }
    if (header.level >= debug_level) {
        stores_[internal_ram].add(line);
        return;
    }
    stores_[ram].add(line);
    if (header.level <= warning_level) {
        stores_[flash].add(line);
    }
}

void Journal::note(std::string_view what)
{
    const std::string line = now() + " loggerd: " + printable(what);
    const std::lock_guard lock{mutex_};
    stores_[internal_flash].add(line);
}

std::vector<std::string> Journal::names() const
{
    std::vector<std::string> all;
    for (const Store &store : stores_) {
        all.push_back(store.name());
    }
    return all;
}

bool Journal::has(std::string_view name) const
{
    return std::ranges::find(stores_, name, &Store::name) != stores_.end();
}

std::optional<std::string> Journal::text(std::string_view name) const
{
    const std::lock_guard lock{mutex_};
    const auto store = std::ranges::find(stores_, name, &Store::name);
    return store == stores_.end() ? std::nullopt : store->text();
}

bool Journal::clear(std::string_view name)
{
    const std::lock_guard lock{mutex_};
    const auto store = std::ranges::find(stores_, name, &Store::name);
    return store != stores_.end() && store->clear();
}

} // namespace switchlab::loggerd
