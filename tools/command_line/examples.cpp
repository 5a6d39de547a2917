// SPDX-License-Identifier: Apache-2.0
#include "tools/command_line/examples.h"

namespace switchcfg::tool {
namespace {

void add_below(
    CLI::App &parent, const std::string &path, const std::string &footer_of_all, std::span<const Example> examples)
{
    for (CLI::App *command : parent.get_subcommands({})) {
        if (command->get_name().empty()) { // options under a heading of their own
            continue;
        }
        const std::string own_path = path + ' ' + command->get_name();
        std::string text;
        for (const Example &example : examples) {
            const bool continues = example.line.size() > own_path.size() && example.line[own_path.size()] == ' ';
            if (example.line.starts_with(own_path) && (continues || example.line.size() == own_path.size())) {
                text += text.empty() ? "Examples:" : "";
                text.append("\n  ").append(example.line).append("\n      ").append(example.what);
            }
        }
        // The footer of the whole tool is inherited, and shown by it alone.
        std::string footer = command->get_footer() == footer_of_all ? "" : command->get_footer();
        add_below(*command, own_path, footer_of_all, examples);
        footer.append(footer.empty() || text.empty() ? "" : "\n\n").append(text);
        command->footer(footer);
    }
}

} // namespace

void add_examples(CLI::App &app, std::span<const Example> examples)
{
    add_below(app, app.get_name(), app.get_footer(), examples);
}

} // namespace switchcfg::tool
