// SPDX-License-Identifier: Apache-2.0
// How the lab's routing stack misbehaves, on request or at random.
#ifndef SWITCHCFG_LAB_STAND_INS_ROUTING_FAULTS_H
#define SWITCHCFG_LAB_STAND_INS_ROUTING_FAULTS_H

#include <cstdint>
#include <mutex>
#include <optional>
#include <random>
#include <string>

namespace switchlab::routing {

struct Fault {
    enum Kind {
        none,
        stall,          // answers after so many milliseconds
        close,          // closes instead of answering
        half,           // closes in the middle of the answer
        protocol_error, // answers status 1001
        garbage,        // answers what is no frame, and closes
        huge,           // answers so many bytes
        endless         // announces 4 GiB of data, and closes
    };
    Kind kind = none;
    std::uint32_t argument = 0;
};

class Faults {
  public:
    // Beside those that are asked for, so many commands in a hundred suffer a fault of a random kind.
    Faults(unsigned percent, std::uint32_t seed) : percent_(percent), random_(seed) {}

    // "KIND[:ARGUMENT] [COUNT]": the next COUNT commands suffer it. False when the text makes no sense.
    bool request(const std::string &text);
    Fault next();

  private:
    std::mutex mutex_;
    unsigned percent_;
    std::mt19937 random_;
    Fault requested_;
    unsigned left_ = 0;
};

} // namespace switchlab::routing

#endif
