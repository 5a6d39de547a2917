// SPDX-License-Identifier: Apache-2.0
// Labels, the dump of their table, and the rules of the virtual hardware.
#include "lab/stand-ins/bcmd/chip.h"
#include "lab/stand-ins/bcmd/functions.h"

#include <switchcfg/mpls_print.h>

namespace switchlab::bcmd {
namespace {

constexpr std::uint32_t first_label = 16; // those below are reserved
constexpr std::uint32_t last_label = (1U << 20) - 1;
constexpr std::size_t most_labels = 16384;
constexpr std::size_t most_rules = 4096;

std::int32_t mpls_init(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const std::lock_guard hold{chip().use};
    chip().labels.clear();
    return 0;
}

// arg1: label; arg2: the label it is swapped for, 0 when it is taken off; arg3, arg4: unit and port
std::int32_t label_add(std::uint32_t arg1, std::uint32_t arg2, std::uint32_t arg3, std::uint32_t arg4,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const std::lock_guard hold{chip().use};
    if (chip().port(arg3, arg4) == nullptr) {
        return no_such_port;
    }
    if (arg1 < first_label || arg1 > last_label || arg2 > last_label) {
        return out_of_limits;
    }
    if (chip().labels.size() >= most_labels) {
        return table_full;
    }
    return chip().labels.try_emplace(arg1, Label{arg2, arg3, arg4}).second ? 0 : exists_already;
}

// arg1: label
std::int32_t label_delete(std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const std::lock_guard hold{chip().use};
    return chip().labels.erase(arg1) == 1 ? 0 : not_found;
}

// The chip's lock also keeps the text, which is one per process, to one caller.
std::int32_t mpls_dump(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void **output, std::uint32_t *output_length)
{
    const std::lock_guard hold{chip().use};
    mpls_prt_clean_context();
    mpls_cli_printf("%-8s %-8s %-10s %s\n", "Label", "Out", "Port", "Next hop");
    for (const auto &[label, what] : chip().labels) {
        const Mac next_hop{0x02, 0x00, 0x4d, static_cast<std::uint8_t>(label >> 16),
            static_cast<std::uint8_t>(label >> 8), static_cast<std::uint8_t>(label)};
        mpls_cli_printf("%-8u ", label);
        if (what.out == 0) {
            mpls_cli_printf("%-8s ", "pop");
        } else {
            mpls_cli_printf("%-8u ", what.out);
        }
        mpls_cli_printf("%u/%-8u %M\n", what.unit, what.port, next_hop.data());
    }
    mpls_cli_printf("%u labels, %.1f%% of the table\n", static_cast<std::uint32_t>(chip().labels.size()),
        static_cast<std::uint32_t>(chip().labels.size() * 100 / most_labels));
    char *text = nullptr;
    int length = 0;
    (void)mpls_prt_get_context(&text, &length);
    if (text == nullptr) {
        return no_resources;
    }
    *output = text;
    *output_length = static_cast<std::uint32_t>(length);
    return 0;
}

// arg1: the rule
std::int32_t rule_add(std::uint32_t arg1, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const std::lock_guard hold{chip().use};
    if (chip().rules.size() >= most_rules) {
        return table_full;
    }
    chip().rules.push_back(arg1);
    return 0;
}

std::int32_t rule_count(std::uint32_t /*arg1*/, std::uint32_t /*arg2*/, std::uint32_t /*arg3*/, std::uint32_t /*arg4*/,
    const void * /*input*/, void ** /*output*/, std::uint32_t * /*output_length*/)
{
    const std::lock_guard hold{chip().use};
    return static_cast<std::int32_t>(chip().rules.size());
}

} // namespace

void register_mpls_functions(BcmdFunclistServer &server)
{
    server.registerLegacyCallback(BCMD_MPLS_INIT, mpls_init);
    server.registerLegacyCallback(BCMD_MPLS_LABEL_ADD, label_add);
    server.registerLegacyCallback(BCMD_MPLS_LABEL_DELETE, label_delete);
    server.registerLegacyCallback(BCMD_MPLS_DUMP, mpls_dump);
}

void register_vhw_functions(BcmdFunclistServer &server)
{
    server.registerLegacyCallback(BCMD_VHW_RULE_ADD, rule_add);
    server.registerLegacyCallback(BCMD_VHW_RULE_COUNT, rule_count);
}

} // namespace switchlab::bcmd
