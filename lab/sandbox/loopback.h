// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_LAB_SANDBOX_LOOPBACK_H
#define SWITCHCFG_LAB_SANDBOX_LOOPBACK_H

namespace switchlab {

// Brings up the loopback of a fresh network namespace: 127.0.0.1, and ::1 where the kernel has IPv6. Needs /proc.
void bring_loopback_up();

} // namespace switchlab

#endif
