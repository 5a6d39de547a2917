// SPDX-License-Identifier: Apache-2.0
// Messages between the processes of a lab, and between a lab and those who ask it something: one JSON text each, and
// descriptors that travel with it.
#ifndef SWITCHCFG_LAB_STACK_CHANNEL_H
#define SWITCHCFG_LAB_STACK_CHANNEL_H

#include "util/owned.h"

#include <nlohmann/json.hpp>

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace switchlab {

struct Message {
    nlohmann::json body;
    std::vector<switchcfg::Descriptor> descriptors;
};

// Both ends keep messages apart and whole.
std::pair<switchcfg::Descriptor, switchcfg::Descriptor> make_channel();

// False when nobody reads any more. Never waits longer than the channel's buffer is full.
bool send_message(int channel, const nlohmann::json &body, std::span<const int> descriptors = {});
// Nothing when the other end is closed, and for what is no message.
std::optional<Message> receive_message(int channel);

// A lab's door is a socket that only its name leads to, so that nothing is left of it when its lab is gone, however
// that ended. Each user has names of their own.
switchcfg::Descriptor open_door(const std::string &name); // throws a Refusal when there is a lab of this name
switchcfg::Descriptor knock(const std::string &name);     // nothing when there is no such lab
// Takes a visitor in; nothing when it is another user's.
switchcfg::Descriptor admit(int door);
std::vector<std::string> labs_here();

} // namespace switchlab

#endif
