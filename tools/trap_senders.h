// SPDX-License-Identifier: Apache-2.0
// Every trap sender by name, with its arguments: the one list that commands, help and tests go by.
#ifndef SWITCHCFG_TOOLS_TRAP_SENDERS_H
#define SWITCHCFG_TOOLS_TRAP_SENDERS_H

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace switchcfg::tool {

enum class TrapArgument : std::uint8_t { integer, unsigned_integer, text, mac, link };

struct TrapSender {
    std::string name; // of the function, without "send_trap_"
    std::vector<int> ids;
    int port_byte; // of the port's record of flags, -1 when it has none
    std::vector<std::string> arguments;
    std::vector<TrapArgument> types;
    std::function<int(std::span<const std::string>)> call; // throws std::invalid_argument; takes as many as `arguments`
};

const std::vector<TrapSender> &trap_senders();

} // namespace switchcfg::tool

#endif
