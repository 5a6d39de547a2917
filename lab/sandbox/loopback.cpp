// SPDX-License-Identifier: Apache-2.0
#include "lab/sandbox/loopback.h"

#include "lab/refusal.h"
#include "util/owned.h"

#include <array>
#include <cstring>
#include <fcntl.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

// Machines that switch IPv6 off by default pass that on to new namespaces, and tests of ::1 would fail for no fault of
// theirs.
void allow_ipv6()
{
    for (const char *path : {"/proc/sys/net/ipv6/conf/all/disable_ipv6", "/proc/sys/net/ipv6/conf/lo/disable_ipv6"}) {
        const Descriptor fd{::open(path, O_RDWR | O_CLOEXEC)};
        char disabled = '0';
        if (fd && ::read(fd.get(), &disabled, 1) == 1 && disabled != '0') {
            (void)!::pwrite(fd.get(), "0", 1, 0);
        }
    }
}

} // namespace

void bring_loopback_up()
{
    allow_ipv6();
    const Descriptor fd{::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    struct ifreq request {};
    std::memcpy(request.ifr_name, "lo", 3);
    if (!fd || ::ioctl(fd.get(), SIOCGIFFLAGS, &request) != 0) {
        throw refusal("ioctl SIOCGIFFLAGS", "lo");
    }
    request.ifr_flags = static_cast<short>(request.ifr_flags | IFF_UP);
    if (::ioctl(fd.get(), SIOCSIFFLAGS, &request) != 0) {
        throw refusal("ioctl SIOCSIFFLAGS", "lo");
    }
}

} // namespace switchlab
