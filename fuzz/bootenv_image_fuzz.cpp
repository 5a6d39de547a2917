// SPDX-License-Identifier: Apache-2.0
// The environment image from flash or a backup file: the scan for its end, the list, and changes to it.
// The input is an image, cut short; its last bytes double as a name and a value to set.
#include "bootenv/image.h"
#include "bootenv/variables.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

using namespace switchcfg::bootenv;

namespace {

void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

// What is saved is what is loaded: the list survives the way through an image.
void check_way_through_an_image(const Variables &list)
{
    const auto texts = list.bytes();
    if (texts.size() > Variables::most) {
        return; // only an overfull shadow is that long, and it cannot be published
    }
    std::vector<std::uint8_t> area(area_size);
    std::ranges::copy(texts, area.begin());
    require(used_length(area) == texts.size() + 1);
    const ChecksumWord word = checksum_word(area);
    std::vector<std::uint8_t> image(word.bytes, word.bytes + checksum_size);
    image.insert(image.end(), area.begin(), area.end());
    require(checksum_holds(image));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::span<const std::uint8_t> image{data, std::min(size, image_size)};
    (void)checksum_holds(image);
    if (image.size() < checksum_size) {
        return 0;
    }
    const auto area = image.subspan(checksum_size);
    const auto used = used_length(area);
    require(!used || (*used < area.size() && area[*used - 1] == 0 && area[*used] == 0));

    // A shadow may hold anything at all, so the list is made from everything, end or not.
    std::vector<char> room(area_size + 1);
    std::ranges::copy(area, room.begin());
    Variables list{room, area.size()};
    for (std::size_t place = 0; place < list.size(); place += list.text_at(place).size() + 1) {
        require(list.text_at(place).find('=') != std::string_view::npos);
    }
    check_way_through_an_image(list);

    const auto tail = area.last(std::min<std::size_t>(area.size(), 64));
    const std::string text(tail.begin(), std::ranges::find(tail, 0));
    const std::string name = text.substr(0, text.size() / 3);
    const std::string value = text.substr(name.size());
    if (name.find('=') == std::string::npos) {
        if (list.set(name, value)) {
            require(list.value_of(name) == value);
        }
        check_way_through_an_image(list);
        list.remove(name);
        require(!list.value_of(name));
    }
    return 0;
}
