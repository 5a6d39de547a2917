// SPDX-License-Identifier: Apache-2.0
#include "tools/command_line/long_output.h"

#include "tools/command_line/failure.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <switchcfg/pager.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace switchcfg::tool {
namespace {

LongOutput *current = nullptr;

// Rows of the terminal that standard output is; 0 when it is none.
int screen_rows()
{
    winsize size{};
    return ::isatty(STDOUT_FILENO) == 1 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_row : 0;
}

// The pattern as it has to stand between double quotes of a shell.
std::string inside_double_quotes(const std::string &pattern)
{
    std::string quoted;
    for (const char c : pattern) {
        if (c == '"' || c == '\\' || c == '$' || c == '`') {
            quoted += '\\';
        }
        quoted += c;
    }
    return quoted;
}

// For a word that goes into a command line as it stands.
bool is_plain(const std::string &word)
{
    constexpr std::string_view allowed = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789._-/:%+,@";
    return !word.empty() && word.front() != '-' && word.find_first_not_of(allowed) == std::string::npos;
}

} // namespace

void print_as_it_happens()
{
    if (current != nullptr) {
        current->release();
    }
}

LongOutput::LongOutput(CLI::App &app)
{
    current = this;
    auto *group = app.add_option_group("Output", "Where what is printed goes");
    group->add_flag("--no-pager", no_pager_, "Never stop at each screen, as a terminal does that is too small");
    auto *grep = group->add_option("--grep", pattern_, "Only lines that match this pattern of grep");
    auto *tail = group->add_option("--tail", lines_, "Only so many lines, the last ones")->check(CLI::PositiveNumber);
    group->add_option("--tftp", upload_, "Upload it instead of printing it: SERVER:NAME")
        ->excludes(grep)
        ->excludes(tail);
}

LongOutput::~LongOutput()
{
    current = nullptr;
    if (straight_ != nullptr) {
        std::cout.rdbuf(straight_);
    }
}

void LongOutput::begin()
{
    if (!upload_.empty()) {
        const std::size_t colon = upload_.rfind(':');
        if (colon != std::string::npos) {
            server_ = upload_.substr(0, colon);
            remote_file_ = upload_.substr(colon + 1);
        }
        if (!is_plain(server_) || !is_plain(remote_file_)) {
            throw Failure{"--tftp " + upload_ + ": SERVER:NAME expected, of letters, digits and ._-/:%+,@"};
        }
        if (::access("/bin/tftp", X_OK) != 0) {
            throw system_failure("--tftp", "/bin/tftp");
        }
    }
    if (!upload_.empty() || !pattern_.empty() || lines_ > 0 || (screen_rows() > 0 && !no_pager_)) {
        straight_ = std::cout.rdbuf(held_.rdbuf());
    }
}

void LongOutput::release()
{
    if (straight_ != nullptr) {
        std::cout.rdbuf(straight_);
        straight_ = nullptr;
        std::cout << held_.str() << std::flush;
    }
}

void LongOutput::finish()
{
    std::cout.flush();
    if (straight_ == nullptr) {
        return;
    }
    std::cout.rdbuf(straight_);
    straight_ = nullptr;
    const std::string text = held_.str();
    if (!text.empty()) {
        show(text);
    }
}

void LongOutput::show(const std::string &text) const
{
    const int rows = screen_rows();
    const bool paged = rows > 0 && !no_pager_;
    if (lines_ > 0) {
        pager_enable(paged ? 1 : 0);
        if (pattern_.empty()) {
            tail_printf_number(lines_, "%s", text.c_str());
        } else {
            tail_printf_number_grep(
                lines_, ("-e \"" + inside_double_quotes(pattern_) + "\"").c_str(), "%s", text.c_str());
        }
        return;
    }
    const bool fits = std::count(text.begin(), text.end(), '\n') < rows;
    if (upload_.empty() && pattern_.empty() && fits) {
        std::cout << text << std::flush;
        return;
    }
    pager_enable(1);
    pager_init();
    if (std::FILE *const stream = pager_get_out()) {
        (void)std::fwrite(text.data(), 1, text.size(), stream);
    }
    if (!upload_.empty()) {
        pager_finish_tftp(server_.c_str(), remote_file_.c_str());
    } else if (pattern_.empty()) {
        pager_finish();
    } else if (paged) {
        pager_finish_grep(inside_double_quotes(pattern_).c_str(), "-e");
    } else {
        pager_finish_grep_only(inside_double_quotes(pattern_).c_str(), "-e");
    }
}

} // namespace switchcfg::tool
