// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/routing/faults.h"

#include <array>
#include <cstdlib>
#include <sstream>
#include <string_view>

namespace switchlab::routing {

namespace {

struct KindRow {
    std::string_view name;
    Fault::Kind kind;
    std::uint32_t usual;   // argument where none is given
    std::uint32_t largest; // argument; 0 where none can be given
};

constexpr std::uint32_t mebibyte = 1024 * 1024;

// clang-format off
constexpr std::array kinds{
    KindRow{"none",           Fault::none,           0,             0},
    KindRow{"stall",          Fault::stall,          200,           600000},
    KindRow{"close",          Fault::close,          0,             0},
    KindRow{"half",           Fault::half,           0,             0},
    KindRow{"protocol-error", Fault::protocol_error, 0,             0},
    KindRow{"garbage",        Fault::garbage,        0,             0},
    KindRow{"huge",           Fault::huge,           64 * mebibyte, 1024 * mebibyte},
    KindRow{"endless",        Fault::endless,        0,             0},
};
// clang-format on

} // namespace

bool Faults::request(const std::string &text)
{
    std::istringstream words{text};
    std::string kind_text;
    unsigned count = 1;
    words >> kind_text;
    if (!(words >> std::ws).eof() && (!(words >> count) || !(words >> std::ws).eof())) {
        return false;
    }
    const std::size_t colon = kind_text.find(':');
    for (const KindRow &row : kinds) {
        if (row.name != std::string_view{kind_text}.substr(0, colon)) {
            continue;
        }
        unsigned long argument = row.usual;
        if (colon != std::string::npos) {
            char *end = nullptr;
            argument = std::strtoul(&kind_text[colon + 1], &end, 10);
            if (end == &kind_text[colon + 1] || *end != '\0' || argument > row.largest) {
                return false;
            }
        }
        const std::lock_guard lock{mutex_};
        requested_ = {row.kind, static_cast<std::uint32_t>(argument)};
        left_ = count;
        return true;
    }
    return false;
}

Fault Faults::next()
{
    const std::lock_guard lock{mutex_};
    if (left_ > 0) {
        --left_;
        return requested_;
    }
    if (random_() % 100 >= percent_) {
        return {};
    }
    const KindRow &row = kinds[1 + random_() % (kinds.size() - 1)];
    return {row.kind, row.usual};
}

} // namespace switchlab::routing
