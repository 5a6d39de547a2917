// SPDX-License-Identifier: Apache-2.0
// A NOR flash partition as the kernel's MTD character device presents it, and the test bench that makes it fail.
//
// Its state is plain memory that several processes map, so a fault takes effect without asking anybody. Results are
// those of the device: a count, or a negative error number. Freestanding enough for a preloaded library: no C++
// run-time.
#ifndef SWITCHCFG_LAB_FLASH_NOR_FLASH_H
#define SWITCHCFG_LAB_FLASH_NOR_FLASH_H

#include <cstddef>
#include <cstdint>
#include <mtd/mtd-user.h>
#include <pthread.h>
#include <span>
#include <sys/types.h>

namespace switchlab {

struct FlashGeometry {
    std::uint32_t size = 64 * 1024;
    std::uint32_t block = 16 * 1024; // what is erased at once
    std::uint32_t page = 256;        // what is programmed at once

    constexpr bool valid() const { return page > 0 && block > 0 && block % page == 0 && size > 0 && size % block == 0; }
};

enum class FlashMechanism : std::uint32_t { fuse, preload };

// An operation is the erase of one block or the programming of one page; reading is none.
struct FlashState {
    std::uint32_t mark; // FlashState's own, says that it is complete
    FlashMechanism mechanism;
    FlashGeometry geometry;
    pthread_mutex_t lock;
    std::uint32_t erases; // asked for since the device was made, failed ones included
    std::uint32_t programs;
    std::uint32_t powered;
    std::uint32_t erase_fails_in; // 1 is the next one, 0 none
    std::uint32_t program_fails_in;
    std::uint32_t program_stops_half_way;
    std::uint32_t cut_armed;
    std::uint32_t cut_after; // operations that still succeed
    std::uint32_t cut_half_way;

    static constexpr std::uint32_t complete = 0x4e4f5231;
    void initialise(const FlashGeometry &geometry, FlashMechanism mechanism) noexcept;
};

class NorFlash {
  public:
    NorFlash(FlashState &state, std::uint8_t *content) noexcept : state_(&state), content_(content) {}

    // The device.
    int check_open() const noexcept; // 0, or -EIO without power
    ssize_t read(std::uint64_t position, std::span<std::uint8_t> out) const noexcept;
    ssize_t write(std::uint64_t position, std::span<const std::uint8_t> in) noexcept; // 1s become 0s, never back
    int erase(std::uint64_t start, std::uint64_t length) noexcept;                    // whole blocks, to 0xFF
    int info(mtd_info_user &info) const noexcept;

    // The test bench. The faults hit once; `count` 1 is the next operation of the kind.
    void fail_erase(unsigned count) noexcept;
    void fail_program(unsigned count, bool half_way = false) noexcept; // half_way: half of the page is programmed
    // `operations` more succeed; then the power goes, in the middle of the next one when half_way.
    void cut_after(unsigned operations, bool half_way = false) noexcept;
    void power_off() noexcept;
    void power_on() noexcept; // and forgets every fault not yet due
    bool powered() const noexcept { return load(state_->powered) != 0; }
    std::uint32_t operations() const noexcept { return load(state_->erases) + load(state_->programs); }
    void rot(std::uint32_t offset, unsigned bit) noexcept; // flips the bit

    const FlashState &state() const noexcept { return *state_; }
    const FlashGeometry &geometry() const noexcept { return state_->geometry; }
    std::span<std::uint8_t> content() const noexcept { return {content_, state_->geometry.size}; }

  private:
    enum class Outcome { done, half_done, refused };
    Outcome begin_erase() noexcept;
    Outcome begin_program() noexcept;
    bool cut_now(Outcome &outcome) noexcept;
    template<typename T>
    static T load(const T &field) noexcept
    {
        return __atomic_load_n(&field, __ATOMIC_RELAXED);
    }

    FlashState *state_;
    std::uint8_t *content_;
};

} // namespace switchlab

#endif
