// SPDX-License-Identifier: Apache-2.0
// switchcfg env fbmp: the feature bitmap, decoded and changed by name.
#include "core/status_layout.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/env_commands.h"
#include "tools/lock_hold.h"

#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <iostream>
#include <switchcfg/bootenv.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

struct Feature {
    const char *name;
    std::uint64_t bits;
    const char *about;
};

constexpr Feature features[] = {
    {"l3", BOOTENV_FEATURE_L3, "routing"},
    {"bit1", BOOTENV_FEATURE_BIT1, "a further feature, whatever the hardware"},
    {"mpls", BOOTENV_FEATURE_MPLS, "MPLS, together with l3"},
    {"poe", BOOTENV_FEATURE_POE, "power over Ethernet"},
};

std::uint64_t bits_named(const std::vector<std::string> &names)
{
    std::uint64_t bits = 0;
    for (const std::string &name : names) {
        const auto *const feature = std::ranges::find(features, name, &Feature::name);
        if (feature == std::end(features)) {
            throw Failure{"no feature is named '" + name + "': one of " + feature_names()};
        }
        bits |= feature->bits;
    }
    return bits;
}

// 0 where the variable is missing.
std::uint64_t bitmap_of(const Variables &variables)
{
    const std::string text = value_in(variables, "FBMP").value_or("0");
    std::uint64_t bitmap = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bitmap);
    if (error != std::errc{} || end != text.data() + text.size()) {
        throw Failure{"FBMP: '" + text + "' is no decimal number of 64 bits"};
    }
    return bitmap;
}

std::string hexadecimal(std::uint64_t bitmap)
{
    char text[24];
    (void)std::snprintf(text, sizeof text, "0x%" PRIX64, bitmap);
    return text;
}

std::string in_words(std::uint64_t bitmap, std::uint64_t bits)
{
    if ((bitmap & bits) == 0) {
        return "off";
    }
    return (bitmap & bits) == bits ? "on" : hexadecimal(bitmap & bits) + " of " + hexadecimal(bits);
}

std::uint64_t after(std::uint64_t bitmap, const FeatureChange &change)
{
    const std::uint64_t on = bits_named(change.on);
    const std::uint64_t off = bits_named(change.off);
    if ((on & off) != 0) {
        throw Failure{"a feature cannot go on and off at once"};
    }
    return (bitmap | on) & ~off;
}

} // namespace

std::string feature_names()
{
    std::string names;
    for (const Feature &feature : features) {
        names += (names.empty() ? "" : " ") + std::string{feature.name};
    }
    return names;
}

void print_features(const Variables &variables, bool with_status)
{
    const std::uint64_t stored = bitmap_of(variables);
    auto *const region = with_status ? static_cast<std::uint8_t *>(get_status()) : nullptr;
    const std::uint32_t applied = region != nullptr ? load(region, status_layout::feature_applied) : 0;
    Json json{{"stored", stored}};
    std::vector<std::string> header{"FEATURE", "STORED", "MEANING"};
    if (region != nullptr) {
        json["applied"] = applied;
        header.insert(header.begin() + 2, "AT LAST START");
    }
    Table table{header};
    for (const Feature &feature : features) {
        std::vector<std::string> row{feature.name, in_words(stored, feature.bits), feature.about};
        Json states{{"stored", stored & feature.bits}};
        if (region != nullptr) {
            row.insert(row.begin() + 2, in_words(applied, feature.bits));
            states["applied"] = applied & feature.bits;
        }
        table.add(row);
        json["features"][feature.name] = states;
    }
    print(json, [&] {
        std::cout << "FBMP=" << stored << " (" << hexadecimal(stored) << ")\n";
        table.print();
    });
}

void change_features_of_image(EnvironmentAccess &image, const FeatureChange &change)
{
    image.change({{"FBMP", std::to_string(after(bitmap_of(image.variables()), change))}});
}

void change_features_of_switch(EnvironmentAccess &shadow, const FeatureChange &change)
{
    std::uint64_t bitmap = after(bitmap_of(shadow.variables()), change);
    if (!change.anyway) {
        const std::uint64_t asked = bitmap & bits_named(change.on);
        cfg_bootenv_check_chip_capability(0, &bitmap);
        if ((bitmap & asked) != asked) {
            throw Failure{"nothing is changed"};
        }
    }
    const LockHold hold{cfg_lock_table[CFG_LOCK_CFG]};
    expect_done(bootenv_write_fbmp(static_cast<std::uint32_t>(bitmap >> 32), static_cast<std::uint32_t>(bitmap)),
        "/dev/flash_env", "the feature bitmap cannot be saved");
}

} // namespace switchcfg::tool
