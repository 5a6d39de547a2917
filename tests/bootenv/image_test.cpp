// SPDX-License-Identifier: Apache-2.0
#include "bootenv/image.h"
#include "bootenv/variables.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
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

TEST(Image, NoBytesMakeTheScanReadOrAnswerBeyondThem)
{
    std::mt19937 random{20250101};
    for (int round = 0; round < 20000; ++round) {
        // Exactly as long as its content, so that the sanitizer sees a step beyond; few values, so that ends happen.
        std::vector<std::uint8_t> area(random() % 40);
        std::ranges::generate(area, [&] { return static_cast<std::uint8_t>("\0=ab\xFF"[random() % 5]); });
        const auto used = used_length(area);
        if (used) {
            ASSERT_LT(*used, area.size());
            ASSERT_TRUE(area[*used] == 0 && area[*used - 1] == 0);
        }
        // Whatever the list was made from, what it holds afterwards is terminated pairs.
        std::vector<char> room(area.begin(), area.end());
        room.push_back('?');
        const Variables list{room, area.size()};
        std::size_t texts = 0;
        for (std::size_t place = 0; place < list.size(); ++texts) {
            ASSERT_NE(list.text_at(place).find('='), std::string_view::npos);
            place += list.text_at(place).size() + 1;
            ASSERT_LE(place, list.size());
        }
        ASSERT_EQ(texts, list.count());
    }
}

class List {
  public:
    explicit List(const std::string &content) : room_(area_size + 1, '?'), list_(filled(content), content.size()) {}
    Variables *operator->() { return &list_; }
    Texts texts() const
    {
        Texts all;
        for (std::size_t place = 0; place < list_.size(); place += all.back().size() + 1) {
            all.emplace_back(list_.text_at(place));
        }
        return all;
    }

  private:
    std::span<char> filled(const std::string &content)
    {
        std::ranges::copy(content, room_.begin());
        return room_;
    }

    std::vector<char> room_;
    Variables list_;
};

TEST(Variables, TextsWithoutASignAreDroppedAndAMissingTerminatorIsMade)
{
    EXPECT_EQ(List(joined({"a=1", "", "junk", "b==", "=v", "a"}) + "c=3").texts(), (Texts{"a=1", "b==", "=v", "c=3"}));
    EXPECT_EQ(List("").texts(), Texts{});
    EXPECT_EQ(List(std::string(9, '\0')).texts(), Texts{});
    EXPECT_EQ(List("cut short").texts(), Texts{});
}

TEST(Variables, NamesMatchWholeAndSetMovesToTheEnd)
{
    List list{joined({"ab=1", "a=2", "abc=3", "empty="})};
    EXPECT_EQ(list->value_of("ab"), "1");
    EXPECT_EQ(list->value_of("a"), "2");
    EXPECT_EQ(list->value_of("empty"), "");
    EXPECT_EQ(list->value_of("ab=whatever"), "1") << "a name counts up to its sign";
    for (const char *const absent : {"", "b", "abcd", "A", "empt"}) {
        EXPECT_FALSE(list->value_of(absent)) << absent;
    }
    EXPECT_TRUE(list->set("ab", "x=y"));
    EXPECT_EQ(list->value_of("ab"), "x=y");
    list->remove("abc");
    list->remove("no such");
    EXPECT_EQ(list.texts(), (Texts{"a=2", "empty=", "ab=x=y"}));
}

TEST(Variables, SetReplacesEveryTextOfADoubledName)
{
    List list{joined({"a=1", "b=2", "a=3"})};
    EXPECT_EQ(list->value_of("a"), "1");
    EXPECT_TRUE(list->set("a", "4"));
    EXPECT_EQ(list.texts(), (Texts{"b=2", "a=4"}));
}

TEST(Variables, AreaTakesExactlyWhatStillCanBeLoaded)
{
    List list{joined({"a=1"})};
    const std::string fits(Variables::most - 4 - 3, 'x');
    EXPECT_FALSE(list->set("b", fits + 'x'));
    EXPECT_FALSE(list->set(fits, fits));
    EXPECT_EQ(list.texts(), Texts{"a=1"}) << "a set that does not fit changes nothing";
    ASSERT_TRUE(list->set("b", fits));
    EXPECT_EQ(list->size(), Variables::most);

    std::string area{list->bytes().data(), list->size()};
    area.resize(area_size);
    EXPECT_EQ(used_length(bytes_of(area)), Variables::most + 1);

    EXPECT_FALSE(list->set("c", "")) << "full";
    EXPECT_FALSE(list->set("a", "12")) << "its own four bytes are too few";
    EXPECT_TRUE(list->set("a", "2")) << "the replaced text makes room for the new one";
    EXPECT_TRUE(list->set("b", ""));
    EXPECT_EQ(list.texts(), (Texts{"a=2", "b="}));
}

TEST(Variables, OverfullListOfADamagedShadowCanOnlyShrink)
{
    List list{std::string(area_size - 5, 'x') + '=' + std::string(4, '1')};
    ASSERT_EQ(list->size(), area_size + 1);
    EXPECT_FALSE(list->set("a", ""));
    EXPECT_TRUE(list->set(std::string(area_size - 5, 'x'), ""));
    EXPECT_EQ(list->size(), area_size - 3);
}

} // namespace
