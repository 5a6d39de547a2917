// SPDX-License-Identifier: Apache-2.0
// switchcfg log: messages to the logging daemon, and its stores.
#include "tools/command_line/failure.h"
#include "tools/command_line/long_output.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"
#include "tools/log_names.h"
#include "tools/log_stores.h"

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <switchcfg/log.h>
#include <unistd.h>
#include <vector>

namespace switchcfg::tool {
namespace {

struct SendRequest {
    std::string facility = "user";
    std::string category;
    std::string level = "notice";
    std::vector<std::string> words;
};

void send(const SendRequest &request)
{
    std::string text;
    for (const std::string &word : request.words) {
        text += (text.empty() ? "" : " ") + word;
    }
    const int level = log_level_by_name(request.level);
    const int result = request.category.empty()
                           ? log_send_fac(log_facility_by_name(request.facility), level, "%s", text.c_str())
                           : log_send_cat(request.category.c_str(), level, "%s", text.c_str());
    if (result != LOGGERS_RET_OK) {
        throw Failure{std::string{LOG_SOCKET_PATH} + ": the message was not handed over: " + log_result_text(result) +
                      (result == LOGGERS_ERR_SERVER_SEND ? std::string{"; it is in "} + LOG_FALLBACK_PATH : "")};
    }
}

std::vector<std::string> lines_with(const std::string &text, const std::string &match)
{
    std::vector<std::string> lines;
    std::istringstream stream{text};
    for (std::string line; std::getline(stream, line);) {
        if (line.find(match) != std::string::npos) {
            lines.push_back(line);
        }
    }
    return lines;
}

void show(const std::string &store, const std::string &match)
{
    const std::vector<std::string> lines = lines_with(fetch_store(store), match);
    print(Json{{"store", log_store_by_name(store)}, {"lines", lines}}, [&] {
        for (const std::string &line : lines) {
            std::cout << line << '\n';
        }
    });
}

// The lines that are new since the text before. A store that dropped its oldest lines still holds the last ones.
std::string_view news(std::string_view before, std::string_view now)
{
    if (before.empty()) {
        return now;
    }
    constexpr std::size_t enough = 400;
    const std::string_view last = before.substr(before.size() - std::min(before.size(), enough));
    const std::size_t seen = now.rfind(last);
    return seen == std::string_view::npos ? now : now.substr(seen + last.size());
}

void follow(const std::string &store, double interval_s, unsigned count)
{
    std::string before = fetch_store(store);
    print_as_it_happens();
    for (unsigned printed = 0; count == 0 || printed < count;) {
        (void)::usleep(static_cast<useconds_t>(interval_s * 1e6));
        std::string now = fetch_store(store);
        for (const std::string &line : lines_with(std::string{news(before, now)}, "")) {
            if (json_wanted()) {
                std::cout << Json{{"line", line}}.dump(-1, ' ', false, Json::error_handler_t::replace) << std::endl;
            } else {
                std::cout << line << std::endl;
            }
            if (++printed == count) {
                break;
            }
        }
        before = std::move(now);
    }
}

void list_names(int first, int last, int step, const char *(*name_of)(int))
{
    Json json = Json::array();
    Table table{{"CODE", "NAME"}};
    for (int code = first; code != last + step; code += step) {
        json.push_back({{"code", code}, {"name", name_of(code)}});
        table.add({std::to_string(code), name_of(code)});
    }
    print(json, [&] { table.print(); });
}

void list_errors()
{
    list_names(LOGGERS_ERR_GENERIC, LOGGERS_ERR_CONFIGURATION_GET, -1, log_get_error_string);
}

void list_commands()
{
    list_names(LOGGERS_CMD_HELP, LOGGERS_CMD_COUNT - 1, 1, log_get_command_string);
}

void add_log_send(CLI::App &log)
{
    auto *command = log.add_subcommand("send", "Hand one message to the logging daemon");
    auto request = std::make_shared<SendRequest>();
    auto *facility =
        command->add_option("--facility", request->facility, "daemon, local0, ... or a number")->capture_default_str();
    command->add_option("--category", request->category, "Send by category instead")->excludes(facility);
    command->add_option("--level", request->level, "emerg, alert, crit, err, warning, notice, info, debug or a number")
        ->capture_default_str();
    command->add_option("text", request->words, "The message; words are joined with blanks")->required();
    command->callback([=] { send(*request); });
}

} // namespace

void add_log_commands(CLI::App &app)
{
    auto *log = app.add_subcommand("log", "Messages to the logging daemon, and its stores");
    log->require_subcommand(1);
    log->footer("STORE is ram, internal-ram, flash, internal-flash, or the name of any other destination.");
    add_log_send(*log);

    auto store = std::make_shared<std::string>();
    auto match = std::make_shared<std::string>();
    auto *show_command = log->add_subcommand("show", "The text of a store, paged on a terminal");
    show_command->add_option("store", *store, "STORE")->required();
    show_command->add_option("--match", *match, "Only lines that contain this text");
    show_command->callback([=] { show(*store, *match); });

    auto *clear_command = log->add_subcommand("clear", "Empty a store");
    clear_command->add_option("store", *store, "STORE")->required();
    clear_command->callback([=] { clear_store(*store); });

    auto path = std::make_shared<std::string>();
    auto *save_command = log->add_subcommand("save", "Write the text of a store to a file");
    save_command->add_option("store", *store, "STORE")->required();
    save_command->add_option("file", *path, "FILE, created or replaced")->required();
    save_command->callback([=] { save_store(*store, *path); });

    auto interval_s = std::make_shared<double>(0.5);
    auto count = std::make_shared<unsigned>(0);
    auto *follow_command = log->add_subcommand("follow", "Print the lines that come into a store");
    follow_command->add_option("store", *store, "STORE")->required();
    follow_command->add_option("--interval", *interval_s, "Seconds between two looks")
        ->check(CLI::Range(0.01, 3600.0))
        ->capture_default_str();
    follow_command->add_option("--count", *count, "End after so many lines");
    follow_command->callback([=] { follow(*store, *interval_s, *count); });

    log->add_subcommand("errors", "The results of the logging interface by name")->callback(list_errors);
    log->add_subcommand("commands", "The commands of the logging daemon by name")->callback(list_commands);
}

} // namespace switchcfg::tool
