// SPDX-License-Identifier: Apache-2.0
// The stores of the logging daemon for the tool: what the library folds into one result is told apart here. A store is
// given as ram, internal-ram, flash or internal-flash, or by the name of a destination. Throw Failure.
#ifndef SWITCHCFG_TOOLS_LOG_STORES_H
#define SWITCHCFG_TOOLS_LOG_STORES_H

#include <string>

namespace switchcfg::tool {

std::string log_store_by_name(const std::string &store);
std::string fetch_store(const std::string &store);
void clear_store(const std::string &store);
void save_store(const std::string &store, const std::string &path);

} // namespace switchcfg::tool

#endif
