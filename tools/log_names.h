// SPDX-License-Identifier: Apache-2.0
// Names of facilities, levels and results of the logging interface. Throw Failure for a name that is none.
#ifndef SWITCHCFG_TOOLS_LOG_NAMES_H
#define SWITCHCFG_TOOLS_LOG_NAMES_H

#include <string>

namespace switchcfg::tool {

int log_facility_by_name(const std::string &name);
int log_level_by_name(const std::string &name);

// "LOGGERS_ERR_SERVER_CONNECT (-1018)"
std::string log_result_text(int result);

} // namespace switchcfg::tool

#endif
