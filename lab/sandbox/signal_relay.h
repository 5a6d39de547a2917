// SPDX-License-Identifier: Apache-2.0
// Waiting for a process while passing on the signals meant for it.
#ifndef SWITCHCFG_LAB_SANDBOX_SIGNAL_RELAY_H
#define SWITCHCFG_LAB_SANDBOX_SIGNAL_RELAY_H

#include <csignal>
#include <sys/types.h>

namespace switchlab {

// Made before the process is started, so that no signal falls between the chairs.
class SignalRelay {
  public:
    SignalRelay();                    // from here on the signals wait for wait_for()
    void restore_for_command() const; // in the process that becomes the command

    // Until `child` ends: relays signals sent to this process and reaps every other child. Gives the exit status a
    // shell would give: the status itself, or 128 + n for signal n.
    int wait_for(pid_t child) const;

  private:
    sigset_t relayed_{};
    sigset_t original_{};
};

} // namespace switchlab

#endif
