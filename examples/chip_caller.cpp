// SPDX-License-Identifier: Apache-2.0
// Calls into the switch-chip daemon, one for each line of standard input: "version", or "wait MILLISECONDS", a call
// that takes as long. Prints each result with the time it took.
#include <switchcfg/funclist.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

namespace {

int call(const std::string &what, std::string &text)
{
    void *output = nullptr;
    std::uint32_t length = 0;
    int result = 0;
    if (what == "version") {
        result = bcm_cmd(BCMD_GENERAL_VERSION, 0, 0, 0, 0, nullptr, 0, &output, &length);
    } else {
        std::uint32_t milliseconds = 0;
        std::cin >> milliseconds;
        result = bcm_cmd(BCMD_GENERAL_DIAG_SHELL, milliseconds, 0, 0, 0, nullptr, 0, &output, &length);
    }
    const std::unique_ptr<void, decltype(&std::free)> owner{output, &std::free};
    if (output != nullptr) {
        text.assign(static_cast<const char *>(output), length);
        text.erase(text.find_last_not_of('\n') + 1);
    }
    return result;
}

} // namespace

int main()
{
    for (std::string what; std::cin >> what;) {
        const auto start = std::chrono::steady_clock::now();
        std::string text;
        const int result = call(what, text);
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        std::cout << what << ": result " << result << " after " << took.count() << " s"
                  << (text.empty() ? "" : ", " + text) << std::endl;
    }
    return 0;
}
