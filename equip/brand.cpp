// SPDX-License-Identifier: Apache-2.0
// The brand under which the switch is sold, by the vendor code of the status region.
#include "equip/record.h"

#include <array>

namespace switchcfg {
namespace {

struct Brand {
    const char *vendor = "";
    const char *url = "";
    const char *hostname = "";
};

// Brands are product data: the rows are placeholders until an integrator puts the real ones in.
constexpr auto brands = [] {
    std::array<Brand, 16> rows{};
    rows[1] = {"Quayline Networks", "https://www.quayline.example", "TQ5200"};
    rows[2] = {"Quayline Carrier", "https://carrier.quayline.example", "TQ5200"};
    rows[7] = {"Northmere", "https://www.northmere.example", ""};
    rows[9] = {"Aldervale", "https://www.aldervale.example", "AV-5200"};
    rows[15] = {"Brightfell", "https://www.brightfell.example", "BF-5200"};
    return rows;
}();

const Brand &brand() noexcept
{
    const std::uint8_t *const region = status_base();
    const auto code = region != nullptr ? static_cast<std::uint32_t>(load(region, status_layout::vendor_code)) : 0;
    return brands[code < brands.size() ? code : 0];
}

} // namespace
} // namespace switchcfg

const char *cfg_equip_get_hostname() noexcept
{
    return switchcfg::brand().hostname;
}

const char *cfg_equip_get_vendor() noexcept
{
    return switchcfg::brand().vendor;
}

const char *cfg_equip_get_vendor_url() noexcept
{
    return switchcfg::brand().url;
}
