// SPDX-License-Identifier: Apache-2.0
#include "support/output.h"

#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

namespace switchcfg::testing {

std::string output_of(const std::function<void()> &body)
{
    (void)std::fflush(stdout);
    const int file = ::memfd_create("output", MFD_CLOEXEC);
    const int kept = ::dup(STDOUT_FILENO);
    if (file < 0 || kept < 0 || ::dup2(file, STDOUT_FILENO) < 0) {
        std::abort();
    }
    body();
    (void)std::fflush(stdout);
    ::dup2(kept, STDOUT_FILENO);
    ::close(kept);
    std::string text(static_cast<std::size_t>(::lseek(file, 0, SEEK_END)), '\0');
    if (::pread(file, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
        std::abort();
    }
    ::close(file);
    return text;
}

} // namespace switchcfg::testing
