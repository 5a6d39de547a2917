// SPDX-License-Identifier: Apache-2.0
#include "tools/region_commands.h"

#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/field_value.h"

#include <iostream>
#include <memory>
#include <optional>

namespace switchcfg::tool {
namespace {

// What get and set act on: a field by name, or raw bytes by offset and type.
struct Target {
    std::string name;
    std::optional<std::uint32_t> offset;
    std::string type;
};

void add_target_options(CLI::App &command, Target &target)
{
    command.add_option("field", target.name, "Field, or one element of it: name[3], name[1][2]");
    auto *offset = command.add_option("--offset", target.offset, "Raw access: byte offset");
    command.add_option("--type", target.type, "Raw access: u8 i8 u16 i16 u32 i32 u64 bytes[N] text[N]")->needs(offset);
    offset->needs(command.get_option("--type"));
}

std::vector<Element> resolve(const RegionAccess &access, const Target &target)
{
    if (!target.offset) {
        if (target.name.empty()) {
            throw Failure{"name a field, or give --offset and --type"};
        }
        return elements_by_name(access.fields, target.name);
    }
    if (!target.name.empty()) {
        throw Failure{"name a field or give --offset, not both"};
    }
    Element raw{"offset " + std::to_string(*target.offset), *target.offset, 0, {}};
    raw.type = type_by_name(target.type, raw.size);
    if (raw.size > access.size || raw.offset > access.size - raw.size) {
        throw Failure{raw.name + ": " + std::to_string(raw.size) + " bytes there lie outside the " + access.what +
                      ", which has " + std::to_string(access.size)};
    }
    return {raw};
}

void print_fields(const RegionAccess &access)
{
    Json json = Json::array();
    Table table{{"FIELD", "TYPE", "OFFSET", "COUNT", "MEANING"}};
    for (const FieldInfo &field : access.fields) {
        std::string count;
        Json dimensions = Json::array();
        for (const Dimension &dimension : field.dimensions) {
            if (dimension.count > 1) {
                count += (count.empty() ? "" : " x ") + std::to_string(dimension.count);
                dimensions.push_back({{"count", dimension.count}, {"stride", dimension.stride}});
            }
        }
        const std::string type = type_name(field.type, field.size);
        table.add({field.name, type, std::to_string(field.offset), count, field.about});
        json.push_back({{"name", field.name}, {"type", type}, {"offset", field.offset}, {"dimensions", dimensions},
            {"meaning", field.about}});
    }
    print(json, [&] { table.print(); });
}

// Records that are longer than a line: a list shows their beginning, and only where something is set.
constexpr std::uint32_t long_record = 64;

enum class Values { whole, abridged };

void print_values(const std::uint8_t *region, const std::vector<Element> &elements, Values how = Values::whole)
{
    Json json = Json::object();
    Table table{{"FIELD", "VALUE"}};
    for (const Element &element : elements) {
        json[element.name] = json_value(region, element);
        std::string value = format_value(region, element);
        constexpr std::size_t shown = std::size_t{2} * long_record;
        if (how == Values::abridged && value.size() > shown) {
            value.replace(shown, std::string::npos, "... (" + std::to_string(element.size) + " bytes)");
        }
        table.add({element.name, std::move(value)});
    }
    print(json, [&] { table.print(); });
}

// Scalars always, elements of repeated fields only where something is set, unless all are asked for.
void list(const RegionAccess &access, const std::string &prefix, bool all)
{
    const std::uint8_t *const region = access.region();
    std::vector<Element> shown;
    for (const FieldInfo &field : access.fields) {
        if (!std::string_view{field.name}.starts_with(prefix)) {
            continue;
        }
        for (Element &element : elements_of(field)) {
            const bool scalar = field.count() == 1 && field.size <= long_record;
            if (all || scalar || !is_zero(region, element)) {
                shown.push_back(std::move(element));
            }
        }
    }
    print_values(region, shown, Values::abridged);
}

void get(const RegionAccess &access, const Target &target)
{
    const std::vector<Element> elements = resolve(access, target);
    const std::uint8_t *const region = access.region();
    if (elements.size() == 1 && !json_wanted()) {
        std::cout << format_value(region, elements.front()) << '\n';
        return;
    }
    print_values(region, elements);
}

void set(const RegionAccess &access, const Target &target, const std::string &value)
{
    const std::vector<Element> elements = resolve(access, target);
    if (elements.size() != 1) {
        throw Failure{"'" + target.name + "' has " + std::to_string(elements.size()) + " elements; say which, as in " +
                      elements.front().name};
    }
    std::uint8_t *const region = access.region();
    access.change([&] { set_value(region, elements.front(), value); });
}

} // namespace

void add_region_commands(CLI::App &parent, const RegionAccess &access)
{
    parent.add_subcommand("fields", "List the named fields: type, place, meaning")->callback([access] {
        print_fields(access);
    });

    auto *list_command = parent.add_subcommand("list", "Print the values that are set");
    auto prefix = std::make_shared<std::string>();
    auto all = std::make_shared<bool>(false);
    list_command->add_option("prefix", *prefix, "Only fields whose name begins so");
    list_command->add_flag("--all", *all, "Also the elements of repeated fields that are zero");
    list_command->callback([=] { list(access, *prefix, *all); });

    auto *get_command = parent.add_subcommand("get", "Print one field");
    auto wanted = std::make_shared<Target>();
    add_target_options(*get_command, *wanted);
    get_command->callback([=] { get(access, *wanted); });

    auto *set_command = parent.add_subcommand("set", "Change one field");
    auto changed = std::make_shared<Target>();
    auto value = std::make_shared<std::string>();
    add_target_options(*set_command, *changed);
    set_command->add_option("value", *value, "New value: number, text, or hexadecimal bytes");
    set_command->callback([=] {
        // With --offset the only positional argument is the value.
        if (changed->offset && value->empty()) {
            std::swap(changed->name, *value);
        }
        set(access, *changed, *value);
    });
}

} // namespace switchcfg::tool
