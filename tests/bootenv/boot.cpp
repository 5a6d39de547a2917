// SPDX-License-Identifier: Apache-2.0
#include "bootenv/boot.h"

#include "support/file_text.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <switchcfg/bootenv.h>
#include <switchcfg/status.h>
#include <zlib.h>

namespace switchcfg::testing {
namespace {

namespace fs = std::filesystem;

// The word that belongs in front of what follows it.
std::array<std::uint8_t, 4> crc_word(const Image &image)
{
    const auto crc = ::crc32(0, image.data() + 4, static_cast<uInt>(image.size() - 4));
    return {static_cast<std::uint8_t>(crc >> 24), static_cast<std::uint8_t>(crc >> 16),
        static_cast<std::uint8_t>(crc >> 8), static_cast<std::uint8_t>(crc)};
}

} // namespace

Image image_of(const Environment &environment)
{
    Image image(4);
    for (const std::string &text : environment) {
        image.insert(image.end(), text.begin(), text.end());
        image.push_back(0);
    }
    image.resize(4 + area_size);
    std::ranges::copy(crc_word(image), image.begin());
    return image;
}

bool checksum_holds(const Image &image)
{
    return image.size() >= 4 && std::ranges::equal(std::span{image}.first(4), crc_word(image));
}

FlashDevice &flash()
{
    static FlashDevice device;
    return device;
}

void fill_flash(const Image &image)
{
    flash().erase_chip();
    const auto content = flash().content();
    std::copy_n(image.begin(), std::min(image.size(), content.size()), content.begin());
}

std::optional<Image> backup_content()
{
    if (!fs::exists(backup_path)) {
        return std::nullopt;
    }
    const std::string bytes = file_text(backup_path);
    return Image{bytes.begin(), bytes.end()};
}

void make_backup(const Image &image)
{
    fs::create_directories("/mnt/flash/bkp");
    write_file(backup_path, {image.begin(), image.end()});
}

void remove_backup()
{
    fs::create_directories("/mnt/flash");
    fs::remove_all("/mnt/flash/bkp");
}

int start_switch()
{
    status_finish();
    fs::remove(STATUS_PATH);
    if (status_init() != 0) {
        ADD_FAILURE() << "no status region";
    }
    return bootenv_init();
}

Environment environment()
{
    char **list = nullptr;
    int count = 0;
    if (bootenv_get_all(&list, &count) != 0) {
        ADD_FAILURE() << "no list";
        return {};
    }
    Environment texts{list, list + count};
    std::for_each_n(list, count, std::free);
    std::free(list);
    return texts;
}

} // namespace switchcfg::testing
