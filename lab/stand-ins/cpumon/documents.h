// SPDX-License-Identifier: Apache-2.0
// Tables and figures as text, HTML and XML.
#ifndef SWITCHLAB_CPUMON_DOCUMENTS_H
#define SWITCHLAB_CPUMON_DOCUMENTS_H

#include "lab/stand-ins/cpumon/tables.h"

#include <string>
#include <vector>

namespace switchlab::cpumon {

std::string as_text(const std::vector<Table> &tables);
std::string as_html(const std::vector<Table> &tables, unsigned unit);

std::string as_xml(const Snapshot &now, const Sampler &sampler, unsigned unit);
std::string as_old_xml(const Snapshot &now, const Sampler &sampler, unsigned unit);

} // namespace switchlab::cpumon

#endif
