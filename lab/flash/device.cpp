// SPDX-License-Identifier: Apache-2.0
#include "lab/flash/device.h"

#include "lab/flash/files.h"
#include "lab/flash/fuse.h"
#include "lab/mounts.h"
#include "lab/refusal.h"
#include "util/owned.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace switchlab {
namespace {

namespace fs = std::filesystem;
using switchcfg::Descriptor;

void fill_erased(int fd, std::uint32_t size, const std::string &path)
{
    const std::vector<std::uint8_t> erased(size, 0xFF);
    if (::write(fd, erased.data(), erased.size()) != static_cast<ssize_t>(size)) {
        throw refusal("write", path);
    }
}

void make_files(const FlashRequest &request, FlashMechanism mechanism)
{
    make_folder(flash_folder_path, 0755);
    const Descriptor image{::open(flash_image_path, O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
    if (!image) {
        throw refusal("create", flash_image_path);
    }
    if (request.image.empty()) {
        fill_erased(image.get(), request.geometry.size, flash_image_path);
    } else {
        bind_mount(request.image.c_str(), flash_image_path);
    }
    FlashState state;
    state.initialise(request.geometry, mechanism);
    const Descriptor file{::open(flash_state_path, O_RDWR | O_CREAT | O_CLOEXEC, 0600)};
    if (!file || ::write(file.get(), &state, sizeof state) != static_cast<ssize_t>(sizeof state)) {
        throw refusal("write", flash_state_path);
    }
}

// Beside the program in a build folder, in the library folder where it is installed.
std::string preload_library()
{
    std::error_code ignored;
    const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    const fs::path beside = folder / SWITCHLAB_PRELOAD_NAME;
    return fs::exists(beside, ignored) ? beside.string()
                                       : (folder / SWITCHLAB_PRELOAD_INSTALLED).lexically_normal().string();
}

void add_to_environment(const char *name, const std::string &value, char separator)
{
    const char *const old = std::getenv(name);
    const std::string all = old == nullptr || *old == '\0' ? value : value + separator + old;
    ::setenv(name, all.c_str(), 1);
}

void preload_into_command(const std::string &library)
{
    if (::access(library.c_str(), R_OK) != 0) {
        throw refusal("access", library, "the flash device needs this library where FUSE cannot be used");
    }
    add_to_environment("LD_PRELOAD", library, ':');
    // A program built with the address sanitizer would refuse to start behind any preloaded library.
    add_to_environment("ASAN_OPTIONS", "verify_asan_link_order=0", ':');
    if (::symlink(flash_image_path, flash_device_path) != 0) {
        throw refusal("symlink", flash_device_path);
    }
}

} // namespace

void prepare_flash(FlashRequest &request)
{
    request.library = preload_library();
    request.geometry.size = request.size.value_or(request.geometry.size);
    if (!request.image.empty()) {
        request.image = fs::absolute(request.image).lexically_normal().string();
        const Descriptor fd{::open(request.image.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)};
        struct stat about {};
        if (!fd || ::fstat(fd.get(), &about) != 0) {
            throw refusal("open", request.image);
        }
        if (about.st_size == 0) {
            fill_erased(fd.get(), request.geometry.size, request.image);
        } else if (!request.size && about.st_size <= INT32_MAX) {
            request.geometry.size = static_cast<std::uint32_t>(about.st_size); // the image knows its partition best
        } else if (about.st_size != static_cast<off_t>(request.geometry.size)) {
            errno = EINVAL;
            throw refusal("--flash-image", request.image,
                "the file has " + std::to_string(about.st_size) + " bytes, the partition " +
                    std::to_string(request.geometry.size));
        }
    }
    if (!request.geometry.valid()) {
        errno = EINVAL;
        throw refusal("--flash", std::to_string(request.geometry.size) + " bytes",
            "a partition is a whole number of erase blocks (" + std::to_string(request.geometry.block) +
                " bytes), and these of pages (" + std::to_string(request.geometry.page) + " bytes)");
    }
}

void start_flash_device(const FlashRequest &request)
{
    Descriptor connection;
    if (request.mechanism != FlashMechanism::preload) {
        connection = mount_flash_fuse();
        if (!connection && request.mechanism == FlashMechanism::fuse) {
            throw refusal("FUSE mount on", flash_device_path,
                "/dev/fuse must be there and open to this user; without --flash-via fuse a preloaded library takes its "
                "place");
        }
    }
    make_files(request, connection ? FlashMechanism::fuse : FlashMechanism::preload);
    if (connection) {
        start_flash_fuse(std::move(connection));
    } else {
        preload_into_command(request.library);
    }
}

} // namespace switchlab
