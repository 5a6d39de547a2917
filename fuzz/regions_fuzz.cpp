// SPDX-License-Identifier: Apache-2.0
// Look-ups in regions that hold anything: other processes write them, and a region outlives the software that wrote it.
// The input pokes fields and calls functions with any arguments. The regions lie between pages that cannot be touched
// and cannot be written while a look-up runs.
#include "fuzz/byte_source.h"
#include "fuzz/fuzz_input.h"

#include "core/config_region.h"
#include "core/status_region.h"

#include <memory>
#include <switchcfg/equip.h>
#include <switchcfg/ports.h>
#include <switchcfg/provision.h>
#include <switchcfg/sntp.h>
#include <switchcfg/status.h>
#include <switchcfg/vxlog.h>
#include <sys/mman.h>
#include <tuple>
#include <vector>

using namespace switchcfg::fuzz;

std::uint8_t *switchcfg::running_config = nullptr;
std::uint8_t *switchcfg::default_config = nullptr;
std::uint8_t *switchcfg::status_region = nullptr;

namespace {

constexpr std::size_t page = 4096;

struct Region {
    std::uint8_t *base = nullptr;
    std::size_t size = 0;
    std::span<const switchcfg::FieldInfo> fields{};
    std::vector<std::pair<std::uint32_t, std::uint32_t>> poked{}; // offset and size, to be cleared again

    // The last byte is the last one before a page that cannot be touched, and there is one ahead of it too.
    void make(std::size_t bytes, std::span<const switchcfg::FieldInfo> its_fields)
    {
        const std::size_t whole = (bytes + page - 1) / page * page;
        void *const memory = ::mmap(nullptr, whole + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        require(memory != MAP_FAILED);
        base = static_cast<std::uint8_t *>(memory) + page + whole - bytes;
        size = bytes;
        fields = its_fields;
        writable(true);
    }
    void writable(bool yes) const
    {
        const auto address = reinterpret_cast<std::uintptr_t>(base);
        const std::uintptr_t start = address / page * page;
        require(
            ::mprotect(base - (address - start), size + (address - start), PROT_READ | (yes ? PROT_WRITE : 0)) == 0);
    }
    void poke(ByteSource &input)
    {
        const switchcfg::FieldInfo &field = fields[input.byte() % fields.size()];
        const std::uint32_t place =
            field.place_of(input.word() % field.dimensions[0].count, input.word() % field.dimensions[1].count);
        const std::uint32_t length = std::min(field.size, std::uint32_t{64});
        if (field.size == 4) {
            const std::uint32_t value = input.word();
            std::memcpy(base + place, &value, sizeof value);
        } else {
            input.fill(base + place, length);
        }
        poked.emplace_back(place, length);
    }
    void clear()
    {
        for (const auto &[offset, length] : poked) {
            std::memset(base + offset, 0, length);
        }
        poked.clear();
    }
};

Region status;
Region config;

template<typename T>
struct Argument {
    explicit Argument(ByteSource &input) : value(static_cast<T>(input.word())) {}
    T get() const { return value; }
    T value;
};

template<>
struct Argument<int *> {
    explicit Argument(ByteSource &input) : value(std::make_unique<int>(input.byte())) {}
    int *get() const { return value.get(); }
    std::unique_ptr<int> value; // of exactly its size
};

template<typename... T>
void call_with(int (*function)(T...) noexcept, ByteSource &input)
{
    const std::tuple<Argument<T>...> arguments{Argument<T>{input}...};
    std::apply([&](const auto &...argument) { (void)function(argument.get()...); }, arguments);
}

template<auto Function>
void call(ByteSource &input)
{
    call_with(Function, input);
}

void texts(ByteSource &input)
{
    const std::size_t size = 1 + input.byte() % 64U;
    const auto text = std::make_unique<char[]>(size);
    int interface = 0;
    const std::uint32_t unit = input.word();
    (void)cfg_equip_get_name_tq5200(static_cast<int>(input.word()), unit, text.get(), size);
    require(std::memchr(text.get(), '\0', size) != nullptr);
    if (cfg_equip_get_str_oid_tq5200(unit, text.get(), size) == 0) {
        require(std::memchr(text.get(), '\0', size) != nullptr);
    }
    if (cfg_equip_get_unit_ipv6_addr(unit, &interface, text.get(), size) != nullptr) {
        require(std::memchr(text.get(), '\0', size) != nullptr);
    }
    require(std::strlen(cfg_equip_get_vendor()) < 64 && std::strlen(cfg_equip_get_hostname()) < 64); // none has none
}

void bitmaps(ByteSource &input)
{
    const auto ports = std::make_unique<std::uint32_t[]>(CFG_PBMP_WORDS);
    for (int i = 0; i < CFG_PBMP_WORDS; ++i) {
        ports[static_cast<std::size_t>(i)] = input.word();
    }
    const auto chips = std::make_unique<cfg_equip_phys_pbmp>();
    const int unit = static_cast<int>(input.word());
    (void)cfg_equip_user_to_phys_pbmp_tq5200(unit, ports.get(), chips.get());
    (void)cfg_equip_get_slot_pbmp_tq5200(unit, ports.get());
    (void)cfg_equip_get_slot_pbmp_tcv_tq5200(unit, ports.get());
}

void others(ByteSource &input)
{
    std::uint8_t mac[6];
    input.fill(mac, sizeof mac);
    const int unit = status_mac_to_unit(mac);
    require(unit >= -1 && unit < static_cast<int>(switchcfg::status_layout::max_units));
    const int most = input.byte() % 8;
    const auto stack_ports = std::make_unique<int[]>(static_cast<std::size_t>(most));
    (void)cfg_equip_get_stack_port_num_tq5200(static_cast<int>(input.word()), stack_ports.get(), most);
    const auto results = std::make_unique<int[]>(10);
    for (std::size_t i = 0; i < 10; ++i) {
        results[i] = input.byte();
    }
    cfg_equip_unscramble_cable_pairs_tq5200(
        static_cast<int>(input.word()), static_cast<int>(input.word()), results.get());
    const auto address = std::make_unique<char[]>(46); // what an address may take
    (void)sntp_dump_server_ip_addr(static_cast<int>(input.word()), address.get());
    (void)sntp_dump_lastOk_ip_addr(address.get());
    (void)sntp_find_server_index("10.0.0.1");
    (void)cfg_get_sntp_server_key("2001:db8::1");
}

constexpr void (*lookups[])(ByteSource &) = {texts, bitmaps, others, call<cfg_equip_get_local_units>,
    call<cfg_equip_get_user_ports>, call<cfg_equip_get_is_fabric>, call<cfg_equip_get_stack_ports>,
    call<cfg_equip_get_board_id>, call<cfg_equip_get_int_oid>, call<cfg_equip_get_pwr_num>,
    call<cfg_equip_get_alarm_present>, call<cfg_equip_get_is_mpu>, call<cfg_equip_get_linkscan_period>,
    call<cfg_equip_get_int_memory_l2>, call<cfg_equip_get_int_memory_l3>, call<cfg_equip_get_int_memory_l3_ipv4>,
    call<cfg_equip_get_int_memory_l3_ipv6>, call<cfg_equip_get_int_memory_l3_shared>, call<cfg_equip_get_ext_memory>,
    call<cfg_equip_get_eth_outband_ifaces_num>, call<cfg_equip_get_num_electrical_ports>,
    call<cfg_equip_get_xfp_leds_control_by_bcm>, call<cfg_equip_get_transceiver_slot>,
    call<cfg_equip_get_xfp_transceiver_present>, call<cfg_equip_get_l2_table_show_limit>,
    call<cfg_equip_get_snmp_model_id>, call<cfg_equip_get_chipset>, call<cfg_equip_get_l3_egress_type>,
    call<cfg_equip_get_vlan_translate_type>, call<cfg_equip_get_max_vlan_translate>,
    call<cfg_equip_get_max_vlan_mac_table>, call<cfg_equip_get_hqos_support>,
    call<cfg_equip_get_fp_entries_ingress_per_slice>, call<cfg_equip_get_fp_meters_ingress_per_slice>,
    call<cfg_equip_get_fp_counters_ingress_per_slice>, call<cfg_equip_get_fp_entries_egress_per_slice>,
    call<cfg_equip_get_fp_meters_egress_per_slice>, call<cfg_equip_get_fp_counters_egress_per_slice>,
    call<cfg_equip_get_fp_egress_stage>, call<cfg_equip_get_is_cesop>, call<cfg_equip_get_is_zarlink>,
    call<cfg_equip_get_is_sdh>, call<cfg_equip_get_user_g704>, call<cfg_equip_get_user_bundle>,
    call<cfg_equip_get_user_ptp>, call<cfg_equip_get_sync_output>, call<cfg_equip_get_sync_hier>,
    call<cfg_equip_get_user_eth_ports>, call<cfg_equip_get_user_sdh>, call<cfg_equip_get_user_e1c>,
    call<cfg_equip_get_user_vc4>, call<cfg_equip_get_user_sdh_map>, call<cfg_equip_get_fpga_num_ports>,
    call<cfg_equip_get_do_not_update_HM>, call<cfg_equip_get_hg_encap_default>, call<cfg_equip_get_learn_limit_hw>,
    call<cfg_equip_get_vlan_class_id_support>, call<cfg_equip_get_cfm_two_vlan_tag_support>,
    call<cfg_equip_get_ih_magic>, call<cfg_equip_get_poe_chipset_devices>, call<cfg_equip_get_psu_power>,
    call<cfg_equip_get_internal_power_usage>, call<cfg_equip_get_power_available_to_ext_dev>,
    call<cfg_equip_get_cfm_dm_hw>, call<cfg_equip_get_bcm_has_l3>, call<cfg_equip_get_bcm_has_mpls>,
    call<cfg_equip_get_remark_outer_dot1p>, call<cfg_equip_get_has_wrr_minbw_errata>,
    call<cfg_equip_get_l2_user_entry_size>, call<cfg_equip_get_min_fw_version>, call<cfg_equip_get_max_num_mpls_vpn>,
    call<cfg_equip_get_egress_max_id>, call<cfg_equip_get_egress_min_id>, call<cfg_equip_get_egress_cpu_id>,
    call<status_modid_to_unit>, call<status_modid_to_unit_phys>, call<status_punit_to_modid>,
    call<status_get_hw_version>, call<status_get_hw_model_num>, call<status_get_logical_removal>,
    call<cfg_equip_led_offset_to_port_tq5200>, call<cfg_equip_is_tx_disable_controlled_by_fpga>,
    call<cfg_equip_port_has_bcm5488_tq5200>, call<cfg_equip_xe_port_to_tx_disable_entry_tq5200>,
    call<cfg_equip_get_exp_board_is_present_tq5200>, call<cfg_equip_get_exp_board_i2c_addr_tq5200>,
    call<cfg_equip_is_quali2_tq5200>, call<cfg_equip_is_quali2_part2_tq5200>, call<cfg_equip_is_quali2_part3_tq5200>,
    call<cfg_equip_is_quali1_with_bcc_ech_5200>, call<cfg_equip_has_ecc4bit_tq5200>,
    call<cfg_equip_has_usb_console_tq5200>, call<cfg_equip_has_non_inverted_ddr_spd_tq5200>,
    call<cfg_equip_has_spd_v13_tq5200>, call<cfg_equip_get_chip_id_tq5200>, call<cfg_equip_unit_local_is_10gx_tq5200>,
    call<cfg_equip_get_is_L3_tq5200>, call<cfg_equip_get_is_apollo_tq5200>, call<cfg_equip_get_is_triumph2_tq5200>,
    call<cfg_equip_check_ipfix_enabled_tq5200>, call<cfg_equip_has_poe_tq5200>,
    call<cfg_equip_is_main_power_fixed_tq5200>, call<cfg_equip_has_fan_control_tq5200>,
    call<cfg_equip_is_cos_wfq_through_rr_tq5200>, call<cfg_equip_get_max_num_ports_tq5200>,
    call<cfg_equip_get_i2c_bus_num_tq5200>, call<cfg_equip_is_match_vlan_inner_supported_tq5200>,
    call<cfg_equip_has_ddr800_tq5200>, call<cfg_equip_check_egress_filter_ethernet_range_enabled_tq5200>,
    call<cfg_equip_support_fan_status_tq5200>, call<cfg_equip_support_fan_eeprom_tq5200>,
    call<cfg_equip_has_mpc8548_rev_3_1_tq5200>, call<cfg_equip_is_local_tunnel_available_tq5200>,
    call<cfg_equip_get_fpga_i2c_bus_tq5200>, call<cfg_equip_get_hig_ports_by_unit_tq5200>,
    call<cfg_unit_get_provisioned_model>, call<status_get_cpu_port>, call<status_get_tcv_handle>,
    call<cfg_equip_user_to_unit_slot_tq5200>, call<cfg_equip_convert_index_port_to_generic_user_port_tq5200>,
    call<cfg_equip_convert_generic_user_port_to_port_index_tq5200>, call<cfg_equip_fpga_port_to_port_tq5200>,
    call<cfg_equip_port_to_fpga_port_tq5200>, call<cfg_get_port_type_tq5200_up>, call<cfg_get_port_type_tq5200>,
    call<cfg_get_port_max_speed_tq5200_up>, call<cfg_get_port_max_speed_tq5200>,
    call<cfg_equip_is_port_transceiver_tq5200_up>, call<cfg_equip_is_port_transceiver_tq5200>,
    call<cfg_equip_is_combo_port_tq5200>, call<cfg_equip_has_cable_diag_support_tq5200>,
    call<cfg_get_poe_is_capable_port_tq5200>, call<cfg_equip_is_txrx_inverted>,
    call<cfg_equip_get_is_phy_xgxs16g_tq5200>, call<cfg_equip_get_exp_board_tq5200>,
    call<cfg_get_equip_fan_present_tq5200>, call<cfg_equip_check_egress_filter_valid_actions_tq5200>,
    call<cfg_equip_check_egress_filter_max_prio_tq5200>, call<cfg_equip_get_generic_user_port_type_tq5200>,
    call<cfg_equip_is_port_connected_to_fpga_tq5200>, call<cfg_equip_get_fpga_xfp_mux_tq5200>,
    call<cfg_equip_get_is_phy_hl65_tq5200>, call<cfg_equip_get_xfp_mode_sel_tq5200>,
    call<cfg_equip_get_is_port_sdh_tq5200>, call<cfg_equip_get_sfp_switch_ctrl_tq5200>, call<cfg_port_get_channel>,
    call<cfg_port_get_disabled>, call<status_get_num_units>, call<status_get_last_connected_unit>,
    call<cfg_equip_system_is_class_id_supported>, call<cfg_equip_is_failover_supported>,
    call<cfg_unit_mode_control_check_if_board_mode_is_failover>, call<cfg_equip_get_stacking_support_tq5200>,
    call<cfg_equip_is_optical_model_tq5200>, call<cfg_equip_get_max_num_fans_tq5200>,
    call<cfg_equip_get_max_num_units_tq5200>, call<cfg_equip_get_is_standalone_tq5200>,
    call<cfg_equip_get_sfp_i2c_switch_delay_tq5200>, call<cfg_equip_get_xfp_i2c_switch_delay_tq5200>,
    call<cfg_equip_get_port_features_tq5200>, call<cfg_equip_get_chassis_model_tq5200>,
    call<cfg_equip_has_env_backup_tq5200>, call<cfg_equip_is_stack_internal_tq5200>,
    call<cfg_equip_phys_to_local_user_port_tq5200>, call<cfg_equip_10GX_port_to_fpga_bit_tq5200>,
    call<cfg_equip_stack_port_to_id_tq5200>, call<cfg_equip_stack_id_to_port_tq5200>,
    call<status_modid_port_to_phys_unit_port>, call<status_phys_unit_port_to_modid_port>,
    call<cfg_equip_user_to_phys_port_tq5200>, call<cfg_equip_phys_to_user_port_tq5200>,
    call<status_unit_phys_to_slot_index>, call<cfg_equip_port_to_fpga_tx_disable_bit_tq5200>,
    call<cfg_equip_get_number_of_user_interfaces>, call<cfg_equip_is_cpu_phys_port>,
    call<cfg_equip_phys_to_user_unit_tq5200>, call<cfg_equip_is_port_fpga_first_tq5200>};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    namespace layout = switchcfg::status_layout;
    if (status.base == nullptr) {
        status.make(layout::size, layout::fields);
        config.make(switchcfg::config_layout::size, switchcfg::config_layout::fields);
        switchcfg::status_region = status.base;
        switchcfg::running_config = config.base;
        switchcfg::default_config = config.base;
    }
    ByteSource input{data, size};
    const unsigned pokes = input.byte() % 32;
    for (unsigned i = 0; i < pokes; ++i) {
        (input.byte() % 8 == 0 ? config : status).poke(input);
    }
    status.writable(false);
    config.writable(false);
    while (!input.empty()) {
        lookups[input.byte() % std::size(lookups)](input);
    }
    status.writable(true);
    config.writable(true);
    status.clear();
    config.clear();
    return 0;
}
