// SPDX-License-Identifier: Apache-2.0
#include "tools/command_line/completion.h"

#include "tools/command_line/completion_values.h"

#include <algorithm>

namespace switchcfg::tool {
namespace {

// Where the words typed so far lead.
struct Place {
    const CLI::App *command;
    std::string path;                  // "config get"
    const CLI::Option *open = nullptr; // an option that still wants its value
    std::size_t positionals = 0;       // how many are given
};

const CLI::Option *option_named(const CLI::App *command, const std::string &word)
{
    for (; command != nullptr; command = command->get_parent()) {
        if (const CLI::Option *const option = command->get_option_no_throw(word)) {
            return option;
        }
    }
    return nullptr;
}

// Positional arguments in their order.
std::vector<const CLI::Option *> positionals_of(const CLI::App &command)
{
    std::vector<const CLI::Option *> found;
    for (const CLI::Option *option : command.get_options()) {
        if (option->get_positional()) {
            found.push_back(option);
        }
    }
    return found;
}

const CLI::App *command_named(const CLI::App &parent, const std::string &word)
{
    for (const CLI::App *command : parent.get_subcommands({})) {
        if (!word.empty() && command->check_name(word)) {
            return command;
        }
    }
    return nullptr;
}

void follow(Place &place, const std::string &word)
{
    if (place.open != nullptr) {
        place.open = nullptr;
    } else if (word.starts_with("-") && word != "-") {
        const CLI::Option *const option = option_named(place.command, word);
        if (option != nullptr && option->get_items_expected_max() > 0) {
            place.open = option;
        }
    } else if (const CLI::App *const next = command_named(*place.command, word)) {
        place.command = next;
        place.path += (place.path.empty() ? "" : " ") + next->get_name();
        place.positionals = 0;
    } else {
        ++place.positionals;
    }
}

void offer_options(const CLI::App *command, std::vector<std::string> &offered)
{
    for (; command != nullptr; command = command->get_parent()) {
        for (const CLI::Option *option : command->get_options()) {
            for (const std::string &name : option->get_lnames()) {
                offered.push_back("--" + name);
            }
        }
        for (const CLI::App *group : command->get_subcommands({})) {
            if (group->get_name().empty()) { // options under a heading of their own
                for (const CLI::Option *option : group->get_options()) {
                    for (const std::string &name : option->get_lnames()) {
                        offered.push_back("--" + name);
                    }
                }
            }
        }
    }
}

void offer_values(const Place &place, const CLI::Option &option, std::vector<std::string> &offered)
{
    const std::vector<std::string> values =
        completion_values(place.path, option.get_name(false, true), option.get_name());
    offered.insert(offered.end(), values.begin(), values.end());
}

} // namespace

std::vector<std::string> completions(const CLI::App &app, std::span<const std::string> words)
{
    Place place{&app, {}};
    const std::string partial = words.empty() ? std::string{} : words.back();
    for (const std::string &word : words.first(words.empty() ? 0 : words.size() - 1)) {
        follow(place, word);
    }
    std::vector<std::string> offered;
    if (place.open != nullptr) {
        offer_values(place, *place.open, offered);
    } else if (partial.starts_with("-")) {
        offer_options(place.command, offered);
    } else {
        for (const CLI::App *command : place.command->get_subcommands({})) {
            if (!command->get_name().empty()) {
                offered.push_back(command->get_name());
            }
        }
        const std::vector<const CLI::Option *> positionals = positionals_of(*place.command);
        // The last one may take many.
        if (place.positionals < positionals.size()) {
            offer_values(place, *positionals[place.positionals], offered);
        } else if (!positionals.empty() && positionals.back()->get_items_expected_max() > 1) {
            offer_values(place, *positionals.back(), offered);
        }
    }
    std::erase_if(offered, [&](const std::string &word) { return !word.starts_with(partial); });
    std::ranges::sort(offered);
    offered.erase(std::unique(offered.begin(), offered.end()), offered.end());
    return offered;
}

} // namespace switchcfg::tool
