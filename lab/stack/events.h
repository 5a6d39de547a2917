// SPDX-License-Identifier: Apache-2.0
// What the parts of a lab tell its keeper.
#ifndef SWITCHCFG_LAB_STACK_EVENTS_H
#define SWITCHCFG_LAB_STACK_EVENTS_H

#include "lab/stack/channel.h"

namespace switchlab {

inline constexpr int the_station = -1; // beside the numbers of units

class Events {
  public:
    explicit Events(int channel) : channel_(channel) {}

    // How far it is: "folders", "links", "flash", "daemons", then "ready"; "incomplete" when a
    // daemon is missing, "off" without power, "failed" when it could not start.
    void stage(int part, const std::string &stage) const
    {
        send_message(channel_, {{"event", "stage"}, {"part", part}, {"stage", stage}});
    }
    void trouble(int part, const std::string &what) const
    {
        send_message(channel_, {{"event", "trouble"}, {"part", part}, {"text", what}});
    }
    // From its first process, once its folders are made: how to get in.
    void entrance(int part, const nlohmann::json &environment, const nlohmann::json &daemons) const;

  private:
    int channel_;
};

} // namespace switchlab

#endif
