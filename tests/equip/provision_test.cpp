// SPDX-License-Identifier: Apache-2.0
#include "ports_fixture.h"

#include <switchcfg/provision.h>

namespace switchcfg::testing {
namespace {

using Provision = PortsTest;

TEST_F(Provision, ModelsChannelsAndStatesAreKept)
{
    EXPECT_EQ(cfg_unit_get_provisioned_model(7), 0);
    EXPECT_EQ(cfg_unit_set_provisioned_model(7, 85), 0);
    EXPECT_EQ(cfg_unit_get_provisioned_model(7), 85);
    for (const int model : {86, -1, INT_MAX}) {
        EXPECT_EQ(cfg_unit_set_provisioned_model(7, model), -7);
    }
    for (const int unit : {8, -1, INT_MIN}) {
        EXPECT_EQ(cfg_unit_set_provisioned_model(unit, 1), -3);
        EXPECT_EQ(cfg_unit_get_provisioned_model(unit), -3);
    }
    EXPECT_EQ(cfg_unit_get_provisioned_model(7), 85);

    EXPECT_EQ(cfg_port_set_channel(2, 49, 600), 0);
    EXPECT_EQ(cfg_port_get_channel(2, 49), 600);
    EXPECT_EQ(cfg_port_get_channel(2, 48), 0);
    EXPECT_EQ(cfg_port_set_channel(2, 49, 511), -4);
    EXPECT_EQ(cfg_port_set_channel(2, 49, 640), -4);
    EXPECT_EQ(cfg_port_set_channel(2, 52, 600), -3);
    EXPECT_EQ(cfg_port_get_channel(8, 0), -3);
    EXPECT_EQ(cfg_port_set_channel(2, 49, 0), 0);
    EXPECT_EQ(cfg_port_get_channel(2, 49), 0);

    EXPECT_EQ(cfg_port_get_disabled(7, 51), 0);
    EXPECT_EQ(cfg_port_set_disabled(7, 51, 256), 0);
    EXPECT_EQ(cfg_port_get_disabled(7, 51), 1);
    EXPECT_EQ(cfg_port_get_disabled(-1, 0), -3);
    cfg_set_cfg(nullptr);
    EXPECT_EQ(cfg_port_get_disabled(7, 51), 0);
    EXPECT_EQ(cfg_port_set_disabled(7, 51, 0), -1);
    EXPECT_EQ(cfg_port_set_disabled(7, 52, 0), -3);
}

} // namespace
} // namespace switchcfg::testing
