// SPDX-License-Identifier: Apache-2.0
// Asking a lab that is up.
#ifndef SWITCHCFG_LAB_STACK_VISITOR_H
#define SWITCHCFG_LAB_STACK_VISITOR_H

#include "lab/stack/channel.h"

#include <string>
#include <vector>

namespace switchlab {

inline constexpr char usual_lab[] = "switch";
inline constexpr char lab_name_variable[] = "SWITCHLAB_NAME"; // takes the place of --name

// A part of a lab, the station or a unit, as its keeper knows it.
struct LabPart {
    int number;
    std::string stage;
    std::string name; // of its host
    nlohmann::json about;
    switchcfg::Descriptor process; // none without power
    switchcfg::Descriptor root;
};

struct LabView {
    nlohmann::json about;
    switchcfg::Descriptor process;
    std::vector<LabPart> parts; // the station first

    LabPart &part(const std::string &name); // "station" or the number of a unit; throws a Refusal
};

// The lab of this name; with an empty one, the only lab there is. Throws a Refusal when there is none or a choice.
std::string choose_lab(const std::string &name);
LabView view_lab(const std::string &name);
nlohmann::json ask_lab(const std::string &name, const nlohmann::json &request);

// In this process's numbering; 0 when it is gone.
int pid_of(const switchcfg::Descriptor &process);

} // namespace switchlab

#endif
