// SPDX-License-Identifier: Apache-2.0
// What a piece of code, and the programs it starts, print on standard output.
#ifndef SWITCHCFG_TESTS_SUPPORT_OUTPUT_H
#define SWITCHCFG_TESTS_SUPPORT_OUTPUT_H

#include "support/test.h"

namespace switchcfg::testing {

inline std::string output_of(const std::function<void()> &body)
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

// What is printed on the stream that it is given.
inline std::string text_of(const std::function<void(std::FILE *)> &body)
{
    char *text = nullptr;
    std::size_t size = 0;
    std::FILE *const stream = ::open_memstream(&text, &size);
    body(stream);
    (void)std::fclose(stream);
    const Freed<char> owner{text};
    return {text, size};
}

} // namespace switchcfg::testing

#endif
