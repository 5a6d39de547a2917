// SPDX-License-Identifier: Apache-2.0
// Places that stay what they are although a folder above them becomes private: a checkout in /tmp, the command's own
// folder.
#ifndef SWITCHCFG_LAB_SANDBOX_KEPT_PLACES_H
#define SWITCHCFG_LAB_SANDBOX_KEPT_PLACES_H

#include "util/owned.h"

#include <string>
#include <vector>

namespace switchlab {

class KeptPlaces {
  public:
    // Asked for by name: must exist, and must not be a folder that every lab makes anew.
    void keep(const std::string &path);
    // Kept for convenience; false when it is missing or is a folder that every lab makes anew.
    bool keep_if_possible(const std::string &path);

    // Takes hold of the places inside the lab's mount namespace, before anything is mounted over them.
    void hold();
    // Puts them back once the private folders are mounted.
    void put_back() const;

  private:
    struct Place {
        std::string path;
        switchcfg::Descriptor tree = {};
        bool folder = true;
    };
    void add(const std::string &path);
    std::vector<Place> places_;
};

} // namespace switchlab

#endif
