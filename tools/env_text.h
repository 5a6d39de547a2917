// SPDX-License-Identifier: Apache-2.0
// Boot variables as text: a line "NAME=VALUE" each, with escapes for what a line cannot hold, so that every environment
// whose variables have names comes back as it was. Empty lines and lines that begin with "#" say nothing.
#ifndef SWITCHCFG_TOOLS_ENV_TEXT_H
#define SWITCHCFG_TOOLS_ENV_TEXT_H

#include "tools/env_image.h"

#include <iosfwd>

namespace switchcfg::tool {

// Control characters and backslashes become \n, \t, \xHH and \\.
std::string escaped(const std::string &text);
void write_text(std::ostream &out, const Variables &variables);
// Throws Failure with the name and number of the first line that is none.
Variables read_text(std::istream &in, const std::string &source);

} // namespace switchcfg::tool

#endif
