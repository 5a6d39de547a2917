// SPDX-License-Identifier: Apache-2.0
#include "tools/command_line/manual.h"

#include "tools/command_line/failure.h"

#include <algorithm>
#include <fstream>
#include <sstream>

namespace switchcfg::tool {
namespace {

// Text that the formatter takes as it stands.
std::string plain(const std::string &text)
{
    std::string out;
    bool line_start = true;
    for (const char c : text) {
        if (line_start && (c == '.' || c == '\'')) {
            out += "\\&";
        }
        line_start = c == '\n';
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else {
            out += c;
        }
    }
    return out;
}

std::string with_line_end(std::string text)
{
    if (text.empty() || text.back() != '\n') {
        text += '\n';
    }
    return text;
}

std::string synopsis_of(const CLI::App &command, const std::string &path)
{
    std::string line = ".B " + plain(path) + "\n";
    for (const CLI::Option *option : command.get_options()) {
        if (option->get_positional()) {
            const std::string name = plain(option->get_name());
            line += option->get_required() ? ".I " + name + "\n" : ".RI [ " + name + " ]\n";
        }
    }
    return line;
}

void write_options(std::ostream &page, const CLI::App &command)
{
    for (const CLI::Option *option : command.get_options()) {
        if (option->get_lnames().empty() && option->get_snames().empty() && !option->get_positional()) {
            continue;
        }
        page << ".TP\n.B " << plain(option->get_name(option->get_positional(), true));
        const std::string value = option->get_type_name();
        if (option->get_items_expected_max() > 0 && !value.empty() && !option->get_positional()) {
            page << " \\fI" << plain(value) << "\\fR";
        }
        page << '\n' << with_line_end(plain(option->get_description().empty() ? "\\&" : option->get_description()));
        if (!option->get_default_str().empty()) {
            page << ".br\nDefault: " << plain(option->get_default_str()) << ".\n";
        }
    }
}

void write_commands(std::ostream &page, const CLI::App &command, const std::string &path)
{
    for (const CLI::App *sub : command.get_subcommands({})) {
        if (sub->get_name().empty()) {
            write_options(page, *sub);
            continue;
        }
        page << ".SS " << plain(path + ' ' + sub->get_name()) << '\n' << with_line_end(plain(sub->get_description()));
        write_options(page, *sub);
        write_commands(page, *sub, path + ' ' + sub->get_name());
    }
}

void write_footer(std::ostream &page, const CLI::App &command)
{
    std::istringstream footer{command.get_footer()};
    if (command.get_footer().empty()) {
        return;
    }
    page << ".SH NOTES\n.nf\n";
    for (std::string line; std::getline(footer, line);) {
        page << plain(line) << '\n';
    }
    page << ".fi\n";
}

void write_page(
    const CLI::App &command, const std::string &path, const std::string &folder, const std::string &exit_status)
{
    std::string title = path;
    std::ranges::replace(title, ' ', '-');
    const std::string file = folder + '/' + title + ".1";
    std::ofstream page{file};
    page << ".TH " << title << " 1 \"\" libswitchcfg\n.SH NAME\n"
         << plain(title) << " \\- " << plain(command.get_description()) << "\n.SH SYNOPSIS\n"
         << synopsis_of(command, path) << ".SH OPTIONS\n";
    write_options(page, command);
    if (path.find(' ') == std::string::npos) {
        page << ".SH COMMANDS\n";
        for (const CLI::App *sub : command.get_subcommands({})) {
            if (sub->get_name().empty()) {
                write_options(page, *sub);
            } else {
                page << ".TP\n.BR " << title << '\\' << '-' << sub->get_name() << " (1)\n"
                     << with_line_end(plain(sub->get_description()));
            }
        }
    } else if (!command.get_subcommands({}).empty()) {
        page << ".SH COMMANDS\n";
        write_commands(page, command, path);
    }
    write_footer(page, command);
    page << ".SH EXIT STATUS\n"
         << with_line_end(plain(exit_status)) << ".SH SEE ALSO\n.BR switchcfg (1),\n.BR switchlab (1)\n";
    page.close();
    if (!page) {
        throw system_failure(file, "cannot write");
    }
}

} // namespace

void write_manual(const CLI::App &app, const std::string &folder, const std::string &exit_status)
{
    write_page(app, app.get_name(), folder, exit_status);
    for (const CLI::App *command : app.get_subcommands({})) {
        if (!command->get_name().empty()) {
            write_page(*command, app.get_name() + ' ' + command->get_name(), folder, exit_status);
        }
    }
}

} // namespace switchcfg::tool
