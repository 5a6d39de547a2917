// SPDX-License-Identifier: Apache-2.0
#include "ports_fixture.h"

#include <climits>
#include <switchcfg/provision.h>

namespace switchcfg::testing {
namespace {

using Provision = PortsTest;

TEST_F(Provision, ModelIsKeptPerUnit)
{
    EXPECT_EQ(cfg_unit_get_provisioned_model(7), 0);
    EXPECT_EQ(cfg_unit_set_provisioned_model(7, 85), 0);
    EXPECT_EQ(cfg_unit_get_provisioned_model(7), 85);
    EXPECT_EQ(cfg_unit_get_provisioned_model(6), 0);
    for (const int model : {86, -1, INT_MAX}) {
        EXPECT_EQ(cfg_unit_set_provisioned_model(7, model), -7);
    }
    for (const int unit : {8, -1, INT_MIN}) {
        EXPECT_EQ(cfg_unit_set_provisioned_model(unit, 1), -3);
        EXPECT_EQ(cfg_unit_get_provisioned_model(unit), -3);
    }
    EXPECT_EQ(cfg_unit_get_provisioned_model(7), 85);
}

TEST_F(Provision, PortChannelAnswersForItsMember)
{
    put(2, 12);
    EXPECT_EQ(cfg_get_port_max_speed_tq5200(2, 600), -1);
    EXPECT_EQ(cfg_port_set_channel(2, 49, 600), 0);
    EXPECT_EQ(cfg_get_port_max_speed_tq5200(2, 600), 10000);
    EXPECT_EQ(cfg_port_get_channel(2, 49), 600);
    EXPECT_EQ(cfg_port_get_channel(2, 48), 0);
    for (const int channel : {511, 640, -1}) {
        EXPECT_EQ(cfg_port_set_channel(2, 49, channel), -4);
    }
    EXPECT_EQ(cfg_port_set_channel(2, 52, 600), -3);
    EXPECT_EQ(cfg_port_get_channel(8, 0), -3);
    EXPECT_EQ(cfg_port_set_channel(2, 49, 0), 0);
    EXPECT_EQ(cfg_port_get_channel(2, 49), 0);
}

TEST_F(Provision, PortsAreUpUntilTakenDown)
{
    EXPECT_EQ(cfg_port_get_disabled(7, 51), 0);
    EXPECT_EQ(cfg_port_set_disabled(7, 51, 256), 0);
    EXPECT_EQ(cfg_port_get_disabled(7, 51), 1);
    EXPECT_EQ(cfg_port_get_disabled(7, 50), 0);
    EXPECT_EQ(cfg_port_get_disabled(-1, 0), -3);
    cfg_set_cfg(nullptr);
    EXPECT_EQ(cfg_port_get_disabled(7, 51), 0);
    EXPECT_EQ(cfg_port_set_disabled(7, 51, 0), -1);
    EXPECT_EQ(cfg_port_set_disabled(7, 52, 0), -3);
}

} // namespace
} // namespace switchcfg::testing
