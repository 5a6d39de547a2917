// SPDX-License-Identifier: Apache-2.0
// The key file, as the SNTP daemon of the lab reads it.
#include "fuzz/fuzz_input.h"
#include "lab/stand-ins/sntpd/key_file.h"

#include <algorithm>

using namespace switchcfg::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::string text = text_of(data, size);
    const switchlab::sntpd::KeyFile file = switchlab::sntpd::parse_keys(text);
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    require(file.keys.size() + file.wrong_lines.size() <= lines);
    std::string again;
    for (const switchlab::sntpd::Key &key : file.keys) {
        require(key.id != 0 && !key.type.empty() && !key.value.empty());
        again += std::to_string(key.id) + "\t" + key.type + " " + key.value + " \n";
    }
    require(switchlab::sntpd::parse_keys(again).keys == file.keys);
    return 0;
}
