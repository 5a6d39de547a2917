// SPDX-License-Identifier: Apache-2.0
// How a sub-command fails: one line on standard error that names the object, the call and the reason, and exit
// status 1.
#ifndef SWITCHCFG_TOOLS_COMMAND_LINE_FAILURE_H
#define SWITCHCFG_TOOLS_COMMAND_LINE_FAILURE_H

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace switchcfg::tool {

class Failure : public std::runtime_error {
  public:
    explicit Failure(const std::string &what) : std::runtime_error(what) {}
};

// The exit status of a command that the tool ran for the caller.
struct CommandStatus {
    int status;
};

// "OBJECT: CALL: reason of errno"
inline Failure system_failure(const std::string &object, const std::string &call)
{
    return Failure{object + ": " + call + ": " + std::strerror(errno)};
}

} // namespace switchcfg::tool

#endif
