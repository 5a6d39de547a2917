// SPDX-License-Identifier: Apache-2.0
// The process manager's client.
#include <switchcfg/pm_client.h>

#include <cstddef>

static_assert(sizeof(pm_request) == 44);
static_assert(offsetof(pm_request, command) == 0);
static_assert(offsetof(pm_request, value) == 4);
static_assert(offsetof(pm_request, result) == 8);
static_assert(offsetof(pm_request, name) == 12);

namespace {

pm_client_settings client{};

} // namespace

void pm_client_init(const pm_client_settings *settings) noexcept
{
    client = settings != nullptr ? *settings : pm_client_settings{};
}

void pm_client_finish() noexcept {}
