// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/loggerd/store.h"

#include <switchcfg/robust_io.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace switchlab::loggerd {

namespace {

// Drops whole lines from the front until a quarter of the room is free, so that a full store does not drop at each
// line.
void make_room(std::string &lines, std::size_t limit)
{
    if (lines.size() <= limit) {
        return;
    }
    const std::size_t end_of_line = lines.find('\n', lines.size() - limit / 4 * 3);
    lines.erase(0, end_of_line == std::string::npos ? lines.size() : end_of_line + 1);
}

// Whole, or not at all: where the file system is full, half a line would run into the next one.
bool write_file(const std::string &path, int flags, std::string_view text)
{
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | flags, 0644);
    if (fd < 0) {
        return false;
    }
    struct stat before {};
    const bool written =
        ::fstat(fd, &before) == 0 && vx_write_nointr(fd, text.data(), static_cast<std::uint32_t>(text.size())) == 0;
    if (!written) {
        (void)!::ftruncate(fd, before.st_size);
    }
    ::close(fd);
    return written;
}

} // namespace

Store::Store(std::string name, std::size_t limit, std::string path)
    : name_(std::move(name)), limit_(limit), path_(std::move(path))
{
}

void Store::add(std::string_view line)
{
    if (!path_.empty()) {
        add_to_file(line);
        return;
    }
    lines_ += line;
    lines_ += '\n';
    make_room(lines_, limit_);
}

void Store::add_to_file(std::string_view line)
{
    std::string whole{line};
    whole += '\n';
    if (!write_file(path_, O_APPEND, whole)) {
        return;
    }
    struct stat info {};
    if (::stat(path_.c_str(), &info) != 0 || static_cast<std::size_t>(info.st_size) <= limit_) {
        return;
    }
    std::string kept = text().value_or("");
    make_room(kept, limit_);
    const std::string shorter = path_ + ".new"; // the old file stays whole until the new one is
    if (write_file(shorter, O_TRUNC, kept)) {
        (void)std::rename(shorter.c_str(), path_.c_str());
    }
}

std::optional<std::string> Store::text() const
{
    if (path_.empty()) {
        return lines_;
    }
    std::ifstream file{path_, std::ios::binary};
    if (!file) {
        return errno == ENOENT ? std::optional<std::string>{""} : std::nullopt;
    }
    return std::string{std::istreambuf_iterator<char>{file}, {}};
}

bool Store::clear()
{
    lines_.clear();
    return path_.empty() || ::unlink(path_.c_str()) == 0 || errno == ENOENT;
}

} // namespace switchlab::loggerd
