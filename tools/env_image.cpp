// SPDX-License-Identifier: Apache-2.0
#include "tools/env_image.h"

#include "bootenv/image.h"
#include "bootenv/variables.h"
#include "tools/command_line/failure.h"
#include "util/byte_order.h"

#include <algorithm>

namespace switchcfg::tool {

const std::size_t bytes_most = bootenv::Variables::most;

std::optional<std::string> value_in(const Variables &variables, const std::string &name)
{
    const auto found = std::ranges::find(variables, name, &Variable::name);
    return found == variables.end() ? std::nullopt : std::optional{found->value};
}

std::size_t bytes_of(const Variables &variables)
{
    std::size_t bytes = 0;
    for (const Variable &variable : variables) {
        bytes += variable.name.size() + variable.value.size() + 2;
    }
    return bytes;
}

ImageContent take_apart(std::span<const std::uint8_t> image)
{
    image = image.first(std::min(image.size(), bootenv::image_size));
    if (image.size() < bootenv::checksum_size) {
        throw Failure{"an image of " + std::to_string(image.size()) + " bytes has no CRC word"};
    }
    const auto area = image.subspan(bootenv::checksum_size);
    const bootenv::ChecksumWord computed = bootenv::checksum_word(area);
    ImageContent content{.size = image.size(),
        .crc_stored = load_ordered<std::endian::big, std::uint32_t>(image.data()),
        .crc_computed = load_ordered<std::endian::big, std::uint32_t>(computed.bytes),
        .has_end = false,
        .variables = {},
        .other_texts = 0};
    const std::optional<std::size_t> used = bootenv::used_length(area);
    if (!used) {
        return content;
    }
    content.has_end = true;
    const auto texts = area.first(*used - 1);
    std::vector<char> room(texts.begin(), texts.end());
    room.push_back('\0');
    const bootenv::Variables list{room, texts.size()};
    for (std::size_t place = 0; place < list.size();) {
        const std::string text{list.text_at(place)};
        const std::size_t sign = text.find('=');
        content.variables.push_back({text.substr(0, sign), text.substr(sign + 1)});
        place += text.size() + 1;
    }
    content.other_texts = static_cast<std::size_t>(std::ranges::count(texts, 0)) - content.variables.size();
    return content;
}

std::vector<std::uint8_t> put_together(const Variables &variables)
{
    if (bytes_of(variables) > bytes_most) {
        throw Failure{"the variables would take " + std::to_string(bytes_of(variables)) + " bytes; there is room for " +
                      std::to_string(bytes_most)};
    }
    std::vector<std::uint8_t> image(bootenv::checksum_size);
    for (const Variable &variable : variables) {
        const std::string text = variable.name + '=' + variable.value;
        image.insert(image.end(), text.begin(), text.end());
        image.push_back(0);
    }
    image.resize(bootenv::image_size);
    const auto word = bootenv::checksum_word(std::span{image}.subspan(bootenv::checksum_size));
    std::ranges::copy(word.bytes, image.begin());
    return image;
}

} // namespace switchcfg::tool
