// SPDX-License-Identifier: Apache-2.0
#include "tools/models.h"

#include "tools/attach.h"
#include "tools/command_line/failure.h"

#include <charconv>
#include <cstdio>
#include <strings.h>
#include <switchcfg/equip_table.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {

std::uint8_t *status_of_switch()
{
    attach();
    return static_cast<std::uint8_t *>(get_status());
}

int model_by_name(const std::string &text)
{
    int number = 0;
    const char *const end = text.data() + text.size();
    if (const auto [stop, error] = std::from_chars(text.data(), end, number); error == std::errc{} && stop == end) {
        if (number >= 1 && number < CFG_EQUIP_RECORDS) {
            return number;
        }
        throw Failure{"model " + text + ": models are numbered from 1 to " + std::to_string(CFG_EQUIP_RECORDS - 1)};
    }
    for (int model = 1; model < CFG_EQUIP_RECORDS; ++model) {
        if (::strcasecmp(Equip_tq5200[model].name, text.c_str()) == 0) {
            return model;
        }
    }
    throw Failure{"no model is named '" + text + "' (switchcfg equip models lists them)"};
}

std::vector<int> models_by_names(const std::string &list)
{
    std::vector<int> models;
    for (std::size_t first = 0; first <= list.size();) {
        const std::size_t end = std::min(list.find(',', first), list.size());
        models.push_back(model_by_name(list.substr(first, end - first)));
        first = end + 1;
    }
    return models;
}

std::string model_name_of(int model, int unit)
{
    char name[64];
    (void)cfg_equip_get_name_tq5200(model, static_cast<std::uint32_t>(unit), name, sizeof name);
    return name;
}

void check_unit(int unit)
{
    if (unit < 0 || unit > 7) {
        throw Failure{"unit " + std::to_string(unit) + ": units are numbered from 0 to 7"};
    }
}

std::string mac_text(const std::uint8_t *mac)
{
    char text[18];
    (void)std::snprintf(
        text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
    return text;
}

} // namespace switchcfg::tool
