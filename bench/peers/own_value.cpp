// SPDX-License-Identifier: Apache-2.0
#include "bench/peers/own_value.h"

#include <cstdlib>
#include <switchcfg/config_region.h>
#include <switchcfg/locks.h>
#include <switchcfg/mapped_file.h>
#include <unistd.h>

#include "core/config_layout.h"

namespace switchcfg::bench {
namespace {

constexpr auto field = config_layout::sntp_interval;
constexpr std::size_t page = 4096;

} // namespace

Folder::Folder(Where where)
    : path_((where == Where::memory ? std::filesystem::path{"/tmp"} : std::filesystem::current_path()) / "bench-XXXXXX")
{
    if (::mkdtemp(path_.data()) == nullptr) {
        std::abort();
    }
}

Folder::~Folder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

OwnValue::OwnValue(const std::string &folder)
    : region_(static_cast<std::uint8_t *>(file_map_create((folder + "/running").c_str(), CFG_REGION_SIZE))),
      lock_(lock_create((folder + "/lock").c_str()))
{
    if (region_ == nullptr || lock_ < 0) {
        std::abort();
    }
}

OwnValue::~OwnValue()
{
    file_unmap(region_, CFG_REGION_SIZE);
    lock_destroy(lock_);
}

bool OwnValue::read()
{
    benchmark::DoNotOptimize(region_);
    benchmark::DoNotOptimize(load(region_, field));
    return true;
}

bool OwnValue::write()
{
    if (lock_write(lock_) != 0) {
        return false;
    }
    store(region_, field, static_cast<decltype(load(region_, field))>(++next_));
    return lock_free(lock_) == 0;
}

bool OwnValue::write_durably()
{
    return write() && file_sync(region_ + field.offset / page * page, page) == 0;
}

} // namespace switchcfg::bench
