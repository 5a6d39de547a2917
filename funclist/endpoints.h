// SPDX-License-Identifier: Apache-2.0
// Where the switch-chip daemon serves, and under which service and message ids.
#ifndef SWITCHCFG_FUNCLIST_ENDPOINTS_H
#define SWITCHCFG_FUNCLIST_ENDPOINTS_H

#include <boost/lexical_cast.hpp>
#include <cstdint>
#include <string>

namespace switchcfg::funclist {

inline constexpr std::uint16_t request_port = 62050;
inline constexpr std::uint16_t keep_alive_port = 62060;
inline constexpr char service[] = "FLBC";

// "Internal communication error": what a call gives that reached no function.
inline constexpr int communication_error = -37;

inline std::string endpoint_of(std::uint16_t port)
{
    return "tcp://127.0.0.1:" + boost::lexical_cast<std::string>(port);
}

} // namespace switchcfg::funclist

#endif
