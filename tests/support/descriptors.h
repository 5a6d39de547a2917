// SPDX-License-Identifier: Apache-2.0
// What a test needs to see that no descriptor leaks and no call waits for less than it promised.
#ifndef SWITCHCFG_TESTS_SUPPORT_DESCRIPTORS_H
#define SWITCHCFG_TESTS_SUPPORT_DESCRIPTORS_H

#include "support/test.h"

namespace switchcfg::testing {

// Descriptors this process has open.
inline int open_descriptors()
{
    return static_cast<int>(std::distance(std::filesystem::directory_iterator{"/proc/self/fd"}, {}));
}

// While it lives, nothing that needs a new descriptor succeeds.
class NoMoreDescriptors {
  public:
    NoMoreDescriptors()
    {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit none{0, before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoMoreDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    NoMoreDescriptors(const NoMoreDescriptors &) = delete;
    NoMoreDescriptors &operator=(const NoMoreDescriptors &) = delete;

  private:
    rlimit before_{};
};

template<typename Work>
long long elapsed_ms(Work &&work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count();
}

} // namespace switchcfg::testing

#endif
