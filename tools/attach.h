// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_TOOLS_ATTACH_H
#define SWITCHCFG_TOOLS_ATTACH_H

namespace switchcfg::tool {

// Attaches the tool to the switch as a daemon would, but keeps SIGINT and SIGQUIT working. Throws Failure.
void attach();

} // namespace switchcfg::tool

#endif
