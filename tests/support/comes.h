// SPDX-License-Identifier: Apache-2.0
// Waits for what other processes bring about in their own time.
#ifndef SWITCHCFG_TESTS_SUPPORT_COMES_H
#define SWITCHCFG_TESTS_SUPPORT_COMES_H

#include <chrono>
#include <thread>

namespace switchcfg::testing {

// False when the condition has not come true within twenty seconds.
template<typename Condition>
bool comes(Condition condition)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds{20};
    bool has = condition();
    while (!has && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
        has = condition();
    }
    return has;
}

} // namespace switchcfg::testing

#endif
