// SPDX-License-Identifier: Apache-2.0
// The library's own results of a command to the routing stack, beside those of its daemon.
#ifndef SWITCHCFG_FEATURES_ROUTING_CODES_H
#define SWITCHCFG_FEATURES_ROUTING_CODES_H

namespace switchcfg {

enum SendCode { no_memory = -2, invalid_parameter = -7, no_communication = -37, busy = -140 };

// A daemon may have negative results too.
constexpr bool is_library_code(int result) noexcept
{
    return result == no_memory || result == invalid_parameter || result == no_communication || result == busy;
}

} // namespace switchcfg

#endif
