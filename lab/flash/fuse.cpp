// SPDX-License-Identifier: Apache-2.0
#include "lab/flash/fuse.h"

#include "lab/flash/files.h"
#include "lab/flash/ioctl.h"
#include "lab/mounts.h"
#include "lab/refusal.h"

#define FUSE_USE_VERSION 35
#include <fuse_lowlevel.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace switchlab {
namespace {

constexpr double forever = 1e9; // nothing about the file ever changes behind the kernel's back

NorFlash &flash_of(fuse_req_t request)
{
    return *static_cast<NorFlash *>(::fuse_req_userdata(request));
}

struct stat attributes(const NorFlash &flash)
{
    struct stat about {};
    about.st_ino = FUSE_ROOT_ID;
    about.st_mode = S_IFREG | 0600;
    about.st_nlink = 1;
    about.st_size = flash.geometry().size; // what SEEK_END goes by
    return about;
}

void get_attributes(fuse_req_t request, fuse_ino_t /*node*/, fuse_file_info * /*file*/)
{
    const struct stat about = attributes(flash_of(request));
    ::fuse_reply_attr(request, &about, forever);
}

// A device is not truncated by a shell's ">".
void set_attributes(fuse_req_t request, fuse_ino_t node, struct stat * /*wanted*/, int /*which*/, fuse_file_info *file)
{
    get_attributes(request, node, file);
}

void open_device(fuse_req_t request, fuse_ino_t /*node*/, fuse_file_info *file)
{
    if (const int error = flash_of(request).check_open(); error != 0) {
        ::fuse_reply_err(request, -error);
        return;
    }
    file->fh = static_cast<std::uint64_t>(file->flags & O_ACCMODE);
    file->direct_io = 1; // each read and write arrives as the program made it
    ::fuse_reply_open(request, file);
}

void read_device(fuse_req_t request, fuse_ino_t /*node*/, std::size_t size, off_t position, fuse_file_info * /*file*/)
{
    std::vector<std::uint8_t> buffer(size);
    const ssize_t got = flash_of(request).read(static_cast<std::uint64_t>(position), buffer);
    if (got < 0) {
        ::fuse_reply_err(request, static_cast<int>(-got));
    } else {
        ::fuse_reply_buf(request, reinterpret_cast<const char *>(buffer.data()), static_cast<std::size_t>(got));
    }
}

void write_device(fuse_req_t request, fuse_ino_t /*node*/, const char *bytes, std::size_t size, off_t position,
    fuse_file_info * /*file*/)
{
    const ssize_t put = flash_of(request).write(
        static_cast<std::uint64_t>(position), {reinterpret_cast<const std::uint8_t *>(bytes), size});
    if (put < 0) {
        ::fuse_reply_err(request, static_cast<int>(-put));
    } else {
        ::fuse_reply_write(request, static_cast<std::size_t>(put));
    }
}

void sync_device(fuse_req_t request, fuse_ino_t /*node*/, int /*data_only*/, fuse_file_info * /*file*/)
{
    ::fuse_reply_err(request, EINVAL); // MTD devices have no fsync, and a program that needs one should notice here
}

void control_device(fuse_req_t request, fuse_ino_t /*node*/, unsigned command, void * /*argument*/,
    fuse_file_info *file, unsigned /*flags*/, const void *in, std::size_t in_size, std::size_t out_size)
{
    std::array<std::uint8_t, flash_ioctl_max> argument{};
    if (in_size > argument.size() || out_size > argument.size()) {
        ::fuse_reply_err(request, ENOTTY);
        return;
    }
    if (in_size > 0) {
        std::memcpy(argument.data(), in, in_size);
    }
    const int result = flash_ioctl(flash_of(request), command, argument.data(), file->fh != O_RDONLY);
    if (result < 0) {
        ::fuse_reply_err(request, -result);
    } else {
        ::fuse_reply_ioctl(request, result, argument.data(), out_size);
    }
}

fuse_lowlevel_ops operations()
{
    fuse_lowlevel_ops table{};
    table.getattr = get_attributes;
    table.setattr = set_attributes;
    table.open = open_device;
    table.read = read_device;
    table.write = write_device;
    table.fsync = sync_device;
    table.ioctl = control_device;
    return table;
}

[[noreturn]] void serve(switchcfg::Descriptor connection)
{
    std::optional<NorFlash> flash = attach_flash();
    const fuse_lowlevel_ops table = operations();
    char name[] = "switchlab";
    char *arguments[] = {name, nullptr};
    fuse_args options{1, arguments, 0};
    fuse_session *const session = flash ? ::fuse_session_new(&options, &table, sizeof table, &*flash) : nullptr;
    // libfuse takes over a connection that somebody else mounted under this name.
    const std::string mount_point = "/dev/fd/" + std::to_string(connection.release());
    if (session != nullptr && ::fuse_session_mount(session, mount_point.c_str()) == 0) {
        ::fuse_session_loop(session);
    }
    ::_exit(1);
}

} // namespace

switchcfg::Descriptor mount_flash_fuse()
{
    switchcfg::Descriptor connection{::open("/dev/fuse", O_RDWR | O_CLOEXEC)};
    if (connection) {
        make_file(flash_device_path, 0600);
        const std::string options = "fd=" + std::to_string(connection.get()) +
                                    ",rootmode=100600,user_id=0,group_id=0,allow_other,default_permissions";
        if (::mount("switchlab", flash_device_path, "fuse", MS_NOSUID | MS_NODEV, options.c_str()) != 0) {
            connection.reset();
            const switchcfg::KeepErrno keep;
            ::unlink(flash_device_path);
        }
    }
    return connection;
}

void start_flash_fuse(switchcfg::Descriptor connection)
{
    const pid_t child = ::fork();
    if (child < 0) {
        throw refusal("fork", "");
    }
    if (child == 0) {
        serve(std::move(connection));
    }
}

} // namespace switchlab
