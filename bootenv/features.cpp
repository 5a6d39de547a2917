// SPDX-License-Identifier: Apache-2.0
// The feature bitmap: stored in the environment, published in the status region, reduced to what the hardware can do.
#include "core/status_region.h"

#include <switchcfg/bootenv.h>
#include <switchcfg/equip.h>
#include <switchcfg/ports.h>

#include <cinttypes>
#include <cstdio>

using namespace switchcfg;

namespace {

namespace layout = status_layout;

struct HardwareFeature {
    std::uint32_t bits;
    bool (*is_there)(int unit);
    const char *name;
};

// In the order of their lines on standard output.
constexpr HardwareFeature hardware_features[] = {
    {BOOTENV_FEATURE_POE, [](int unit) { return cfg_equip_has_poe_tq5200(unit) > 0; }, "POE"},
    {BOOTENV_FEATURE_MPLS, [](int unit) { return cfg_equip_get_bcm_has_mpls(static_cast<std::uint32_t>(unit)) > 0; },
        "MPLS"},
    {BOOTENV_FEATURE_L3, [](int unit) { return cfg_equip_get_bcm_has_l3(static_cast<std::uint32_t>(unit)) > 0; }, "L3"},
};

} // namespace

int bootenv_write_fbmp(std::uint32_t high, std::uint32_t low) noexcept
{
    status_fbmp_init(high, low, 0);
    char text[24];
    const std::uint64_t bitmap = std::uint64_t{high} << 32 | low;
    (void)std::snprintf(text, sizeof text, "%" PRIu64, bitmap);
    // Saving the old bitmap must not look like having stored the new one.
    return bootenv_set("FBMP", text) == 0 ? bootenv_grava() : -1;
}

void cfg_bootenv_check_chip_capability(int unit, std::uint64_t *fbmp) noexcept
{
    const auto requested = static_cast<std::uint32_t>(*fbmp);
    std::uint32_t kept = requested & BOOTENV_FEATURE_BIT1;
    for (const HardwareFeature &feature : hardware_features) {
        const std::uint32_t bits = requested & feature.bits;
        if (bits == 0) {
            continue;
        }
        if (feature.is_there(unit)) {
            kept |= bits;
        } else {
            std::printf("%s will not be enabled. This equipment doesn't support this feature.\n", feature.name);
        }
    }
    *fbmp = kept;
}

void status_fbmp_init(std::uint32_t /*high*/, std::uint32_t low, int at_start) noexcept
{
    std::uint8_t *const region = status_base();
    if (region == nullptr) {
        return;
    }
    if (at_start != 0) {
        const bool l3 = (low & BOOTENV_FEATURE_L3) != 0;
        const bool mpls = (low & BOOTENV_FEATURE_MPLS) != 0;
        store(region, layout::feature_applied, low);
        store(region, layout::feature_l3, l3 ? 1 : 0);
        store(region, layout::feature_mpls, l3 && mpls ? 1 : 0);
    }
    store(region, layout::feature_bit1, (low & BOOTENV_FEATURE_BIT1) != 0 ? 1 : 0);
    store(region, layout::feature_written, low);
}
