// SPDX-License-Identifier: Apache-2.0
// switchcfg error: what a code means, ours or one of the numberings that translate into ours.
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"

#include <memory>
#include <string>
#include <switchcfg/error.h>
#include <vector>

namespace switchcfg::tool {
namespace {

struct Numbering {
    const char *flag;
    const char *about;
    int (*translate)(int code);
    int first; // the range that --list goes through
    int last;
};

constexpr Numbering own{"", "", [](int code) { return code; }, -1, -486};
constexpr Numbering foreign[] = {
    {"--bcm", "Codes of the switch chip's driver", cfg_error_from_bcm, 0, -18},
    {"--stp", "Codes of the spanning-tree engine", cfg_error_from_stp, 0, 32},
    {"--psm", "Codes of the power-supply manager", cfg_error_from_psm, -1001, -1006},
    {"--pm", "Results of the process manager", cfg_pmg_err_code_translate, 0, -7},
};

struct ErrorQuestion {
    const Numbering *numbering = &own;
    std::vector<int> codes;
    bool list = false;
};

// A message on one line of a table: some have line breaks.
std::string on_one_line(const char *message)
{
    std::string line;
    for (; *message != '\0'; ++message) {
        switch (*message) {
        case '\r':
            line += "\\r";
            break;
        case '\n':
            line += "\\n";
            break;
        default:
            line += *message;
        }
    }
    return line;
}

void show(const ErrorQuestion &request)
{
    const bool translated = request.numbering != &own;
    Json json = Json::array();
    Table table{translated ? std::vector<std::string>{"THEIRS", "CODE", "MESSAGE"}
                           : std::vector<std::string>{"CODE", "MESSAGE"}};
    std::string unknown;

    const auto add = [&](int given) {
        const int code = request.numbering->translate(given);
        const char *const message = cfg_strerror(code);
        if (message == nullptr && code != 0) {
            if (!request.list) {
                unknown += (unknown.empty() ? "" : ", ") + std::to_string(code);
            }
            return;
        }
        std::vector<std::string> cells{std::to_string(code), message != nullptr ? on_one_line(message) : "(success)"};
        Json entry = Json::object();
        if (translated) {
            cells.insert(cells.begin(), std::to_string(given));
            entry["theirs"] = given;
        }
        entry["code"] = code;
        entry["message"] = message != nullptr ? Json(message) : Json(nullptr);
        table.add(std::move(cells));
        json.push_back(std::move(entry));
    };
    if (request.list) {
        const int step = request.numbering->first < request.numbering->last ? 1 : -1;
        for (int code = request.numbering->first; code != request.numbering->last + step; code += step) {
            add(code);
        }
    } else {
        for (const int code : request.codes) {
            add(code);
        }
    }
    if (!json.empty()) {
        print(json, [&] { table.print(); });
    }
    if (!unknown.empty()) {
        throw Failure{"not assigned to any error: " + unknown};
    }
}

} // namespace

void add_error_command(CLI::App &app)
{
    auto *command = app.add_subcommand("error", "What error codes mean");
    auto request = std::make_shared<ErrorQuestion>();
    auto *codes = command->add_option("codes", request->codes, "Codes as functions return them, such as -17");
    auto *list = command->add_flag("--list", request->list, "Every code of the numbering");
    codes->excludes(list);
    auto *numberings = command->add_option_group("numbering", "Whose codes they are, when not ours");
    numberings->require_option(0, 1);
    for (const Numbering &numbering : foreign) {
        numberings->add_flag_callback(
            numbering.flag, [request, &numbering] { request->numbering = &numbering; }, numbering.about);
    }
    command->callback([request] {
        if (request->codes.empty() && !request->list) {
            throw CLI::RequiredError{"a code, or --list,"};
        }
        show(*request);
    });
}

} // namespace switchcfg::tool
