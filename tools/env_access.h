// SPDX-License-Identifier: Apache-2.0
// What the sub-commands of `switchcfg env` act on: the shadow that all processes share, or an image file.
#ifndef SWITCHCFG_TOOLS_ENV_ACCESS_H
#define SWITCHCFG_TOOLS_ENV_ACCESS_H

#include "tools/env_image.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace switchcfg::tool {

struct Change {
    std::string name;
    std::optional<std::string> value; // nothing removes the variable
};

// The variables after the changes: a changed one moves to the end, as bootenv_set() does it.
Variables changed(Variables variables, const std::vector<Change> &changes);

class EnvironmentAccess {
  public:
    virtual ~EnvironmentAccess() = default;
    virtual Variables variables() = 0;
    // All of the changes or, with a Failure, none.
    virtual void change(const std::vector<Change> &changes) = 0;
};

// The shadow; attaches to the switch. Changes go to flash with save_environment().
std::unique_ptr<EnvironmentAccess> shadow_access();
void save_environment(); // throws Failure

// The file is replaced as a whole at each change. One that is missing is an empty environment if it `may_be_missing`.
std::unique_ptr<EnvironmentAccess> image_access(const std::string &path, bool may_be_missing = false);

// Throws Failure when the result of a library call is not 0: what could not be done to which object, and why.
void expect_done(int result, const std::string &object, const std::string &what);

} // namespace switchcfg::tool

#endif
