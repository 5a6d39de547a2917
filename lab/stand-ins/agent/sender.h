// SPDX-License-Identifier: Apache-2.0
// Queued traps as SNMPv2c notifications on the wire.
#ifndef SWITCHLAB_STAND_INS_AGENT_SENDER_H
#define SWITCHLAB_STAND_INS_AGENT_SENDER_H

#include <memory>
#include <string>
#include <switchcfg/trap.h>

struct snmp_session;

namespace switchlab::agent {

class Sender {
  public:
    // `peer` as net-snmp writes it, "udp:127.0.0.1:162"; throws std::runtime_error.
    Sender(const std::string &peer, const std::string &community);

    // Bindings that cannot be read or encoded are left out and told on standard error. False when nothing was sent.
    bool send(const trap_entry &trap) const;

  private:
    struct Close {
        void operator()(snmp_session *session) const;
    };
    std::unique_ptr<snmp_session, Close> session_;
};

} // namespace switchlab::agent

#endif
