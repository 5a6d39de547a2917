// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_TOOLS_STACK_H
#define SWITCHCFG_TOOLS_STACK_H

namespace switchcfg::tool {

// The table of `switchcfg units`, which commands that change the stack print too.
void print_units(bool all);

} // namespace switchcfg::tool

#endif
