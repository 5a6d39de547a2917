// SPDX-License-Identifier: Apache-2.0
// Answers that the routing stack writes to files.
#include "features/routing_codes.h"
#include "util/owned.h"

#include <switchcfg/debug.h>
#include <switchcfg/files.h>
#include <switchcfg/routing.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <span>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace switchcfg {
namespace {

enum FileCode { bad_argument = -7, text_too_long = -32, file_error = -44 };

// The folder of one request. Everything in it goes when the object goes.
class ResultFolder {
  public:
    explicit ResultFolder(std::uint32_t number) noexcept
    {
        char name[sizeof path_ + 1];
        (void)std::snprintf(path_, sizeof path_, "%s%u", DC_RESULT_FOLDER, number);
        (void)std::snprintf(name, sizeof name, "%s%u/", DC_RESULT_FOLDER, number);
        if (::mkdir(name, 0700) != 0 && errno != EEXIST) {
            return;
        }
        // /tmp is everyone's: what stands there already may be somebody's link or folder.
        Descriptor folder{::open(path_, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)};
        struct stat info;
        if (folder && ::fstat(folder.get(), &info) == 0 && info.st_uid == ::geteuid()) {
            folder_ = std::move(folder);
            clear();
        }
    }
    ~ResultFolder()
    {
        if (folder_) {
            const KeepErrno keep;
            clear();
            ::rmdir(path_);
        }
    }
    ResultFolder(const ResultFolder &) = delete;
    ResultFolder &operator=(const ResultFolder &) = delete;

    explicit operator bool() const noexcept { return static_cast<bool>(folder_); }

    // Not open with errno ENOENT behind the last file.
    Descriptor open(unsigned sequence) const noexcept
    {
        char name[sizeof DC_RESULT_FILE + 12];
        (void)std::snprintf(name, sizeof name, "%s.%u", DC_RESULT_FILE, sequence);
        return Descriptor{::openat(folder_.get(), name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)};
    }

  private:
    void clear() const noexcept
    {
        int fd = folder_.get();
        const auto remove = [](const char *name, void *folder) {
            (void)::unlinkat(*static_cast<const int *>(folder), name, 0);
            return 0;
        };
        (void)dir_iterate(path_, remove, &fd);
    }

    char path_[sizeof DC_RESULT_FOLDER + 10];
    Descriptor folder_;
};

// Collects the text, keeping room for the terminator.
class Text {
  public:
    Text(char *place, std::uint32_t size) noexcept : room_(place, size - 1) { *place = '\0'; }
    std::uint32_t used() const noexcept { return used_; }

    // 0 or a code.
    int add(int file) noexcept
    {
        struct stat info;
        if (::fstat(file, &info) != 0 || !S_ISREG(info.st_mode)) {
            return file_error; // what is no file may have no end
        }
        for (;;) {
            char probe;
            const std::span<char> left = room_.subspan(used_);
            const ssize_t count = ::read(file, left.empty() ? &probe : left.data(), left.empty() ? 1 : left.size());
            if (count <= 0) {
                return count == 0 ? 0 : file_error;
            }
            if (left.empty()) {
                return text_too_long;
            }
            used_ += static_cast<std::uint32_t>(count);
            room_.data()[used_] = '\0';
        }
    }

  private:
    std::span<char> room_;
    std::uint32_t used_ = 0;
};

int read_files(const ResultFolder &folder, Text &text) noexcept
{
    for (unsigned sequence = 0;; ++sequence) {
        const Descriptor file = folder.open(sequence);
        if (!file) {
            return errno == ENOENT ? 0 : file_error;
        }
        if (const int failed = text.add(file.get()); failed != 0) {
            return failed;
        }
    }
}

} // namespace
} // namespace switchcfg

int cfg_dc_read_data_from_file(std::uint32_t command, const void *payload, std::uint32_t length, std::uint32_t number,
    char *text, std::uint32_t size, std::uint32_t *used)
{
    using namespace switchcfg;
    if (used != nullptr) {
        *used = 0;
    }
    if (text == nullptr || size == 0) {
        return bad_argument;
    }
    Text collected{text, size};
    const ResultFolder folder{number};
    if (!folder) {
        return file_error;
    }
    const int status = dc_socket_send(command, payload, length, nullptr, nullptr);
    if (status != DC_RESULT_OK) {
        debug_process(DC_DEBUG_CLASS, "%s():%d | Unexpected return rc=(%d) from message %s",
            "cfg_dc_read_data_from_file", __LINE__, status, dc_get_cmd_id_name(command));
        return is_library_code(status) ? status : cfg_dc_cvt_dcl_to_cfg_error_code(status);
    }
    const int result = read_files(folder, collected);
    if (used != nullptr) {
        *used = collected.used();
    }
    return result;
}
