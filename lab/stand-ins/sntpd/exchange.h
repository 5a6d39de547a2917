// SPDX-License-Identifier: Apache-2.0
// One question to a time server, and what its answer is worth.
#ifndef SWITCHLAB_SNTPD_EXCHANGE_H
#define SWITCHLAB_SNTPD_EXCHANGE_H

#include "lab/stand-ins/sntpd/key_file.h"

#include <cstdint>
#include <string>
#include <switchcfg/ip_addr.h>

namespace switchlab::sntpd {

struct Answer {
    std::string refused; // why it is not believed; empty when it is
    int stratum = 0;
    double offset_s = 0; // of the server's clock against ours
};

// Waits for the answer for at most a second. With a key the question is authenticated, and an answer that is not is
// refused.
Answer ask(const cfg_ip_addr &server, std::uint16_t port, const Key *key);

} // namespace switchlab::sntpd

#endif
