// SPDX-License-Identifier: Apache-2.0
// MTD requests of a flash partition.
#include <switchcfg/flash.h>

#include <cerrno>
#include <cstdint>
#include <mtd/mtd-user.h>
#include <sys/ioctl.h>

// The records of the two requests are the kernel's on every machine, 32- and 64-bit alike.
static_assert(sizeof(mtd_info_user) == 32 && sizeof(erase_info_user) == 8);

int mtd_flash_size(int fd) noexcept
{
    mtd_info_user info{};
    const int result = ::ioctl(fd, MEMGETINFO, &info);
    return result < 0 ? result : static_cast<int>(info.size);
}

int mtd_flash_sector_size(int fd) noexcept
{
    mtd_info_user info{};
    const int result = ::ioctl(fd, MEMGETINFO, &info);
    return result < 0 ? result : static_cast<int>(info.erasesize);
}

int mtd_flash_sector_num(int fd) noexcept
{
    mtd_info_user info{};
    const int result = ::ioctl(fd, MEMGETINFO, &info);
    if (result < 0) {
        return result;
    }
    if (info.erasesize == 0) { // a RAM or ROM device
        errno = EINVAL;
        return -1;
    }
    return static_cast<int>(info.size / info.erasesize);
}

int mtd_flash_erase_pos_size(int fd, std::uint32_t start, std::uint32_t length) noexcept
{
    erase_info_user range{start, length};
    return ::ioctl(fd, MEMERASE, &range);
}

int mtd_flash_erase(int fd) noexcept
{
    mtd_info_user info{};
    if (::ioctl(fd, MEMGETINFO, &info) < 0) {
        return -1;
    }
    if (info.erasesize == 0) {
        errno = EINVAL;
        return -1;
    }
    // 64 bits, so that the offset ends beyond a device of up to 4 GiB instead of starting over.
    for (std::uint64_t offset = 0; offset < info.size; offset += info.erasesize) {
        // Callers write and read back the whole image, which finds a block that stayed dirty.
        (void)mtd_flash_erase_pos_size(fd, static_cast<std::uint32_t>(offset), info.erasesize);
    }
    return 0;
}
