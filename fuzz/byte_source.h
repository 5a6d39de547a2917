// SPDX-License-Identifier: Apache-2.0
// The input as a row of decisions; zeros when it is used up.
#ifndef SWITCHCFG_FUZZ_BYTE_SOURCE_H
#define SWITCHCFG_FUZZ_BYTE_SOURCE_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace switchcfg::fuzz {

class ByteSource {
  public:
    ByteSource(const std::uint8_t *data, std::size_t size) : data_(data), left_(size) {}

    bool empty() const { return left_ == 0; }
    std::size_t left() const { return left_; }

    std::uint8_t byte()
    {
        std::uint8_t value = 0;
        fill(&value, 1);
        return value;
    }

    // Small numbers are the interesting ones, and those at the ends.
    std::uint32_t word()
    {
        constexpr std::array<std::uint32_t, 12> ends{
            0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0xFFFFFFFE, 51, 52, 53, 415, 416, 511, 512, 640};
        const std::uint8_t first = byte();
        if (first < 200) {
            return first;
        }
        if (first < 240) {
            return ends[first % ends.size()];
        }
        std::uint32_t value = 0;
        fill(&value, sizeof value);
        return value;
    }

    void fill(void *to, std::size_t size)
    {
        const std::size_t taken = std::min(size, left_);
        if (taken > 0) {
            std::memcpy(to, data_, taken);
        }
        std::memset(static_cast<char *>(to) + taken, 0, size - taken);
        data_ += taken;
        left_ -= taken;
    }

    std::string rest()
    {
        std::string text(left_, '\0');
        fill(text.data(), text.size());
        return text;
    }

  private:
    const std::uint8_t *data_;
    std::size_t left_;
};

} // namespace switchcfg::fuzz

#endif
