// SPDX-License-Identifier: Apache-2.0
// A buffer between bytes that must not change.
#ifndef SWITCHCFG_TESTS_SUPPORT_GUARDED_H
#define SWITCHCFG_TESTS_SUPPORT_GUARDED_H

#include <string>

namespace switchcfg::testing {

class Guarded {
  public:
    explicit Guarded(std::size_t size) : bytes_(size + 2, canary) {}
    char *data() { return bytes_.data() + 1; }
    bool intact() const { return bytes_.front() == canary && bytes_.back() == canary; }
    bool untouched() const { return bytes_.find_first_not_of(canary) == std::string::npos; }

  private:
    static constexpr char canary = '\x5A';
    std::string bytes_;
};

} // namespace switchcfg::testing

#endif
