// SPDX-License-Identifier: Apache-2.0
// What the lab's CPU monitor answers.
#ifndef SWITCHLAB_CPUMON_MONITOR_H
#define SWITCHLAB_CPUMON_MONITOR_H

#include "lab/stand-ins/cpumon/sampler.h"

#include <string>
#include <switchcfg/cpumon.h>

namespace switchlab::cpumon {

class Monitor {
  public:
    explicit Monitor(unsigned unit) : unit_(unit) {} // counted from 1, for captions

    void sample() { sampler_.keep(look()); }
    // Fills the record in, in wire form, and returns the text behind it.
    std::string answer(cpumon_request &record) const;

  private:
    std::string text_for(cpumon_request &record) const;

    unsigned unit_;
    Sampler sampler_;
};

} // namespace switchlab::cpumon

#endif
