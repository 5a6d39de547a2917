// SPDX-License-Identifier: Apache-2.0
// switchcfg-bench [--seconds=S] [GOOGLE BENCHMARK'S OPTIONS]: the rows, each for S seconds. Run it in a lab:
// scripts/bench does.
#include "bench/support/compare.h"
#include "bench/support/served.h"

#include <cstdlib>
#include <cstring>
#include <vector>

int main(int argc, char **argv)
{
    std::vector<char *> rest;
    for (int i = 0; i < argc; ++i) {
        if (std::strncmp(argv[i], "--serve=", 8) == 0) {
            return switchcfg::bench::serve_as(argv[i] + 8);
        }
        if (std::strncmp(argv[i], "--seconds=", 10) == 0) {
            switchcfg::bench::seconds_per_row = std::atof(argv[i] + 10);
        } else {
            rest.push_back(argv[i]);
        }
    }
    auto count = static_cast<int>(rest.size());
    rest.push_back(nullptr);
    benchmark::Initialize(&count, rest.data());
    if (benchmark::ReportUnrecognizedArguments(count, rest.data())) {
        return 2;
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
