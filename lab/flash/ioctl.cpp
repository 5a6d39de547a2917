// SPDX-License-Identifier: Apache-2.0
#include "lab/flash/ioctl.h"

#include <cerrno>
#include <cstring>
#include <sys/ioctl.h>

namespace switchlab {
namespace {

template<typename Record>
Record from(const void *argument) noexcept
{
    Record record{};
    std::memcpy(&record, argument, sizeof record);
    return record;
}

template<typename Record>
int erase(NorFlash &flash, const void *argument, bool writable) noexcept
{
    if (!writable) {
        return -EPERM;
    }
    const auto range = from<Record>(argument);
    return flash.erase(range.start, range.length);
}

} // namespace

int flash_ioctl(NorFlash &flash, unsigned long request, void *argument, bool writable) noexcept
{
    switch (request) {
    case MEMGETINFO: {
        mtd_info_user info{};
        const int result = flash.info(info);
        std::memcpy(argument, &info, sizeof info);
        return result;
    }
    case MEMERASE:
        return erase<erase_info_user>(flash, argument, writable);
    case MEMERASE64:
        return erase<erase_info_user64>(flash, argument, writable);
    case MEMGETREGIONCOUNT: { // all erase blocks are alike
        const int regions = 0;
        std::memcpy(argument, &regions, sizeof regions);
        return 0;
    }
    case MEMGETBADBLOCK: { // NOR has no bad blocks
        const auto offset = from<__kernel_loff_t>(argument);
        return offset >= 0 && offset < flash.geometry().size ? 0 : -EINVAL;
    }
    case MEMLOCK:
    case MEMUNLOCK:
    case MEMISLOCKED:
        return -EOPNOTSUPP;
    default:
        return -ENOTTY;
    }
}

} // namespace switchlab
