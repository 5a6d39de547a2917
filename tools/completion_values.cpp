// SPDX-License-Identifier: Apache-2.0
#include "tools/command_line/completion_values.h"

#include "core/config_layout.h"
#include "core/status_layout.h"
#include "features/routing_command_rows.h"
#include "tools/attach.h"
#include "tools/env_access.h"
#include "tools/models.h"
#include "tools/trap_senders.h"

#include <filesystem>
#include <fstream>
#include <string_view>
#include <switchcfg/equip.h>
#include <switchcfg/locks.h>
#include <switchcfg/ports.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

using Values = std::vector<std::string>;

template<typename Fields>
Values names_of(const Fields &fields)
{
    Values names;
    for (const FieldInfo &field : fields) {
        names.emplace_back(field.name);
    }
    return names;
}

Values config_fields()
{
    return names_of(config_layout::fields);
}

Values status_fields()
{
    return names_of(status_layout::fields);
}

Values boot_variables()
{
    Values names;
    for (const auto &variable : shadow_access()->variables()) {
        names.push_back(variable.name);
    }
    return names;
}

Values traps()
{
    Values names{"all"};
    for (const TrapSender &sender : trap_senders()) {
        names.push_back(sender.name);
    }
    return names;
}

Values models()
{
    Values names;
    for (int model = 1; model < CFG_EQUIP_RECORDS; ++model) {
        names.push_back(model_name_of(model, 0));
    }
    return names;
}

Values units()
{
    attach();
    Values present;
    for (int unit = 0; unit < 8; ++unit) {
        if (status_get_hw_model_num(unit) > 0) {
            present.push_back(std::to_string(unit));
        }
    }
    return present;
}

Values ports()
{
    Values names;
    for (const std::string &unit : units()) {
        const int count = cfg_equip_get_max_num_ports_tq5200(std::stoi(unit));
        for (int port = 0; port < count; ++port) {
            names.push_back(unit + "/" + std::to_string(port));
        }
    }
    return names;
}

Values locks()
{
    Values names{"DC", "IPMC"};
    for (const cfg_lock &lock : cfg_lock_table) {
        names.emplace_back(lock.name);
    }
    return names;
}

Values stores()
{
    return {"ram", "internal-ram", "flash", "internal-flash"};
}

Values levels()
{
    return {"emerg", "alert", "crit", "err", "warning", "notice", "info", "debug"};
}

Values processes()
{
    Values names;
    for (const auto &entry : std::filesystem::directory_iterator{"/proc"}) {
        std::ifstream comm{entry.path() / "comm"};
        std::string name;
        if (std::getline(comm, name)) {
            names.push_back(name);
        }
    }
    return names;
}

Values routing_commands()
{
    Values names;
    for (const RoutingCommandRow &row : routing_command_rows) {
        names.emplace_back(row.name);
    }
    return names;
}

struct Rule {
    std::string_view path; // of the command, or of its parent
    std::string_view argument;
    Values (*values)();
};

constexpr Rule rules[] = {
    {"config", "field", config_fields},
    {"config", "prefix", config_fields},
    {"status", "field", status_fields},
    {"status", "prefix", status_fields},
    {"env", "name", boot_variables},
    {"trap enable", "name", traps},
    {"trap disable", "name", traps},
    {"log", "store", stores},
    {"log", "--level", levels},
    {"lock run", "name", locks},
    {"routing send", "command", routing_commands},
    {"ports", "unit", units},
    {"port", "port", ports},
    {"equip show", "unit", units},
    {"equip show", "--model", models},
    {"stack populate", "models", models},
    {"stack provision", "unit", units},
    {"stack provision", "model", models},
    {"stack remove", "unit", units},
    {"stack channel", "port", ports},
    {"ps", "name", processes},
    {"kill", "name", processes},
    {"pm", "name", processes},
};

bool has_argument(std::string_view names, std::string_view name)
{
    for (std::size_t at = 0; at < names.size();) {
        const std::size_t end = std::min(names.find(',', at), names.size());
        if (names.substr(at, end - at) == name) {
            return true;
        }
        at = end + 1;
    }
    return false;
}

} // namespace

std::vector<std::string> completion_values(
    const std::string &path, const std::string &positional, const std::string &option)
{
    for (const Rule &rule : rules) {
        const bool here = path == rule.path || path.starts_with(std::string{rule.path} + ' ');
        if (here && (has_argument(positional, rule.argument) || has_argument(option, rule.argument))) {
            try {
                return rule.values();
            } catch (const std::exception &) {
                return {}; // no switch, no live values
            }
        }
    }
    return {};
}

} // namespace switchcfg::tool
