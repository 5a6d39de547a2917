// SPDX-License-Identifier: Apache-2.0
#include "lab/flash/files.h"

#include "util/owned.h"

#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace switchlab {
namespace {

// The whole file; null with errno when it cannot be mapped or is shorter than `least`.
void *map_file(const char *path, std::size_t least) noexcept
{
    const switchcfg::Descriptor fd{::open(path, O_RDWR | O_CLOEXEC)};
    struct stat about {};
    if (!fd || ::fstat(fd.get(), &about) != 0) {
        return nullptr;
    }
    if (about.st_size < static_cast<off_t>(least)) {
        errno = EINVAL;
        return nullptr;
    }
    void *const memory = ::mmap(nullptr, least, PROT_READ | PROT_WRITE, MAP_SHARED, fd.get(), 0);
    return memory == MAP_FAILED ? nullptr : memory;
}

} // namespace

std::optional<NorFlash> attach_flash() noexcept
{
    auto *const state = static_cast<FlashState *>(map_file(flash_state_path, sizeof(FlashState)));
    if (state == nullptr) {
        return std::nullopt;
    }
    if (state->mark == FlashState::complete && state->geometry.valid()) {
        if (void *const content = map_file(flash_image_path, state->geometry.size)) {
            return NorFlash{*state, static_cast<std::uint8_t *>(content)};
        }
    } else {
        errno = EINVAL;
    }
    const switchcfg::KeepErrno keep;
    ::munmap(state, sizeof *state);
    return std::nullopt;
}

} // namespace switchlab
