// SPDX-License-Identifier: Apache-2.0
// One line about what the kernel refused: the call, its object, the reason, and what to do about it.
#ifndef SWITCHCFG_LAB_REFUSAL_H
#define SWITCHCFG_LAB_REFUSAL_H

#include <stdexcept>
#include <string>
#include <string_view>

namespace switchlab {

class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Builds the line from errno; `advice` may be empty, in which case well-known causes are looked for.
Refusal refusal(std::string_view call, std::string_view object, std::string_view advice = {});

} // namespace switchlab

#endif
