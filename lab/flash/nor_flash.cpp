// SPDX-License-Identifier: Apache-2.0
#include "lab/flash/nor_flash.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace switchlab {
namespace {

class Hold {
  public:
    explicit Hold(pthread_mutex_t &lock) noexcept : lock_(lock)
    {
        // A process killed in the middle of an operation leaves what a power cut would leave.
        if (::pthread_mutex_lock(&lock_) == EOWNERDEAD) {
            ::pthread_mutex_consistent(&lock_);
        }
    }
    ~Hold() { ::pthread_mutex_unlock(&lock_); }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;

  private:
    pthread_mutex_t &lock_;
};

bool due(std::uint32_t &counter)
{
    return counter > 0 && --counter == 0;
}

} // namespace

void FlashState::initialise(const FlashGeometry &new_geometry, FlashMechanism new_mechanism) noexcept
{
    *this = {};
    geometry = new_geometry;
    mechanism = new_mechanism;
    powered = 1;
    pthread_mutexattr_t attributes;
    ::pthread_mutexattr_init(&attributes);
    ::pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    ::pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    ::pthread_mutex_init(&lock, &attributes);
    ::pthread_mutexattr_destroy(&attributes);
    mark = complete;
}

int NorFlash::check_open() const noexcept
{
    return powered() ? 0 : -EIO;
}

ssize_t NorFlash::read(std::uint64_t position, std::span<std::uint8_t> out) const noexcept
{
    const Hold hold{state_->lock};
    if (state_->powered == 0) {
        return -EIO;
    }
    const std::size_t size = state_->geometry.size;
    if (position >= size) {
        return 0;
    }
    const auto at = static_cast<std::size_t>(position);
    const std::size_t count = std::min(out.size(), size - at);
    std::memcpy(out.data(), content_ + at, count);
    return static_cast<ssize_t>(count);
}

ssize_t NorFlash::write(std::uint64_t position, std::span<const std::uint8_t> in) noexcept
{
    const Hold hold{state_->lock};
    const FlashGeometry &geometry = state_->geometry;
    if (state_->powered == 0) {
        return -EIO;
    }
    if (position >= geometry.size) {
        return -ENOSPC; // even for no bytes, as the MTD layer has it
    }
    const auto start = static_cast<std::size_t>(position);
    in = in.first(std::min(in.size(), geometry.size - start));
    for (std::size_t done = 0; done < in.size();) {
        const std::size_t at = start + done;
        const std::size_t count = std::min<std::size_t>(in.size() - done, geometry.page - at % geometry.page);
        const Outcome outcome = begin_program();
        const std::size_t programmed = outcome == Outcome::done ? count : outcome == Outcome::half_done ? count / 2 : 0;
        for (std::size_t i = 0; i < programmed; ++i) {
            content_[at + i] &= in[done + i];
        }
        if (outcome != Outcome::done) {
            return -EIO;
        }
        done += count;
    }
    return static_cast<ssize_t>(in.size());
}

int NorFlash::erase(std::uint64_t start, std::uint64_t length) noexcept
{
    const Hold hold{state_->lock};
    const FlashGeometry &geometry = state_->geometry;
    if (state_->powered == 0) {
        return -EIO;
    }
    if (start >= geometry.size || length > geometry.size - start || start % geometry.block != 0 ||
        length % geometry.block != 0) {
        return -EINVAL;
    }
    for (std::uint64_t block = start; block < start + length; block += geometry.block) {
        const Outcome outcome = begin_erase();
        const std::size_t erased = outcome == Outcome::done        ? geometry.block
                                   : outcome == Outcome::half_done ? geometry.block / 2
                                                                   : 0;
        std::memset(content_ + block, 0xFF, erased);
        if (outcome != Outcome::done) {
            return -EIO;
        }
    }
    return 0;
}

int NorFlash::info(mtd_info_user &info) const noexcept
{
    if (!powered()) {
        return -EIO;
    }
    info = {};
    info.type = MTD_NORFLASH;
    info.flags = MTD_CAP_NORFLASH;
    info.size = state_->geometry.size;
    info.erasesize = state_->geometry.block;
    info.writesize = 1;
    return 0;
}

bool NorFlash::cut_now(Outcome &outcome) noexcept
{
    if (state_->powered != 0 && state_->cut_armed != 0) {
        if (state_->cut_after > 0) {
            --state_->cut_after;
            return false;
        }
        outcome = state_->cut_half_way != 0 ? Outcome::half_done : Outcome::refused;
        state_->powered = 0;
        state_->cut_armed = 0;
        return true;
    }
    return state_->powered == 0;
}

NorFlash::Outcome NorFlash::begin_erase() noexcept
{
    Outcome outcome = Outcome::refused;
    if (cut_now(outcome)) {
        return outcome;
    }
    ++state_->erases;
    return due(state_->erase_fails_in) ? Outcome::refused : Outcome::done;
}

NorFlash::Outcome NorFlash::begin_program() noexcept
{
    Outcome outcome = Outcome::refused;
    if (cut_now(outcome)) {
        return outcome;
    }
    ++state_->programs;
    if (!due(state_->program_fails_in)) {
        return Outcome::done;
    }
    return state_->program_stops_half_way != 0 ? Outcome::half_done : Outcome::refused;
}

void NorFlash::fail_erase(unsigned count) noexcept
{
    const Hold hold{state_->lock};
    state_->erase_fails_in = count;
}

void NorFlash::fail_program(unsigned count, bool half_way) noexcept
{
    const Hold hold{state_->lock};
    state_->program_fails_in = count;
    state_->program_stops_half_way = half_way ? 1 : 0;
}

void NorFlash::cut_after(unsigned operations, bool half_way) noexcept
{
    const Hold hold{state_->lock};
    state_->cut_armed = 1;
    state_->cut_after = operations;
    state_->cut_half_way = half_way ? 1 : 0;
}

void NorFlash::power_off() noexcept
{
    const Hold hold{state_->lock};
    state_->powered = 0;
}

void NorFlash::power_on() noexcept
{
    const Hold hold{state_->lock};
    state_->powered = 1;
    state_->cut_armed = 0;
    state_->erase_fails_in = 0;
    state_->program_fails_in = 0;
}

void NorFlash::rot(std::uint32_t offset, unsigned bit) noexcept
{
    const Hold hold{state_->lock};
    content_[offset] = static_cast<std::uint8_t>(content_[offset] ^ (1U << bit));
}

} // namespace switchlab
