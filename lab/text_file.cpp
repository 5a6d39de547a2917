// SPDX-License-Identifier: Apache-2.0
#include "lab/text_file.h"

#include "lab/refusal.h"
#include "util/owned.h"

#include <fcntl.h>
#include <unistd.h>

namespace switchlab {
namespace {

using switchcfg::Descriptor;

void write_whole(const Descriptor &file, const std::string &path, std::string_view text)
{
    if (!file || ::write(file.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        throw refusal("write", path);
    }
}

} // namespace

void write_file(const std::string &path, std::string_view text, mode_t mode)
{
    write_whole(Descriptor{::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode)}, path, text);
}

void write_kernel_file(const char *path, std::string_view text)
{
    write_whole(Descriptor{::open(path, O_WRONLY | O_CLOEXEC)}, path, text);
}

std::string read_file(const std::string &path)
{
    const Descriptor file{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    std::string text;
    char block[4096];
    ssize_t got = 0;
    while (file && (got = ::read(file.get(), block, sizeof block)) > 0) {
        text.append(block, static_cast<std::size_t>(got));
    }
    return text;
}

} // namespace switchlab
