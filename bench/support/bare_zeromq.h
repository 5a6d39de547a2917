// SPDX-License-Identifier: Apache-2.0
// Request and reply over ZeroMQ as it comes: the floor of every remote call.
#pragma once

#include <cstddef>
#include <string>

namespace switchcfg::bench {

// The client of the server "bare-zeromq", which answers with as many bytes as a request asks for.
class BareZeromq {
  public:
    BareZeromq();
    ~BareZeromq();
    BareZeromq(const BareZeromq &) = delete;
    BareZeromq &operator=(const BareZeromq &) = delete;
    bool exchange(std::size_t request_size, std::size_t reply_size);

  private:
    void *context_;
    void *socket_;
    std::string bytes_;
};

} // namespace switchcfg::bench
