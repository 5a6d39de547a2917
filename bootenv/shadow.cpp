// SPDX-License-Identifier: Apache-2.0
// Loading the shadow of the boot environment, reading it and changing it.
#include "bootenv/shadow.h"

#include "bootenv/places.h"
#include "core/status_region.h"

#include <switchcfg/bootenv.h>
#include <switchcfg/flash.h>
#include <switchcfg/robust_io.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <utility>

static_assert(BOOTENV_IMAGE_SIZE == switchcfg::bootenv::image_size);
static_assert(BOOTENV_VARIABLES_SIZE == switchcfg::bootenv::Variables::most);

namespace switchcfg::bootenv {
namespace {

namespace layout = status_layout;

// Another process may have stored anything in the length word.
std::size_t used_of_shadow() noexcept
{
    return std::min<std::size_t>(load(status_base(), layout::boot_environment_length), area_size);
}

// The first byte goes last: it tells the other processes that all the rest is there.
void fill_shadow(std::span<const char> texts) noexcept
{
    const auto area = shadow_area();
    if (!texts.empty()) {
        std::memcpy(area.data() + 1, texts.data() + 1, texts.size() - 1);
    }
    const std::size_t padding = std::max<std::size_t>(texts.size(), 1);
    std::memset(area.data() + padding, 0, area_size - padding);
    store(status_base(), layout::boot_environment_length, static_cast<std::uint32_t>(texts.size() + 1));
    std::atomic_thread_fence(std::memory_order_release);
    area[0] = texts.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(texts[0]);
}

} // namespace

std::span<std::uint8_t, area_size> shadow_area() noexcept
{
    return bytes(status_base(), layout::boot_environment);
}

Snapshot::Snapshot(Malloced<char> memory, std::size_t room, std::size_t used) noexcept
    : memory_(std::move(memory)), variables_({memory_.get(), room}, used)
{
}

std::optional<Snapshot> Snapshot::take(Room room) noexcept
{
    if (status_base() == nullptr) {
        return std::nullopt;
    }
    const std::size_t used = used_of_shadow();
    const std::size_t size = (room == Room::for_reading ? used : area_size) + 1;
    Malloced<char> memory{static_cast<char *>(std::malloc(size))};
    if (!memory) {
        return std::nullopt;
    }
    std::memcpy(memory.get(), shadow_area().data(), used);
    return Snapshot{std::move(memory), size, used};
}

void Snapshot::publish() const noexcept
{
    fill_shadow(variables_.bytes());
}

} // namespace switchcfg::bootenv

using namespace switchcfg;
using namespace switchcfg::bootenv;

int bootenv_init() noexcept
{
    if (status_base() == nullptr) {
        return -1;
    }
    if (shadow_area()[0] != 0) {
        return 0;
    }
    int size = 0;
    const Malloced<std::uint8_t> image{bootenv_read_env(partition, &size, 1)};
    if (!image || static_cast<std::size_t>(size) < checksum_size) {
        return -1;
    }
    const std::span<const std::uint8_t> area{
        image.get() + checksum_size, static_cast<std::size_t>(size) - checksum_size};
    const std::optional<std::size_t> used = used_length(area);
    if (!used) {
        return -1;
    }
    fill_shadow({reinterpret_cast<const char *>(area.data()), *used - 1});
    return 0;
}

char *bootenv_get(const char *name) noexcept
{
    const auto snapshot = Snapshot::take(Snapshot::Room::for_reading);
    if (name == nullptr || !snapshot) {
        return nullptr;
    }
    const auto value = snapshot->variables().value_of(name);
    return value ? ::strdup(value->data()) : nullptr;
}

int bootenv_get_all(char ***list_out, int *count_out) noexcept
{
    const auto snapshot = Snapshot::take(Snapshot::Room::for_reading);
    if (!snapshot) {
        return -1;
    }
    const Variables &variables = snapshot->variables();
    const std::size_t count = variables.count();
    if (count == 0) {
        *list_out = nullptr;
        *count_out = 0;
        return 0;
    }
    Malloced<char *> list{static_cast<char **>(std::malloc(count * sizeof(char *)))};
    if (!list) {
        return -1;
    }
    std::size_t copied = 0;
    for (std::size_t place = 0; place < variables.size(); ++copied) {
        const std::string_view text = variables.text_at(place);
        list.get()[copied] = ::strdup(text.data());
        if (list.get()[copied] == nullptr) {
            std::for_each_n(list.get(), copied, [](char *copy) { std::free(copy); });
            return -1;
        }
        place += text.size() + 1;
    }
    *list_out = list.release();
    *count_out = static_cast<int>(count);
    return 0;
}

int bootenv_set(const char *name, const char *value) noexcept
{
    auto snapshot = Snapshot::take(Snapshot::Room::for_changes);
    if (name == nullptr || !snapshot) {
        return -1;
    }
    if (value == nullptr) {
        snapshot->variables().remove(name);
    } else if (!snapshot->variables().set(name, value)) {
        return -1;
    }
    snapshot->publish();
    return 0;
}
