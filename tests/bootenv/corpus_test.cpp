// SPDX-License-Identifier: Apache-2.0
// The saved inputs of the fuzzer, each cut at every length.
#include "support/file_text.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <gtest/gtest.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

TEST(Corpus, BootenvImage)
{
    int inputs = 0;
    for (const auto &file : std::filesystem::directory_iterator{CORPUS}) {
        const std::string input = switchcfg::testing::file_text(file.path().string());
        SCOPED_TRACE(file.path());
        for (std::size_t size = 0; size <= input.size(); ++size) {
            const std::vector<std::uint8_t> cut(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(size));
            LLVMFuzzerTestOneInput(cut.data(), cut.size());
        }
        ++inputs;
    }
    EXPECT_GT(inputs, 0);
}
