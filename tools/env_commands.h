// SPDX-License-Identifier: Apache-2.0
// The larger sub-commands of `switchcfg env`, each in a file of its own.
#ifndef SWITCHCFG_TOOLS_ENV_COMMANDS_H
#define SWITCHCFG_TOOLS_ENV_COMMANDS_H

#include "tools/env_access.h"

#include <string>
#include <vector>

namespace switchcfg::tool {

// Both print what they find and end with exit status 1 when something is not as it should be.
void check_image(const std::string &path);
void check_switch(const Variables &shadow);

// The feature bitmap by name.
std::string feature_names(); // for help texts
void print_features(const Variables &variables, bool with_status);
struct FeatureChange {
    std::vector<std::string> on;
    std::vector<std::string> off;
    bool anyway = false; // without asking what the hardware can do
};
void change_features_of_image(EnvironmentAccess &image, const FeatureChange &change);
void change_features_of_switch(EnvironmentAccess &shadow, const FeatureChange &change);

} // namespace switchcfg::tool

#endif
