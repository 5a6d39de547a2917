// SPDX-License-Identifier: Apache-2.0
// Lines of configuration-style files, and the list of terminals that get debug lines.
#include "core/debug_terminals.h"
#include "fuzz/fuzz_input.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <switchcfg/robust_io.h>

using namespace switchcfg::fuzz;

namespace {

void read_lines(std::string text)
{
    std::FILE *const stream = ::fmemopen(text.data(), text.size(), "r");
    require(stream != nullptr);
    const auto line = std::make_unique<char[]>(100);
    std::size_t lines = 0;
    while (const char *const key = read_cfile_line(stream, line.get())) {
        require(key >= line.get() && std::memchr(line.get(), '\0', 100) != nullptr);
        require(key <= line.get() + std::strlen(line.get()));
        require(*key != ' ' && *key != '\t');
        require(++lines <= text.size());
    }
    (void)std::fclose(stream);
}

void read_terminals(std::string_view text)
{
    while (!text.empty()) {
        const std::size_t before = text.size();
        const std::string_view line = switchcfg::take_line(text);
        require(text.size() < before && line.find('\n') == std::string_view::npos);
        if (auto terminal = switchcfg::parse_debug_terminal(line)) {
            require(terminal->path.starts_with('/') && terminal->path.size() < switchcfg::terminal_path_size);
            while (!terminal->classes.empty()) {
                const std::size_t left = terminal->classes.size();
                (void)switchcfg::take_class(terminal->classes);
                require(terminal->classes.size() < left);
            }
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text = text_of(data, size);
    if (!text.empty()) {
        read_lines(text);
    }
    read_terminals(text);
    return 0;
}
