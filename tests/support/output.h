// SPDX-License-Identifier: Apache-2.0
// What a piece of code, and the programs it starts, print on standard output.
#ifndef SWITCHCFG_TESTS_SUPPORT_OUTPUT_H
#define SWITCHCFG_TESTS_SUPPORT_OUTPUT_H

#include <functional>
#include <string>

namespace switchcfg::testing {

std::string output_of(const std::function<void()> &body);

} // namespace switchcfg::testing

#endif
