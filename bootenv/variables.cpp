// SPDX-License-Identifier: Apache-2.0
#include "bootenv/variables.h"

#include <algorithm>
#include <cstring>

namespace switchcfg::bootenv {
namespace {

std::string_view name_of(std::string_view text) noexcept
{
    return text.substr(0, text.find('='));
}

} // namespace

Variables::Variables(std::span<char> room, std::size_t used) noexcept : room_(room), used_(used)
{
    if (used_ > 0 && room_[used_ - 1] != '\0') {
        room_[used_++] = '\0';
    }
    keep([](std::string_view text) { return text.find('=') != text.npos; });
}

std::size_t Variables::count() const noexcept
{
    return static_cast<std::size_t>(std::ranges::count(bytes(), '\0'));
}

std::string_view Variables::text_at(std::size_t place) const noexcept
{
    return room_.data() + place;
}

std::optional<std::string_view> Variables::value_of(std::string_view name) const noexcept
{
    name = name_of(name);
    for (std::size_t place = 0; place < used_;) {
        const std::string_view text = text_at(place);
        if (name_of(text) == name) {
            return text.substr(name.size() + 1);
        }
        place += text.size() + 1;
    }
    return std::nullopt;
}

bool Variables::set(std::string_view name, std::string_view value) noexcept
{
    // An image that another program damaged may hold a name twice. Every text of the name makes way, so that the new
    // value is the one that is found.
    std::size_t replaced = 0;
    for (std::size_t place = 0; place < used_;) {
        const std::string_view text = text_at(place);
        replaced += name_of(text) == name_of(name) ? text.size() + 1 : 0;
        place += text.size() + 1;
    }
    const std::size_t taken = used_ - replaced;
    const std::size_t limit = std::min(most, room_.size());
    const std::size_t left = limit - std::min(limit, taken);
    if (name.size() > left || value.size() > left || name.size() + value.size() + 2 > left) {
        return false;
    }
    remove(name);
    char *end = room_.data() + used_;
    end = std::ranges::copy(name, end).out;
    *end++ = '=';
    end = std::ranges::copy(value, end).out;
    *end++ = '\0';
    used_ = static_cast<std::size_t>(end - room_.data());
    return true;
}

void Variables::remove(std::string_view name) noexcept
{
    keep([name = name_of(name)](std::string_view text) { return name_of(text) != name; });
}

template<typename Wanted>
void Variables::keep(Wanted wanted) noexcept
{
    std::size_t kept = 0;
    for (std::size_t place = 0; place < used_;) {
        const std::size_t size = text_at(place).size() + 1;
        if (wanted(text_at(place))) {
            std::memmove(room_.data() + kept, room_.data() + place, size);
            kept += size;
        }
        place += size;
    }
    used_ = kept;
}

} // namespace switchcfg::bootenv
