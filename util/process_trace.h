// SPDX-License-Identifier: Apache-2.0
// What the process utilities say goes to the developer trace, under one tag.
#ifndef SWITCHCFG_UTIL_PROCESS_TRACE_H
#define SWITCHCFG_UTIL_PROCESS_TRACE_H

#include <switchcfg/debug.h>

#define SWITCHCFG_TRACE_PROCESS(...) devel_vprint_implementation("systemAPI", __LINE__, __func__, __VA_ARGS__)

#endif
