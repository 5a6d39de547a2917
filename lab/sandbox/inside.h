// SPDX-License-Identifier: Apache-2.0
// What every lab has inside, and what stays visible of the machine.
#ifndef SWITCHCFG_LAB_SANDBOX_INSIDE_H
#define SWITCHCFG_LAB_SANDBOX_INSIDE_H

#include "lab/sandbox/kept_places.h"

#include <string>
#include <vector>

namespace switchlab {

class Inside {
  public:
    // Outside: notes the current folder, switchlab's own, and those of `keep`, which must exist.
    explicit Inside(const std::vector<std::string> &keep);
    KeptPlaces &kept() { return kept_; }

    // In a process of fresh namespaces: private folders, a loopback that is up, and back to the current folder.
    void make();

  private:
    KeptPlaces kept_;
    std::string current_folder_;
};

} // namespace switchlab

#endif
