// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_UTIL_SEND_REST_H
#define SWITCHCFG_UTIL_SEND_REST_H

#include <cstddef>
#include <cstdint>

namespace switchcfg {

// Goes on with what the peer of a stream did not take at once, as a blocking write would, but only for so long. A peer
// that is gone gives an error and no signal.
bool send_rest(int fd, const char *bytes, std::size_t length, std::uint32_t seconds) noexcept;

} // namespace switchcfg

#endif
