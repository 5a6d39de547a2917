// SPDX-License-Identifier: Apache-2.0
#include "bootenv/image.h"
#include "bootenv/variables.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using namespace switchcfg::bootenv;
using Texts = std::vector<std::string>;

std::span<const std::uint8_t> bytes_of(std::string_view text)
{
    return {reinterpret_cast<const std::uint8_t *>(text.data()), text.size()};
}

std::string joined(const Texts &texts)
{
    std::string all;
    for (const std::string &text : texts) {
        all += text + '\0';
    }
    return all;
}

TEST(Image, ChecksumIsTheBigEndianWordOfTheWholeAreaAndEveryDamageBreaksIt)
{
    const ChecksumWord word = checksum_word(bytes_of("123456789"));
    std::string image{reinterpret_cast<const char *>(word.bytes), sizeof word.bytes};
    ASSERT_EQ(image, "\xCB\xF4\x39\x26"); // the published check value of this CRC
    image += "123456789";
    EXPECT_TRUE(checksum_holds(bytes_of(image)));
    for (std::size_t length = 0; length < image.size(); ++length) {
        EXPECT_FALSE(checksum_holds(bytes_of(image).first(length))) << length;
    }
    for (std::size_t bit = 0; bit < image.size() * 8; ++bit) {
        std::string damaged = image;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
        EXPECT_FALSE(checksum_holds(bytes_of(damaged))) << bit;
    }
}

TEST(Image, EndIsTwoNulsAtTheStartOfATextAndNeverBeyondATruncation)
{
    const std::string texts = joined({"HV=0", "", "a=", "no sign", "long=" + std::string(300, 'x')});
    const std::string area = texts + std::string(20, '\0');
    for (std::size_t length = 0; length <= area.size(); ++length) {
        const auto used = used_length(bytes_of(area).first(length));
        if (length < texts.size() + 2) {
            EXPECT_FALSE(used) << length;
        } else {
            EXPECT_EQ(used, texts.size() + 1) << length;
        }
    }
    EXPECT_EQ(used_length(bytes_of(std::string(2, '\0'))), 1U) << "an environment without a variable";
    EXPECT_FALSE(used_length(bytes_of(std::string(area_size, '\xFF')))) << "an erased partition";
    EXPECT_FALSE(used_length(bytes_of(std::string(area_size, 'x'))));
    EXPECT_FALSE(used_length(bytes_of(joined({"a=1"}) + std::string(99, '\xFF'))))
        << "written up to its last text only";
}

TEST(Variables, OverfullListOfADamagedShadowGetsItsTerminatorAndCanOnlyShrink)
{
    const std::string name(area_size - 5, 'x');
    const std::string content = name + "=1111";
    std::vector<char> room(content.begin(), content.end());
    room.push_back('?');
    Variables list{room, content.size()};
    ASSERT_EQ(list.size(), area_size + 1);
    EXPECT_FALSE(list.set("a", ""));
    EXPECT_TRUE(list.set(name, ""));
    EXPECT_EQ(list.size(), area_size - 3);
}

} // namespace
