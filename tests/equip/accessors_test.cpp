// SPDX-License-Identifier: Apache-2.0
#include "ports_fixture.h"

#include <net/if.h>

namespace switchcfg::testing {
namespace {

using Accessors = PortsTest;

#define PLAIN(name) std::pair(&cfg_equip_get_##name, &cfg_equip_record::name)
constexpr std::array plain{PLAIN(local_units), PLAIN(user_ports), PLAIN(is_fabric), PLAIN(stack_ports), PLAIN(board_id),
    PLAIN(int_oid), PLAIN(pwr_num), PLAIN(alarm_present), PLAIN(is_mpu), PLAIN(linkscan_period), PLAIN(int_memory_l2),
    PLAIN(int_memory_l3), PLAIN(int_memory_l3_ipv4), PLAIN(int_memory_l3_ipv6), PLAIN(int_memory_l3_shared),
    PLAIN(ext_memory), PLAIN(eth_outband_ifaces_num), PLAIN(num_electrical_ports), PLAIN(xfp_leds_control_by_bcm),
    PLAIN(transceiver_slot), PLAIN(xfp_transceiver_present), PLAIN(l2_table_show_limit), PLAIN(snmp_model_id),
    PLAIN(chipset), PLAIN(l3_egress_type), PLAIN(vlan_translate_type), PLAIN(max_vlan_translate),
    PLAIN(max_vlan_mac_table), PLAIN(hqos_support), PLAIN(fp_entries_ingress_per_slice),
    PLAIN(fp_meters_ingress_per_slice), PLAIN(fp_counters_ingress_per_slice), PLAIN(fp_entries_egress_per_slice),
    PLAIN(fp_meters_egress_per_slice), PLAIN(fp_counters_egress_per_slice), PLAIN(fp_egress_stage), PLAIN(is_cesop),
    PLAIN(is_zarlink), PLAIN(is_sdh), PLAIN(user_g704), PLAIN(user_bundle), PLAIN(user_ptp), PLAIN(sync_output),
    PLAIN(sync_hier), PLAIN(user_eth_ports), PLAIN(user_sdh), PLAIN(user_e1c), PLAIN(user_vc4), PLAIN(user_sdh_map),
    PLAIN(fpga_num_ports), PLAIN(do_not_update_HM), PLAIN(hg_encap_default), PLAIN(learn_limit_hw),
    PLAIN(vlan_class_id_support), PLAIN(cfm_two_vlan_tag_support), PLAIN(ih_magic), PLAIN(poe_chipset_devices),
    PLAIN(psu_power), PLAIN(internal_power_usage), PLAIN(power_available_to_ext_dev), PLAIN(cfm_dm_hw),
    PLAIN(bcm_has_l3), PLAIN(bcm_has_mpls), PLAIN(remark_outer_dot1p), PLAIN(has_wrr_minbw_errata),
    PLAIN(l2_user_entry_size), PLAIN(min_fw_version), PLAIN(max_num_mpls_vpn), PLAIN(egress_max_id),
    PLAIN(egress_min_id), PLAIN(egress_cpu_id)};
#undef PLAIN

constexpr std::uint32_t bad_units[] = {8, 9, 255, 1U << 31, UINT32_MAX};

std::string block_name(std::uint32_t unit, std::uint32_t block)
{
    char text[32] = "untouched";
    EXPECT_EQ(cfg_equip_get_block_name(unit, block, text, sizeof text), 0);
    return text;
}

std::string power_input(std::uint32_t unit, std::uint32_t input)
{
    char text[32] = "untouched";
    EXPECT_EQ(cfg_equip_get_power_input_names(unit, input, text, sizeof text), 0);
    return text;
}

std::string name_of(int model, std::uint32_t unit)
{
    char text[64];
    const int length = cfg_equip_get_name_tq5200(model, unit, text, sizeof text);
    EXPECT_EQ(length, static_cast<int>(std::strlen(text)));
    return text;
}

TEST_F(Accessors, PlainOnesReadTheirFieldOfTheUnitsModel)
{
    put(3, 77);
    put(7, 2);
    put(2, 0);
    store(config.data(), config_layout::unit_provisioned_model, 77, 2); // what is configured is not there yet
    for (std::size_t i = 0; i < std::size(plain); ++i) {
        SCOPED_TRACE(i);
        const auto &[get, field] = plain[i];
        EXPECT_EQ(get(3), Equip_tq5200[77].*field);
        EXPECT_EQ(get(7), Equip_tq5200[2].*field);
        EXPECT_EQ(get(2), 0);
        for (const std::uint32_t unit : bad_units) {
            EXPECT_EQ(get(unit), -3);
        }
    }
    put(1, 20);
    EXPECT_EQ(cfg_equip_get_xfp_port(7, 1), 25);
    EXPECT_EQ(cfg_equip_get_temperature_i2c_addr(3, 3), 75);
    EXPECT_EQ(cfg_equip_get_temperature_i2c_addr(7, 2), -1);
    EXPECT_EQ(cfg_equip_get_fpga_i2c_dev(3, 0), 24);
    EXPECT_EQ(cfg_equip_get_leds(3, 0), 52);
    EXPECT_EQ(cfg_equip_get_has_media_manual_control(1, 24), 1);
    EXPECT_EQ(cfg_equip_get_has_media_manual_control(1, 23), 0);
    EXPECT_EQ(cfg_equip_get_leds(8, 0), -3);
    EXPECT_EQ(cfg_equip_get_has_rpu_support(3), 1);
    EXPECT_EQ(cfg_equip_get_has_rpu_support(8), 253);
    EXPECT_EQ(cfg_equip_get_has_rpu_pwr_sharing_support(UINT32_MAX), 253);
    EXPECT_STREQ(cfg_equip_get_mgmt_eth(3), "eth0");
    EXPECT_EQ(cfg_equip_get_mgmt_eth(8), nullptr);
}

TEST_F(Accessors, UnknownModelAnswersFromTheEmptyRecord)
{
    for (const int model : {86, 1000, INT_MAX, -1, INT_MIN}) {
        SCOPED_TRACE(model);
        put(4, model);
        for (const auto &[get, field] : plain) {
            EXPECT_EQ(get(4), 0);
        }
        EXPECT_EQ(cfg_equip_get_has_rpu_support(4), 0);
        EXPECT_EQ(cfg_equip_get_mgmt_eth(4), nullptr);
        EXPECT_EQ(block_name(4, 0), "");
        EXPECT_EQ(power_input(4, 1), "");
    }
    status_finish();
    for (const auto &[get, field] : plain) {
        EXPECT_EQ(get(0), 0);
        EXPECT_EQ(get(8), -3);
    }
    EXPECT_STREQ(cfg_equip_get_vendor(), "");
    EXPECT_EQ(cfg_equip_system_is_class_id_supported(), 1);
}

TEST_F(Accessors, TextsAreThoseOfTheTableCutAndTerminated)
{
    put(0, 1);
    put(1, 80);
    char text[8];
    std::memset(text, 'x', sizeof text);
    EXPECT_EQ(cfg_equip_get_block_name(0, 0, text, 4), 0);
    EXPECT_STREQ(text, " 1-");
    EXPECT_EQ(text[4], 'x');
    EXPECT_EQ(cfg_equip_get_power_input_names(1, 1, text, 1), 0);
    EXPECT_STREQ(text, "");
    EXPECT_EQ(cfg_equip_get_block_name(8, 0, text, 4), -3);
    EXPECT_EQ(cfg_equip_get_power_input_names(8, 0, text, 4), -3);
    EXPECT_EQ(block_name(1, 0), " 1-52");
    EXPECT_EQ(power_input(1, 0), "A");

    const auto or_empty = [](const char *known) { return std::string{known != nullptr ? known : ""}; };
    for (int model = 0; model < CFG_EQUIP_RECORDS; ++model) {
        SCOPED_TRACE(model);
        put(6, model);
        const cfg_equip_record &record = Equip_tq5200[model];
        EXPECT_EQ(name_of(model, 6), or_empty(record.name));
        EXPECT_STREQ(cfg_equip_get_mgmt_eth(6), record.mgmt_eth);
        EXPECT_EQ(block_name(6, 0), or_empty(record.block_name[0]));
        for (std::uint32_t i = 0; i < 2; ++i) {
            EXPECT_EQ(power_input(6, i), or_empty(record.power_input_names[i]));
        }
    }
    // A place that no record has.
    EXPECT_EQ(block_name(6, 1), "");
    EXPECT_EQ(power_input(6, 2), "");
}

TEST_F(Accessors, NameComesFromTheTableTheBoardOrNowhere)
{
    put(5, 90);
    std::strcpy(switchcfg::text(status, status_layout::hardware_model_name, 5), "ETH96GX+8XS+MPLS");
    EXPECT_EQ(name_of(80, 5), "ETH44GT+4GC+4XX+MPLS (DC)");
    EXPECT_EQ(name_of(0, 5), "");
    EXPECT_EQ(name_of(90, 5), "ETH96GX+8XS+MPLS");
    EXPECT_EQ(name_of(91, 5), "Unsupported model");
    EXPECT_EQ(name_of(90, 8), "Unsupported model");
    char text[5];
    EXPECT_EQ(cfg_equip_get_name_tq5200(80, 5, text, sizeof text), 25) << "the length of the whole name";
    EXPECT_STREQ(text, "ETH4");
    std::memset(switchcfg::text(status, status_layout::hardware_model_name, 5), 'M', 32);
    store(status, status_layout::feature_applied, 0x4e4e4e4eU);
    EXPECT_EQ(name_of(90, 5), std::string(32, 'M')) << "a field without a terminator ends at its last byte";
}

TEST_F(Accessors, ObjectIdentifierHasNoUnknownModel)
{
    const auto oid = [](std::uint32_t unit) {
        char text[32] = "untouched";
        EXPECT_EQ(cfg_equip_get_str_oid_tq5200(unit, text, sizeof text), 0);
        return std::string{text};
    };
    put(0, 1);
    EXPECT_EQ(oid(0), "1.3.6.1.4.1.64711.1.2.86");
    put(0, 0);
    EXPECT_EQ(oid(0), "1.3.6.1.4.1.64711.1.2.0");
    for (const int model : {86, INT_MAX}) {
        put(0, model);
        EXPECT_EQ(oid(0), "1.3.6.1.4.1.64711.1.2." + std::to_string(Equip_tq5200[85].int_oid));
    }
    char text[4];
    EXPECT_EQ(cfg_equip_get_str_oid_tq5200(8, text, sizeof text), -7);
}

TEST_F(Accessors, ManagementAddresses)
{
    put(0, 11);
    put(3, 1);
    put(4, 11);
    EXPECT_STREQ(cfg_equip_get_mgmt_ipv6_address(0, 1), "febf::0101") << "unit 0's chip is not asked";
    EXPECT_STREQ(cfg_equip_get_mgmt_ipv6_address(3, 1), "febf::0104");
    EXPECT_STREQ(cfg_equip_get_mgmt_ipv6_address(4, 1), "febf::0005");
    EXPECT_STREQ(cfg_equip_get_mgmt_ipv6_address(8, 1), "febf::0109");
    EXPECT_STREQ(cfg_equip_get_mgmt_ipv6_address(9, 0), "");

    char text[40];
    int ifindex = -1;
    put(0, 1);
    put(3, 1);
    EXPECT_EQ(cfg_equip_get_unit_ipv6_addr(3, &ifindex, text, sizeof text), text);
    EXPECT_STREQ(text, "febf::0104");
    EXPECT_EQ(ifindex, 0) << "there is no VLAN 3 here";
    store(status, status_layout::mpu_slot, 1);
    EXPECT_EQ(cfg_equip_get_unit_ipv6_addr(3, &ifindex, text, sizeof text), text);
    EXPECT_STREQ(text, "febf::0004");
    put(0, 3); // a stacking module
    const std::uint8_t mac[] = {0x00, 0x1a, 0x02, 0xf3, 0x04, 0xff};
    std::ranges::copy(mac, bytes(status, status_layout::unit_mac, 3).begin());
    EXPECT_EQ(cfg_equip_get_unit_ipv6_addr(3, &ifindex, text, sizeof text), text);
    EXPECT_STREQ(text, "fe80::021a:02ff:fef3:04ff");
    EXPECT_EQ(cfg_equip_get_unit_ipv6_addr(3, &ifindex, text, 6), text);
    EXPECT_STREQ(text, "fe80:");
    put(0, 86);
    EXPECT_EQ(cfg_equip_get_unit_ipv6_addr(3, &ifindex, text, sizeof text), text);
    for (const std::uint32_t unit : bad_units) {
        EXPECT_EQ(cfg_equip_get_unit_ipv6_addr(unit, &ifindex, text, sizeof text), nullptr);
    }
}

TEST_F(Accessors, UserInterfacesAreCountedByKind)
{
    int count = -1;
    EXPECT_EQ(cfg_equip_get_number_of_user_interfaces(1, 2, &count), -3) << "not in the stack";
    store(status, status_layout::subunit_mark, 1, 1, 0);
    EXPECT_EQ(cfg_equip_get_number_of_user_interfaces(1, 2, &count), 0) << "its chip's record is in use";
    put(1, 12);
    const struct {
        std::uint32_t type;
        int result;
        int count;
    } rows[] = {{0, -7, -1}, {1, 0, 50}, {2, 0, 128}, {3, 0, 0}, {7, 0, 0}, {8, -7, -1}, {9, 0, 0}, {11, 0, 0},
        {12, -7, -1}, {UINT32_MAX, -7, -1}};
    for (const auto &row : rows) {
        count = -1;
        EXPECT_EQ(cfg_equip_get_number_of_user_interfaces(1, row.type, &count), row.result) << row.type;
        EXPECT_EQ(count, row.count) << row.type;
    }
    for (const std::uint32_t unit : bad_units) {
        EXPECT_EQ(cfg_equip_get_number_of_user_interfaces(unit, 1, &count), -3);
    }
}

TEST_F(Accessors, SystemAsksEveryPresentUnit)
{
    EXPECT_EQ(cfg_equip_system_is_class_id_supported(), 1) << "no unit lacks it";
    put(0, 1);
    put(6, 0);
    EXPECT_EQ(cfg_equip_system_is_class_id_supported(), 0);
    store(status, status_layout::unit_present, 0, 6);
    EXPECT_EQ(cfg_equip_system_is_class_id_supported(), 1);

    set_bits(bytes(status, status_layout::module_cpu_ports, 0, 0), 33, 33);
    EXPECT_EQ(cfg_equip_is_cpu_phys_port(0, 33), 1);
    EXPECT_EQ(cfg_equip_is_cpu_phys_port(0, 32), 0);
    EXPECT_EQ(cfg_equip_is_cpu_phys_port(0, 0x14000000), 1);
    EXPECT_EQ(cfg_equip_is_cpu_phys_port(8, 33), 0);

    EXPECT_EQ(cfg_equip_is_failover_supported(), 0);
    store(config.data(), config_layout::stack_failover, 1);
    EXPECT_NE(cfg_equip_is_failover_supported(), 0);
}

TEST_F(Accessors, BrandFollowsTheVendorCode)
{
    const std::string hostnames[] = {"", "TQ5200", "TQ5200", "", "", "", "", ""};
    for (const int code : {INT_MIN, -1, 0, 1, 2, 3, 7, 9, 15, 16, INT_MAX}) {
        store(status, status_layout::vendor_code, code);
        const bool brand = code == 1 || code == 2 || code == 7 || code == 9 || code == 15;
        EXPECT_EQ(*cfg_equip_get_vendor() != '\0', brand) << code;
        EXPECT_EQ(*cfg_equip_get_vendor_url() != '\0', brand) << code;
        if (code >= 0 && code < 8) {
            EXPECT_EQ(cfg_equip_get_hostname(), hostnames[code]) << code;
        }
        EXPECT_EQ(*cfg_equip_get_hostname() != '\0', brand && code != 7) << code;
    }
}

} // namespace
} // namespace switchcfg::testing
