// SPDX-License-Identifier: Apache-2.0
// How the tool prints data: a table for people, or JSON for programs with --json.
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_OUTPUT_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_OUTPUT_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace switchcfg::tool {

using Json = nlohmann::ordered_json;

// Set by --json, which every sub-command takes.
bool json_wanted();
void want_json(bool wanted);

// Colours only for people: standard output is a terminal and NO_COLOR is not set.
bool colour_wanted();

// Columns as wide as their widest cell, two blanks between them, nothing behind the last.
class Table {
  public:
    explicit Table(std::vector<std::string> header) : rows_{std::move(header)} {}
    void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    void print() const;

  private:
    std::vector<std::vector<std::string>> rows_;
};

// Prints `json` under --json, else calls `print_text`.
template<typename PrintText>
void print(const Json &json, PrintText &&print_text);

void print_json(const Json &json);

template<typename PrintText>
void print(const Json &json, PrintText &&print_text)
{
    if (json_wanted()) {
        print_json(json);
    } else {
        print_text();
    }
}

} // namespace switchcfg::tool

#endif
