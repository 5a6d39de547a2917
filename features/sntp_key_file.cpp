// SPDX-License-Identifier: Apache-2.0
// The key file. Its daemon may read it at any moment, and the power may go, so it is replaced as a whole: a new file
// beside it takes its name once it is complete.
#include "features/sntp_records.h"
#include "util/owned.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <switchcfg/robust_io.h>
#include <sys/stat.h>

namespace switchcfg::sntp {
namespace {

constexpr std::size_t line_size = 11 + 1 + 11 + 1 + 11 + 2;
constexpr mode_t secret = S_IRUSR | S_IWUSR;
constexpr mode_t group_readable = secret | S_IRGRP;

struct Content {
    char text[SNTP_SLOTS * line_size + 1];
    std::uint32_t length = 0;
};

Content content_of_configuration() noexcept
{
    Content content;
    for (int slot = 0; slot < SNTP_SLOTS; ++slot) {
        const std::uint32_t id = key_id_in(slot);
        if (id == 0) {
            continue;
        }
        // The precision holds also when somebody has stored a text without its end.
        const int length = std::snprintf(content.text + content.length, line_size + 1, "%11lu\t%11.*s\t%11.*s \n",
            static_cast<unsigned long>(id), SNTP_KEY_TEXT_SIZE, cfg_get_sntp_key_type(slot), SNTP_KEY_TEXT_SIZE,
            cfg_get_sntp_key_value(slot));
        content.length += static_cast<std::uint32_t>(length);
    }
    return content;
}

bool write_all(int fd, const Content &content) noexcept
{
    return content.length == 0 || vx_write_nointr(fd, content.text, content.length) == 0;
}

int write_in_place(const Content &content) noexcept
{
    const Descriptor file{::open(SNTP_KEY_FILE, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, secret)};
    struct stat present {};
    if (file && ::fstat(file.get(), &present) == 0 && S_ISREG(present.st_mode)) {
        (void)::fchmod(file.get(), present.st_mode & group_readable); // as far as it is ours
    }
    return file && write_all(file.get(), content) ? 0 : result::file_failed;
}

// Owner and group of the file that is there, and of its rights those that keep a secret. Where the group cannot be
// given away, it gets no rights.
bool take_rights_of(int fd, const struct stat &present) noexcept
{
    const bool owned = ::fchown(fd, present.st_uid, present.st_gid) == 0;
    return ::fchmod(fd, present.st_mode & (owned ? group_readable : secret)) == 0;
}

enum class Replaced { done, failed, not_possible };

Replaced replace(const char *path, const struct stat *present, const Content &content) noexcept
{
    char beside[PATH_MAX + 16];
    (void)std::snprintf(beside, sizeof beside, "%s.%d", path, static_cast<int>(::gettid()));
    (void)::unlink(beside); // of a process that was ended half way, long ago
    const Descriptor file{::open(beside, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, secret)};
    if (!file) {
        return errno == ENOSPC || errno == EDQUOT ? Replaced::failed : Replaced::not_possible;
    }
    const bool complete = (present == nullptr || take_rights_of(file.get(), *present)) &&
                          write_all(file.get(), content) && ::fsync(file.get()) == 0;
    if (complete && ::rename(beside, path) == 0) {
        return Replaced::done;
    }
    (void)::unlink(beside);
    return complete ? Replaced::not_possible : Replaced::failed; // a full device must not cost the old keys too
}

} // namespace

int write_key_file() noexcept
{
    const KeepErrno keep;
    const Content content = content_of_configuration();
    struct stat present {};
    char target[PATH_MAX]; // where links lead to: they stay
    Replaced replaced = Replaced::not_possible;
    if (::stat(SNTP_KEY_FILE, &present) == 0) {
        if (S_ISREG(present.st_mode)) {
            // Who may write the folder but not the file must not replace it either.
            const Descriptor writable{::open(SNTP_KEY_FILE, O_WRONLY | O_CLOEXEC)};
            if (!writable) {
                return result::file_failed;
            }
            if (::realpath(SNTP_KEY_FILE, target) != nullptr) {
                replaced = replace(target, &present, content);
            }
        }
    } else if (struct stat link{}; ::lstat(SNTP_KEY_FILE, &link) != 0) { // not a link that leads nowhere
        replaced = replace(SNTP_KEY_FILE, nullptr, content);
    }
    if (replaced == Replaced::not_possible) {
        return write_in_place(content);
    }
    return replaced == Replaced::done ? 0 : result::file_failed;
}

} // namespace switchcfg::sntp
