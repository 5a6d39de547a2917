// SPDX-License-Identifier: Apache-2.0
#include "bootenv/boot.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <switchcfg/bootenv.h>
#include <switchcfg/status.h>
#include <sys/wait.h>
#include <unistd.h>
#include <zlib.h>

namespace switchcfg::testing {
namespace {

namespace fs = std::filesystem;

std::uint32_t crc_of(std::span<const std::uint8_t> bytes)
{
    return static_cast<std::uint32_t>(::crc32(0, bytes.data(), static_cast<uInt>(bytes.size())));
}

Image read_image(const char *path)
{
    std::ifstream file{path, std::ios::binary};
    return {std::istreambuf_iterator<char>{file}, {}};
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
    const std::uint32_t crc = crc_of(std::span{image}.subspan(4));
    for (int i = 0; i < 4; ++i) {
        image[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(crc >> (24 - 8 * i));
    }
    return image;
}

bool checksum_holds(const Image &image)
{
    if (image.size() < 4) {
        return false;
    }
    const std::uint32_t crc = crc_of(std::span{image}.subspan(4));
    return image[0] == crc >> 24 && image[1] == (crc >> 16 & 0xFF) && image[2] == (crc >> 8 & 0xFF) &&
           image[3] == (crc & 0xFF);
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
    return read_image(backup_path);
}

void make_backup(const Image &image)
{
    fs::create_directories("/mnt/flash/bkp");
    std::ofstream{backup_path, std::ios::binary}.write(
        reinterpret_cast<const char *>(image.data()), static_cast<std::streamsize>(image.size()));
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

int in_child(const std::function<int()> &body)
{
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(body());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace switchcfg::testing
