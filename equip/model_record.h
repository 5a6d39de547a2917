// SPDX-License-Identifier: Apache-2.0
// The numbers of the equipment record that follow from a model's facts, worked out at compile time.
#ifndef SWITCHCFG_EQUIP_MODEL_RECORD_H
#define SWITCHCFG_EQUIP_MODEL_RECORD_H

#include "equip/model_facts.h"

#include <switchcfg/equip_table.h>

namespace switchcfg {
namespace detail {

struct PowerBudget {
    std::int32_t supply;   // milliwatts; 0 where it depends on what is plugged
    std::int32_t internal; // milliwatts
};

constexpr PowerBudget power_budget(const ModelFacts &facts)
{
    if (facts.poe() && facts.family_48()) {
        return {1000000, 150000};
    }
    if (facts.poe()) {
        return facts.newest_20() ? PowerBudget{500000, 70000} : PowerBudget{300000, 60000};
    }
    return facts.supply == Supply::redundant ? PowerBudget{85000, 75000} : PowerBudget{0, 0};
}

// One hardware: what differs between models of a board is software.
constexpr bool same_board(const ModelFacts &a, const ModelFacts &b)
{
    return a.front == b.front && a.front_ports == b.front_ports && a.combo_ports == b.combo_ports &&
           a.cages == b.cages && a.cage == b.cage && a.stacking == b.stacking && a.supply == b.supply &&
           a.alarm_inputs == b.alarm_inputs;
}

// One entry in the tree of object identifiers. PoE has no arc of its own, nor have the SFP+ cages that replaced the XFP
// cages of the fibre board; DC models have.
constexpr bool same_product(const ModelFacts &a, const ModelFacts &b)
{
    return a.fibre() == b.fibre() && a.front_ports == b.front_ports && a.combo_ports == b.combo_ports &&
           a.cages == b.cages && (a.cage == b.cage || a.fibre()) && a.stacking == b.stacking && a.layer == b.layer &&
           (a.supply == Supply::dc) == (b.supply == Supply::dc);
}

// The place of the model's first equal among all that have no equal before them.
template<typename Same>
constexpr int rank(int model, Same same)
{
    const auto first_like = [same](int wanted) {
        int first = 1;
        while (!same(model_facts[first], model_facts[wanted])) {
            ++first;
        }
        return first;
    };
    const int end = first_like(model);
    int place = 0;
    for (int other = 1; other < end; ++other) {
        place += first_like(other) == other ? 1 : 0;
    }
    return place;
}

constexpr void fill_ports(cfg_equip_record &record, const ModelFacts &facts)
{
    record.local_units = 1;
    record.num_electrical_ports = facts.fibre() ? 0 : facts.front_ports + facts.combo_ports;
    record.user_ports = facts.user_ports();
    record.user_eth_ports = facts.user_ports();
    record.stack_ports = facts.stacks() ? 2 : 0;
    record.transceiver_slot = 1;
    record.fpga_num_ports = facts.transceiver_ports();
    // On the small boards each 10G port has two LEDs, link and activity.
    record.leds[0] = facts.user_ports() + (facts.family_48() ? 0 : facts.cages);
    record.xfp_leds_control_by_bcm = facts.cages != 0 ? 1 : 0;
    record.xfp_transceiver_present = facts.cages != 0 ? 1 : 0;
    const int first_cage = facts.family_48() ? 48 : 24;
    for (int i = 0; i < 4; ++i) {
        record.xfp_port[i] = i < facts.cages ? first_cage + i : -1;
    }
    if (facts.fibre() && facts.combo_ports != 0) {
        for (int port = 24; port < 24 + facts.combo_ports; ++port) {
            record.has_media_manual_control[port] = 1;
        }
    }
}

constexpr void fill_chip(cfg_equip_record &record, const ModelFacts &facts)
{
    const bool large = facts.family_48();
    record.chipset = large ? 128 : 256;
    record.ih_magic = large ? 0x12244000 : 0x12094000;
    record.has_wrr_minbw_errata = large ? 0 : 1;
    record.cfm_dm_hw = large ? 1 : 0;
    record.linkscan_period = 10000;
    record.int_memory_l2 = large ? 32768 : 16384;
    record.int_memory_l3 = facts.layer == Layer::l2 ? 1024 : facts.layer == Layer::l3 ? 12288 : 16384;
    record.int_memory_l3_ipv4 = record.int_memory_l3;
    record.int_memory_l3_ipv6 = record.int_memory_l3 / 2;
    record.int_memory_l3_shared = 1;
    record.bcm_has_l3 = facts.layer == Layer::l2 ? 0 : 1;
    record.bcm_has_mpls = facts.layer == Layer::mpls ? 1 : 0;
    record.remark_outer_dot1p = record.bcm_has_mpls;
    record.max_num_mpls_vpn = facts.layer == Layer::mpls ? 256 : 0;
    record.l3_egress_type = 1;
    record.egress_max_id = 108191;
    record.egress_min_id = facts.layer == Layer::l3 && !facts.stacks() ? 100002 : 104097;
    record.egress_cpu_id = record.egress_min_id - 1;
    record.vlan_translate_type = 1;
    record.max_vlan_translate = 1024;
    record.hqos_support = 1;
    record.fp_entries_ingress_per_slice = 512;
    record.fp_meters_ingress_per_slice = 512;
    record.fp_counters_ingress_per_slice = 512;
    const std::int32_t egress = facts.supply == Supply::dc || facts.newest_20() ? 0 : 128;
    record.fp_entries_egress_per_slice = egress;
    record.fp_meters_egress_per_slice = egress;
    record.fp_counters_egress_per_slice = egress;
    record.fp_egress_stage = 1;
    record.hg_encap_default = 3;
    record.learn_limit_hw = 1;
    record.vlan_class_id_support = 1;
    record.cfm_two_vlan_tag_support = 1;
    record.l2_user_entry_size = 128;
}

constexpr void fill_power(cfg_equip_record &record, const ModelFacts &facts)
{
    const PowerBudget budget = power_budget(facts);
    record.poe_chipset_devices = !facts.poe() ? 0 : facts.family_48() ? 12 : 6;
    record.psu_power = budget.supply;
    record.internal_power_usage = budget.internal;
    record.power_available_to_ext_dev = facts.poe() ? budget.supply - budget.internal : 0;
    record.has_rpu_support = facts.supply == Supply::redundant || (facts.newest_20() && facts.poe()) ? 1 : 0;
}

} // namespace detail

constexpr cfg_equip_record record_without_texts(int model)
{
    const ModelFacts &facts = model_facts[model];
    cfg_equip_record record{};
    record.eth_outband_ifaces_num = 1;
    record.int_oid = 86 + detail::rank(model, detail::same_product);
    record.snmp_model_id = 32 + detail::rank(model, detail::same_board);
    record.board_id = 20;
    record.alarm_present = facts.alarm_inputs;
    for (int i = 0; i < 4; ++i) {
        record.temperature_i2c_addr[i] = i < (facts.family_48() ? 4 : 2) ? 72 + i : -1;
        record.fpga_i2c_dev[i] = 24;
    }
    detail::fill_ports(record, facts);
    detail::fill_chip(record, facts);
    detail::fill_power(record, facts);
    return record;
}

} // namespace switchcfg

#endif
