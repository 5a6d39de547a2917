// SPDX-License-Identifier: Apache-2.0
// switchcfg call FAMILY FUNCTION ARGS
#include "tools/call/commands.h"
#include "tools/call/payload.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <memory>
#include <switchcfg/error.h>

namespace switchcfg::tool {
namespace {

struct Call {
    std::string function;
    std::vector<std::uint32_t> arguments;
    std::string input;
    std::string output;
};

Json json_of(const Family &family, const google::protobuf::EnumValueDescriptor &function, const Outcome &outcome,
    const std::string &file)
{
    Json json{{"family", family.name}, {"function", function_name(family, function)}, {"number", function.number()},
        {"result", outcome.result}};
    if (outcome.has_output) {
        json["output"] = {{"length", outcome.output.size()}};
        if (!file.empty()) {
            json["output"]["file"] = file;
        } else if (is_text(outcome.output)) {
            json["output"]["text"] = outcome.output.c_str(); // without a terminator
        } else {
            json["output"]["hex"] = to_hex(outcome.output);
        }
    }
    return json;
}

void print_output(const std::string &bytes)
{
    if (!is_text(bytes)) {
        std::cout << hex_dump(bytes);
        return;
    }
    const std::string text = bytes.substr(0, bytes.find('\0'));
    std::cout << text << (text.ends_with('\n') ? "" : "\n");
}

void run_call(const Family &family, const Call &call)
{
    const auto &function = find_function(family, call.function);
    Arguments arguments{};
    std::ranges::copy(call.arguments, arguments.begin());
    const std::string input = call.input.empty() ? std::string{} : read_input(call.input);
    const Outcome outcome = family.call(function.number(), arguments, input);
    if (!call.output.empty() && outcome.has_output) {
        write_output(call.output, outcome.output);
    }
    if (call.output != "-") {
        print(json_of(family, function, outcome, call.output), [&] {
            std::cout << "result " << outcome.result << '\n';
            if (!call.output.empty() && outcome.has_output) {
                std::cout << outcome.output.size() << " bytes written to " << call.output << '\n';
            } else if (outcome.has_output) {
                print_output(outcome.output);
            }
        });
    }
    require_success(std::string{family.name} + ' ' + function_name(family, function), outcome);
}

} // namespace

void require_success(const std::string &what, const Outcome &outcome)
{
    if (outcome.result >= 0) {
        return;
    }
    constexpr int communication_error = -37;
    std::string why;
    if (outcome.result == communication_error) {
        why = outcome.why == 0           ? "the daemon does not serve it"
              : outcome.why == EHOSTDOWN ? "no switch-chip daemon, or it ended meanwhile"
              : outcome.why == ETIMEDOUT ? "no answer in time"
                                         : std::strerror(outcome.why);
    } else {
        const char *const text = cfg_strerror(outcome.result);
        why = text != nullptr ? text : "failed";
    }
    throw Failure{what + ": " + why + " (" + std::to_string(outcome.result) + ")"};
}

void add_function_commands(CLI::App &app)
{
    for (const Family &family : families()) {
        auto *command = app.add_subcommand(family.name, family.about);
        auto call = std::make_shared<Call>();
        command->add_option("function", call->function, "Its name or number: see switchcfg call list")->required();
        command->add_option("arguments", call->arguments, "Up to four numbers, 0 where there is none");
        command->add_option("--input", call->input, "A file, - for standard input, hexadecimal digits, or text:TEXT");
        command->add_option("--output", call->output, "Write the output to this file, - for standard output alone");
        command->callback([call, &family] {
            if (call->arguments.size() > Arguments{}.size()) {
                throw CLI::ValidationError{"arguments", "four at most"};
            }
            run_call(family, *call);
        });
    }
}

} // namespace switchcfg::tool
