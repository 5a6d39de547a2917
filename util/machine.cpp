// SPDX-License-Identifier: Apache-2.0
// Memory pressure and random delays.
#include <switchcfg/process.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <unistd.h>

namespace {

constexpr int least_adjustment = -17;
constexpr int most_adjustment = 15;

template<typename Int>
Int clamped(double value) noexcept
{
    if (!(value > 0)) { // not a number as well
        return 0;
    }
    constexpr auto most = std::numeric_limits<Int>::max();
    return value >= static_cast<double>(most) ? most : static_cast<Int>(value);
}

} // namespace

int oom_adj_set(int pid, int adjustment) noexcept
{
    if (adjustment < least_adjustment || adjustment > most_adjustment) {
        return -1;
    }
    return systemf("echo %d > /proc/%d/oom_adj", adjustment, pid);
}

int random_max_n(int n) noexcept
{
    if (n < 1) {
        return 0;
    }
    const auto drawn = static_cast<unsigned>(std::rand()); // NOLINT(cert-msc30-c,cert-msc50-cpp)
    return static_cast<int>(drawn / (2147483647U / static_cast<unsigned>(n) + 1)); // n = 1 makes it 2^31
}

int sleep_random(double minimum_s, double maximum_s) noexcept
{
    const double microseconds = minimum_s * 1e6 + random_max_n(clamped<int>((maximum_s - minimum_s) * 1e6));
    return ::usleep(clamped<useconds_t>(microseconds));
}
