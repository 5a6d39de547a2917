// SPDX-License-Identifier: Apache-2.0
// switchcfg init: create and check the files that all processes of the switch share.
#include "tools/attach.h"
#include "tools/command_line/failure.h"
#include "tools/command_line/output.h"
#include "tools/commands.h"

#include <filesystem>
#include <switchcfg/config_region.h>
#include <switchcfg/files.h>
#include <switchcfg/status.h>

namespace switchcfg::tool {
namespace {

struct RegionFile {
    const char *path;
    std::uint32_t size;
};

constexpr RegionFile region_files[] = {
    {CFG_RUNNING_PATH, CFG_REGION_SIZE},
    {CFG_DEFAULT_PATH, CFG_REGION_SIZE},
    {STATUS_PATH, STATUS_REGION_SIZE},
};

void init()
{
    std::error_code refused;
    const auto folder = std::filesystem::path{CFG_RUNNING_PATH}.parent_path();
    std::filesystem::create_directories(folder, refused);
    if (refused) {
        throw Failure{folder.string() + ": cannot make the folder: " + refused.message()};
    }
    bool existed[std::size(region_files)];
    for (std::size_t i = 0; i < std::size(region_files); ++i) {
        existed[i] = file_exists(region_files[i].path) == 1;
    }
    attach();

    Json json = Json::array();
    Table table{{"FILE", "BYTES", "NEEDED", "STATE"}};
    bool short_file = false;
    for (std::size_t i = 0; i < std::size(region_files); ++i) {
        const RegionFile &file = region_files[i];
        const auto size = file_size(file.path);
        const bool enough = size >= file.size;
        short_file = short_file || !enough;
        const char *const state = !enough ? "too short" : existed[i] ? "present" : "created";
        table.add({file.path, std::to_string(size), std::to_string(file.size), state});
        json.push_back({{"file", file.path}, {"bytes", size}, {"needed", file.size}, {"state", state}});
    }
    print(json, [&] { table.print(); });
    if (short_file) {
        throw Failure{"a region file is shorter than its record"};
    }
}

} // namespace

void add_init_command(CLI::App &app)
{
    app.add_subcommand("init", "Create and check the files that all processes share")->callback(init);
}

} // namespace switchcfg::tool
