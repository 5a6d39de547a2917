// SPDX-License-Identifier: Apache-2.0
// The process list of the lab's process manager.
#include "fuzz/fuzz_input.h"
#include "lab/stand-ins/pm/process_list.h"

using namespace switchcfg::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    try {
        for (const switchlab::pm::Entry &entry : switchlab::pm::parse_process_list(text_of(data, size), "list")) {
            require(!entry.name.empty() && entry.name.size() < 32 && !entry.command.empty());
            require(entry.command.find('\n') == std::string::npos && entry.command.find('\0') == std::string::npos);
        }
    } catch (const switchlab::pm::ListError &error) {
        require(std::string{error.what()}.starts_with("list:"));
    }
    return 0;
}
