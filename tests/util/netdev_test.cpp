// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/netdev.h>

#include "support/descriptors.h"
#include "support/error_of.h"

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <net/if_arp.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

using namespace switchcfg::testing;

// Virtual interfaces have no PHY, so the MII requests to one of them are answered here, as its driver would.
struct Phy {
    bool present = false;
    bool fails = false;
    std::array<std::uint16_t, 32> registers{};
    static constexpr std::uint16_t address = 9;
};
Phy phy;

int answer(unsigned long request, mii_ioctl_data &data)
{
    if (phy.fails) {
        errno = EIO;
        return -1;
    }
    if (request == SIOCGMIIPHY) {
        data.phy_id = Phy::address;
    } else if (request == SIOCGMIIREG) {
        data.val_out = phy.registers.at(data.reg_num);
    } else {
        phy.registers.at(data.reg_num) = data.val_in;
    }
    return 0;
}

} // namespace

// Takes the place of the C library's for the library under test too.
extern "C" [[gnu::visibility("default")]] int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    if (phy.present && (request == SIOCGMIIPHY || request == SIOCGMIIREG || request == SIOCSMIIREG)) {
        return answer(request, *reinterpret_cast<mii_ioctl_data *>(&static_cast<ifreq *>(argument)->ifr_ifru));
    }
    return static_cast<int>(::syscall(SYS_ioctl, fd, request, argument));
}

namespace {

constexpr const char *first = "sw_first_end_15";
constexpr const char *second = "sw_second";

bool ip(const std::string &arguments)
{
    return std::system(("ip " + arguments + " 2>&1").c_str()) == 0; // NOLINT(cert-env33-c): ours, in a lab of ours
}

class NetworkInterface : public testing::Test {
  protected:
    void SetUp() override
    {
        if (!ip("link add " + std::string{first} + " type veth peer name " + second)) {
            GTEST_SKIP() << "this kernel or this namespace gives no veth pair, or ip is not installed";
        }
    }
};

TEST_F(NetworkInterface, TakesAnAddressThatReadsBack)
{
    const std::array<std::uint8_t, 6> mac{0x02, 0x1A, 0x2B, 0x3C, 0x4D, 0x5E};
    const int before = open_descriptors();
    ASSERT_EQ(net_set_mac(first, ARPHRD_ETHER, mac.data(), mac.size()), 0) << std::strerror(errno);

    ifreq interface {
    };
    const std::string too_long = std::string{first} + "_and_more";
    ASSERT_EQ(net_ioctl(SIOCGIFHWADDR, too_long.c_str(), &interface), 0) << "names are cut to 15 characters";
    EXPECT_STREQ(interface.ifr_name, first);
    EXPECT_EQ(interface.ifr_hwaddr.sa_family, ARPHRD_ETHER);
    EXPECT_EQ(std::memcmp(interface.ifr_hwaddr.sa_data, mac.data(), mac.size()), 0);

    EXPECT_EQ(error_of(net_set_mac("sw_none", ARPHRD_ETHER, mac.data(), 6)), ENODEV);
    EXPECT_EQ(net_set_mac(first, ARPHRD_INFINIBAND, mac.data(), 6), -1) << "not the interface's kind of address";
    for (const int length : {-1, 15, 1 << 30}) {
        EXPECT_EQ(error_of(net_set_mac(first, ARPHRD_ETHER, mac.data(), length)), EINVAL);
    }
    EXPECT_EQ(error_of(net_ioctl_access(-2, SIOCGIFFLAGS, &interface)), EBADF);
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(NetworkInterface, WithoutPhyOrNotUpFailsAndEndsDisconnected)
{
    net_mii_context context{};
    EXPECT_EQ(net_mii_ioctl_init(&context, first), 0);
    EXPECT_EQ(context.socket, -1);
    EXPECT_EQ(static_cast<void *>(context.data), static_cast<void *>(&context.interface.ifr_ifru));

    const auto expect_failure = [&context](int why) {
        for (const auto call : {net_mii_ioctl, net_mii_ioctl_connect}) {
            context.request = SIOCGMIIREG;
            EXPECT_EQ(error_of(call(&context)), why) << std::strerror(errno);
            EXPECT_EQ(context.socket, -1);
            EXPECT_EQ(context.ready, 0);
        }
    };
    expect_failure(ENETDOWN);
    ASSERT_TRUE(ip("link set up dev " + std::string{first}));
    expect_failure(EOPNOTSUPP);
    net_mii_ioctl_init(&context, "sw_none");
    expect_failure(ENODEV);
    EXPECT_EQ(net_mii_ioctl_disconnect(&context), 0);
}

TEST_F(NetworkInterface, FirstCallFindsThePhyAndLaterOnesReachItsRegisters)
{
    phy.present = true;
    phy.registers[MII_PHYSID1] = 0x1234;
    net_mii_context context{};
    net_mii_ioctl_init(&context, first);
    EXPECT_EQ(net_mii_ioctl(&context), -1) << "it is down";
    ASSERT_TRUE(ip("link set up dev " + std::string{first}));

    const auto request = [&context](std::uint32_t what, std::uint16_t reg, std::uint16_t value) {
        context.request = what;
        context.data->reg_num = reg;
        context.data->val_in = value;
        return net_mii_ioctl(&context);
    };
    EXPECT_EQ(request(SIOCSMIIREG, MII_ADVERTISE, 0xBEEF), 0);
    EXPECT_EQ(context.data->phy_id, Phy::address);
    EXPECT_EQ(context.ready, 1);
    EXPECT_EQ(phy.registers[MII_ADVERTISE], 0) << "the call that connects asks for the PHY instead";

    EXPECT_EQ(request(SIOCSMIIREG, MII_ADVERTISE, 0xBEEF), 0);
    EXPECT_EQ(phy.registers[MII_ADVERTISE], 0xBEEF);
    EXPECT_EQ(request(SIOCGMIIREG, MII_PHYSID1, 0), 0);
    EXPECT_EQ(context.data->val_out, 0x1234);

    phy.fails = true;
    EXPECT_EQ(error_of(request(SIOCGMIIREG, MII_PHYSID1, 0)), EIO);
    EXPECT_EQ(context.socket, -1);
    phy.fails = false;
    context.data->phy_id = 0;
    EXPECT_EQ(request(SIOCGMIIREG, MII_PHYSID1, 0), 0);
    EXPECT_EQ(context.data->phy_id, Phy::address) << "it started over";
    EXPECT_STREQ(context.interface.ifr_name, first);
    EXPECT_EQ(net_mii_ioctl_disconnect(&context), 0);
    EXPECT_EQ(context.socket, -1);
}

} // namespace
