// SPDX-License-Identifier: Apache-2.0
#include "tools/call/commands.h"

namespace switchcfg::tool {
namespace {

constexpr Example examples_of_call[] = {
    {"switchcfg call list unit-port", "the functions of a family"},
    {"switchcfg call general echo --input text:hello", "with bytes for it"},
    {"switchcfg call unit ports 0", "of unit 0"},
    {"switchcfg call unit-port counters-get 0 1", "unit 0, port 1"},
    {"switchcfg call mpls dump", "a function with a long output"},
    {"switchcfg call vhw rule-count", "refused: served inside the daemon only"},
    {"switchcfg call stats", "what the daemon did lately"},
};

} // namespace

std::span<const Example> call_examples()
{
    return examples_of_call;
}

} // namespace switchcfg::tool
