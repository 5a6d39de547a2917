// SPDX-License-Identifier: Apache-2.0
// switchcfg env check: whether flash and backup are whole, and where shadow, flash and backup differ.
#include "tools/env_commands.h"

#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/env_image.h"
#include "tools/env_text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <switchcfg/bootenv.h>

namespace switchcfg::tool {
namespace {

using ImageBytes = std::vector<std::uint8_t>;

std::optional<ImageBytes> read_image(const std::string &path, bool is_flash)
{
    int size = 0;
    const std::unique_ptr<std::uint8_t, decltype(&std::free)> image{
        bootenv_read_env(path.c_str(), &size, is_flash ? 1 : 0), &std::free};
    if (!image) {
        return std::nullopt;
    }
    return ImageBytes(image.get(), image.get() + size);
}

std::string hexadecimal(std::uint32_t word)
{
    char text[16];
    (void)std::snprintf(text, sizeof text, "%08X", word);
    return text;
}

// One side's value and the other's for each name on which the two do not agree.
struct Difference {
    std::string name;
    std::optional<std::string> here;
    std::optional<std::string> there;
};
using Differences = std::vector<Difference>;

Differences differences(const Variables &here, const Variables &there)
{
    Differences found;
    const auto compare = [&](const std::string &name) {
        if (std::ranges::find(found, name, &Difference::name) == found.end() &&
            value_in(here, name) != value_in(there, name)) {
            found.push_back({name, value_in(here, name), value_in(there, name)});
        }
    };
    for (const Variables *side : {&here, &there}) {
        for (const Variable &variable : *side) {
            compare(variable.name);
        }
    }
    return found;
}

Json optional_text(const std::optional<std::string> &text)
{
    return text ? Json(*text) : Json();
}

Json as_json(const Differences &found, const char *here, const char *there)
{
    Json json = Json::array();
    for (const Difference &difference : found) {
        json.push_back({{"name", difference.name}, {here, optional_text(difference.here)},
            {there, optional_text(difference.there)}});
    }
    return json;
}

void print_differences(const Differences &found, const char *here, const char *there)
{
    if (found.empty()) {
        return;
    }
    const auto shown = [](const std::optional<std::string> &text) { return text ? escaped(*text) : "(not there)"; };
    Table table{{"VARIABLE", here, there}};
    for (const Difference &difference : found) {
        table.add({escaped(difference.name), shown(difference.here), shown(difference.there)});
    }
    table.print();
}

// What is known of one image, and whether anything is wrong with it.
struct Verdict {
    Json json;
    std::string text;
    bool good;
};

Verdict judge(const std::string &path, const std::optional<ImageBytes> &image, const std::string &when_missing)
{
    if (!image || image->size() < 4) {
        return {{{"file", path}, {"readable", false}}, path + ": " + when_missing, false};
    }
    const ImageContent content = take_apart(*image);
    const std::size_t used = bytes_of(content.variables);
    Json json{{"file", path}, {"readable", true}, {"bytes", content.size},
        {"crc", {{"stored", hexadecimal(content.crc_stored)}, {"computed", hexadecimal(content.crc_computed)},
                    {"holds", content.crc_holds()}}},
        {"has_end", content.has_end}, {"variables", content.variables.size()}, {"used", used},
        {"free", bytes_most - used}, {"other_texts", content.other_texts}};
    std::string text = path + ": " + std::to_string(content.size) + " bytes, " +
                       (content.crc_holds() ? "the CRC holds"
                                            : "the CRC is " + hexadecimal(content.crc_computed) + ", not " +
                                                  hexadecimal(content.crc_stored) + " as stored");
    if (content.has_end) {
        text += ", " + std::to_string(content.variables.size()) + " variables in " + std::to_string(used) + " of " +
                std::to_string(bytes_most) + " bytes";
    } else {
        text += ", no end: nothing can be loaded";
    }
    if (content.other_texts > 0) {
        text += ", " + std::to_string(content.other_texts) + " texts that are no variable";
    }
    return {std::move(json), std::move(text), content.crc_holds() && content.has_end};
}

Variables variables_of(const std::optional<ImageBytes> &image)
{
    return image && image->size() >= 4 ? take_apart(*image).variables : Variables{};
}

} // namespace

void check_image(const std::string &path)
{
    const std::optional<ImageBytes> image = read_image(path, false);
    const Verdict verdict = judge(path, image, "it cannot be read, or is empty");
    if (!image) {
        throw Failure{verdict.text};
    }
    print(verdict.json, [&] { std::cout << verdict.text << '\n'; });
    if (!verdict.good) {
        throw CommandStatus{1};
    }
}

void check_switch(const Variables &shadow)
{
    const std::string flash_path = "/dev/flash_env";
    const std::string backup_path = "/mnt/flash/bkp/env";
    const std::optional<ImageBytes> flash = read_image(flash_path, true);
    const std::optional<ImageBytes> backup = read_image(backup_path, false);
    Verdict of_flash = judge(flash_path, flash, "it cannot be read");
    Verdict of_backup = judge(backup_path, backup, "there is no backup");
    const Differences unsaved = differences(shadow, variables_of(flash));
    const Differences behind = differences(variables_of(flash), variables_of(backup));

    of_flash.json["unsaved"] = as_json(unsaved, "shadow", "flash");
    const bool in_step = flash && flash == backup;
    of_backup.json["in_step"] = in_step;
    if (flash && backup && !in_step) {
        const auto place = std::ranges::mismatch(*flash, *backup).in1 - flash->begin();
        of_backup.json["first_difference"] = place;
        of_backup.text += ", differs from flash from byte " + std::to_string(place) + " on";
    } else if (in_step) {
        of_backup.text += ", in step with flash";
    }
    of_backup.json["differences"] = as_json(behind, "flash", "backup");

    print({{"flash", of_flash.json}, {"backup", of_backup.json}}, [&] {
        std::cout << of_flash.text << '\n';
        if (!unsaved.empty()) {
            std::cout << "Not saved yet:\n";
            print_differences(unsaved, "SHADOW", "FLASH");
        }
        std::cout << of_backup.text << '\n';
        if (backup) {
            print_differences(behind, "FLASH", "BACKUP");
        }
    });
    if (!of_flash.good || !of_backup.good || !in_step) {
        throw CommandStatus{1};
    }
}

} // namespace switchcfg::tool
