// SPDX-License-Identifier: Apache-2.0
// Saving the boot environment to flash, its backup, and the decision between the two at boot. The order of device and
// file operations is part of the interface: it decides what a power failure leaves behind.
#include "bootenv/image.h"
#include "bootenv/places.h"
#include "bootenv/shadow.h"
#include "core/status_region.h"
#include "util/owned.h"

#include <switchcfg/bootenv.h>
#include <switchcfg/files.h>
#include <switchcfg/flash.h>
#include <switchcfg/ports.h>
#include <switchcfg/process.h>
#include <switchcfg/robust_io.h>
#include <switchcfg/text.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>

using namespace switchcfg;
using namespace switchcfg::bootenv;

namespace {

constexpr int failed = -1;
constexpr int no_memory = -2;
constexpr int flash_failed = -26;

using Image = std::span<const std::uint8_t>;

// An image as read from the partition or the backup file.
class StoredImage {
  public:
    StoredImage(const char *path, bool is_flash) noexcept : bytes_(bootenv_read_env(path, &size_, is_flash ? 1 : 0)) {}

    explicit operator bool() const noexcept { return bytes_ != nullptr; }
    Image bytes() const noexcept { return {bytes_.get(), static_cast<std::size_t>(size_)}; }

  private:
    int size_ = 0;
    Malloced<std::uint8_t> bytes_;
};

bool write_image(int fd, Image area) noexcept
{
    const ChecksumWord checksum = checksum_word(area);
    return vx_write(fd, checksum.bytes, sizeof checksum.bytes) == 0 &&
           vx_write(fd, area.data(), static_cast<std::uint32_t>(area.size())) == 0;
}

int write_partition(Image area) noexcept
{
    const Descriptor flash{::open(partition, O_WRONLY | O_CLOEXEC)};
    if (!flash || mtd_flash_erase(flash.get()) != 0) {
        return flash_failed;
    }
    return write_image(flash.get(), area) ? 0 : failed;
}

// A new file that takes the place of the old one in one step, so that the old backup stays whole until the new one is.
int write_backup(Image area) noexcept
{
    {
        const Descriptor scratch{::open(backup_scratch, O_WRONLY | O_CREAT | O_TRUNC, 0600)};
        if (!scratch || !write_image(scratch.get(), area)) {
            return flash_failed;
        }
    }
    return std::rename(backup_scratch, backup_file) == 0 ? 0 : flash_failed;
}

bool is_own_environment() noexcept
{
    const auto snapshot = Snapshot::take(Snapshot::Room::for_reading);
    return snapshot && snapshot->variables().value_of(own_mark);
}

bool in_step() noexcept
{
    const StoredImage flash{partition, true};
    const StoredImage backup{backup_file, false};
    return flash && backup && std::ranges::equal(flash.bytes(), backup.bytes());
}

void restart() noexcept
{
    std::puts("Restoring bootloader environment");
    std::puts("System will reboot automatically");
    (void)std::fflush(stdout);
    (void)systemf("umount %s > /dev/null 2> /dev/null", backup_mount);
    ::sleep(2);
    (void)systemf("/sbin/shutdown -r now");
}

} // namespace

int bootenv_grava() noexcept
{
    if (status_base() == nullptr) {
        return failed;
    }
    const auto shadow = shadow_area();
    if (const int result = write_partition(shadow); result != 0) {
        return result;
    }
    const Malloced<std::uint8_t> written{static_cast<std::uint8_t *>(vxmemdup(shadow.data(), shadow.size()))};
    if (!written) {
        return no_memory;
    }
    // The erase passes over blocks that fail, so what flash holds now is what counts.
    shadow[0] = 0;
    if (bootenv_init() != 0) {
        return failed;
    }
    const Image area{written.get(), area_size};
    if (!std::ranges::equal(shadow, area)) {
        return flash_failed;
    }
    return cfg_equip_has_env_backup_tq5200() != 0 ? write_backup(area) : 0;
}

std::uint8_t *bootenv_read_env(const char *path, int *size_out, int is_flash) noexcept
{
    const Descriptor file{::open(path, O_RDONLY | O_CLOEXEC)};
    if (!file) {
        return nullptr;
    }
    const std::int64_t stored = is_flash != 0 ? mtd_flash_size(file.get()) : fd_size(file.get());
    if (stored <= 0) {
        return nullptr;
    }
    const auto size = static_cast<std::uint32_t>(std::min<std::int64_t>(stored, image_size));
    Malloced<std::uint8_t> image{static_cast<std::uint8_t *>(std::malloc(size))};
    if (!image || vx_read(file.get(), image.get(), size) != 0) {
        return nullptr;
    }
    *size_out = static_cast<int>(size);
    return image.release();
}

int bootenv_boot_to_flash() noexcept
{
    if (!is_own_environment()) {
        // Neither result counts: where the folder of the backup is still missing, the save ends with an error although
        // flash is written.
        (void)bootenv_set(own_mark, "0");
        (void)bootenv_grava();
    }
    if (::mkdir(backup_folder, 0700) != 0 && errno != EEXIST) {
        return flash_failed;
    }
    const StoredImage flash{partition, true};
    if (!flash) {
        return flash_failed;
    }
    const Image image = flash.bytes();
    return file_write(backup_file, image.data(), static_cast<std::uint32_t>(image.size())) == 0 ? 0 : flash_failed;
}

int bootenv_flash_to_boot() noexcept
{
    const StoredImage backup{backup_file, false};
    if (!backup || !checksum_holds(backup.bytes())) {
        return flash_failed;
    }
    const Image image = backup.bytes();
    const Descriptor flash{::open(partition, O_WRONLY | O_DSYNC)};
    if (!flash) {
        return flash_failed;
    }
    const int size = mtd_flash_size(flash.get());
    if (size < 0 || image.size() > static_cast<std::size_t>(size) || mtd_flash_erase(flash.get()) != 0) {
        return flash_failed;
    }
    return vx_write(flash.get(), image.data(), static_cast<std::uint32_t>(image.size())) == 0 ? 0 : flash_failed;
}

int bootenv_backup() noexcept
{
    if (file_exists(backup_file) && file_size(backup_file) > 0) {
        if (is_own_environment()) {
            if (in_step()) {
                return 0;
            }
        } else if (bootenv_flash_to_boot() == 0) {
            restart();
            return -1;
        }
    }
    return bootenv_boot_to_flash();
}
