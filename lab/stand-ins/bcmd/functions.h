// SPDX-License-Identifier: Apache-2.0
// The functions that the stand-in registers, by family, and what they share.
#ifndef SWITCHLAB_STAND_INS_BCMD_FUNCTIONS_H
#define SWITCHLAB_STAND_INS_BCMD_FUNCTIONS_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <switchcfg/funclist.h>

namespace switchlab::bcmd {

void register_general_functions(BcmdFunclistServer &server);
void register_table_functions(BcmdFunclistServer &server);
void register_diag_functions(BcmdFunclistServer &server);
void register_unit_functions(BcmdFunclistServer &server);
void register_port_functions(BcmdFunclistServer &server);
void register_mpls_functions(BcmdFunclistServer &server);
void register_vhw_functions(BcmdFunclistServer &server);

// Lets functions that wait return, because the daemon ends.
void interrupt_functions();

// Results, as cfg_strerror() names them.
inline constexpr int no_resources = -2;
inline constexpr int no_such_port = -3;
inline constexpr int exists_already = -5;
inline constexpr int out_of_limits = -6;
inline constexpr int bad_parameter = -7;
inline constexpr int not_found = -8;
inline constexpr int table_full = -9;
inline constexpr int hardware_failed = -10;
inline constexpr int was_interrupted = -31;

// Hands `bytes` out as a function's output: `result`, or no_resources when memory is out.
inline int hand_out(
    const void *bytes, std::size_t size, void **output, std::uint32_t *output_length, int result = 0) noexcept
{
    void *const buffer = std::malloc(size > 0 ? size : 1);
    if (buffer == nullptr) {
        return no_resources;
    }
    if (size > 0) {
        std::memcpy(buffer, bytes, size);
    }
    *output = buffer;
    *output_length = static_cast<std::uint32_t>(size);
    return result;
}

} // namespace switchlab::bcmd

#endif
