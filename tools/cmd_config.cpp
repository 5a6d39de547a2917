// SPDX-License-Identifier: Apache-2.0
// switchcfg config: the running and the default configuration by field.
#include "core/config_layout.h"
#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/field_value.h"
#include "tools/lock_hold.h"
#include "tools/region_commands.h"

#include <cstring>
#include <memory>
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>

namespace switchcfg::tool {
namespace {

std::uint8_t *bytes_of(void *region)
{
    return static_cast<std::uint8_t *>(region);
}

void change_configuration(const std::function<void()> &change)
{
    const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
    change();
    if (cfg_data_sync() != 0) {
        throw system_failure(CFG_DEFAULT_PATH, "msync");
    }
}

// Runs of bytes that differ and lie in no named field: what only the daemons know.
std::vector<Element> unnamed_differences(const std::uint8_t *running, const std::uint8_t *standard)
{
    std::vector<bool> named(config_layout::size);
    for (const FieldInfo &field : config_layout::fields) {
        for (const Element &element : elements_of(field)) {
            std::fill_n(named.begin() + element.offset, element.size, true);
        }
    }
    std::vector<Element> runs;
    constexpr std::uint32_t page = 4096;
    for (std::uint32_t start = 0; start < config_layout::size; start += page) {
        const std::uint32_t end = std::min(start + page, config_layout::size);
        if (std::memcmp(running + start, standard + start, end - start) == 0) {
            continue;
        }
        for (std::uint32_t at = start; at < end; ++at) {
            if (running[at] == standard[at] || named[at]) {
                continue;
            }
            if (!runs.empty() && runs.back().offset + runs.back().size == at) {
                ++runs.back().size;
            } else {
                runs.push_back({"", at, 1, FieldType::bytes});
            }
        }
    }
    for (Element &run : runs) {
        run.name = "offset " + std::to_string(run.offset);
    }
    return runs;
}

void diff()
{
    attach();
    const std::uint8_t *const running = bytes_of(cfg_get_cfg());
    const std::uint8_t *const standard = bytes_of(cfg_get_default_cfg());
    Json json = Json::array();
    Table table{{"FIELD", "RUNNING", "DEFAULT"}};
    const auto compare = [&](const Element &element) {
        if (std::memcmp(running + element.offset, standard + element.offset, element.size) != 0) {
            table.add({element.name, format_value(running, element), format_value(standard, element)});
            json.push_back({{"field", element.name}, {"running", json_value(running, element)},
                {"default", json_value(standard, element)}});
        }
    };
    for (const FieldInfo &field : config_layout::fields) {
        for (const Element &element : elements_of(field)) {
            compare(element);
        }
    }
    for (const Element &run : unnamed_differences(running, standard)) {
        compare(run);
    }
    print(json, [&] {
        if (!json.empty()) {
            table.print();
        }
    });
}

} // namespace

void add_config_commands(CLI::App &app)
{
    auto *config = app.add_subcommand("config", "The running and the default configuration");
    config->require_subcommand(1);
    auto of_default = std::make_shared<bool>(false);
    config->add_flag("--default", *of_default, "Act on the default configuration instead of the running one");
    add_region_commands(*config, {
                                     .what = "configuration",
                                     .fields = config_layout::fields,
                                     .size = config_layout::size,
                                     .region =
                                         [of_default] {
                                             attach();
                                             return bytes_of(*of_default ? cfg_get_default_cfg() : cfg_get_cfg());
                                         },
                                     .change = change_configuration,
                                 });
    config->add_subcommand("diff", "Show where the running configuration differs from the default")->callback(diff);
}

} // namespace switchcfg::tool
