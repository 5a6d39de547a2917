// SPDX-License-Identifier: Apache-2.0
// Bytes that go into a call and come out of one.
#ifndef SWITCHCFG_TOOLS_CALL_PAYLOAD_H
#define SWITCHCFG_TOOLS_CALL_PAYLOAD_H

#include <string>

namespace switchcfg::tool {

// A file ("-": standard input), "text:" and a text, or bytes in hexadecimal; throws Failure.
std::string read_input(const std::string &from);

// To a file, or standard output for "-"; throws Failure.
void write_output(const std::string &to, const std::string &bytes);

// Whether people can read it; one zero byte at the end is allowed.
bool is_text(const std::string &bytes);

std::string to_hex(const std::string &bytes);

// Sixteen bytes a line, with their characters.
std::string hex_dump(const std::string &bytes);

} // namespace switchcfg::tool

#endif
