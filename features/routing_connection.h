// SPDX-License-Identifier: Apache-2.0
// The process's connection to the routing stack. To be touched under the command lock only.
#ifndef SWITCHCFG_FEATURES_ROUTING_CONNECTION_H
#define SWITCHCFG_FEATURES_ROUTING_CONNECTION_H

#include <cstdint>
#include <span>
#include <sys/types.h>

namespace switchcfg {

class RoutingConnection {
  public:
    bool is_open() const noexcept { return fd_ >= 0; }
    int descriptor() const noexcept { return fd_; }
    bool open(pid_t process) noexcept; // tries for up to 99 s
    void close() noexcept;
    // Throws away what is pending. errno tells how that ended: 0 when nothing is left, or when the peer has closed.
    void drain() const noexcept;
    // A connection that came through fork() is the parent's to drain and to talk on.
    void drop_inherited(pid_t process) noexcept;
    bool write(std::span<const std::uint8_t> bytes) const noexcept;
    bool read(std::span<std::uint8_t> bytes) const noexcept;

  private:
    int fd_ = -1;
    pid_t process_ = 0;
};

} // namespace switchcfg

#endif
