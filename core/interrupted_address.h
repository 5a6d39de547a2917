// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_CORE_INTERRUPTED_ADDRESS_H
#define SWITCHCFG_CORE_INTERRUPTED_ADDRESS_H

#include <cstdint>
#include <ucontext.h>

namespace switchcfg {

// The program counter saved in a signal's machine context.
inline void *interrupted_address(const void *ucontext) noexcept
{
    const auto &machine = static_cast<const ucontext_t *>(ucontext)->uc_mcontext;
#if defined(__powerpc__) && !defined(__powerpc64__)
    constexpr int next_instruction = 32; // PT_NIP
    return reinterpret_cast<void *>(static_cast<std::uintptr_t>(machine.uc_regs->gregs[next_instruction]));
#elif defined(__x86_64__)
    return reinterpret_cast<void *>(static_cast<std::uintptr_t>(machine.gregs[REG_RIP]));
#elif defined(__i386__)
    return reinterpret_cast<void *>(static_cast<std::uintptr_t>(machine.gregs[REG_EIP]));
#elif defined(__aarch64__)
    return reinterpret_cast<void *>(static_cast<std::uintptr_t>(machine.pc));
#else
#    error "say where this processor keeps the interrupted program counter"
#endif
}

} // namespace switchcfg

#endif
