// SPDX-License-Identifier: Apache-2.0
#include "lab/stackd/replica.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace switchlab::stackd {
namespace {

constexpr std::uint32_t word_size = 4;
constexpr std::array<std::uint8_t, 4096> zeros{};

// As the accessors of the region do it: a word is stored at once.
void store_word(std::uint8_t *place, const std::uint8_t *bytes)
{
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    using Word [[gnu::may_alias]] = std::uint32_t;
    __atomic_store_n(reinterpret_cast<Word *>(place), word, __ATOMIC_RELAXED);
}

} // namespace

Replica::Replica(std::uint8_t *region, std::uint32_t size, const char *path)
    : region_(region), size_(size), file_(::open(path, O_RDONLY | O_CLOEXEC)),
      pages_((size + page_size - 1) / page_size), arrived_(pages_.size())
{
    if (region == nullptr || !file_) {
        throw std::runtime_error{std::string{path} + ": " + std::strerror(errno)};
    }
}

std::uint32_t Replica::size_of(std::uint32_t page) const
{
    return std::min(page_size, size_ - page * page_size);
}

Bytes Replica::known(std::uint32_t page) const
{
    return Bytes{pages_[page] ? *pages_[page] : zeros}.first(size_of(page));
}

Replica::Page &Replica::known_for_change(std::uint32_t page)
{
    if (!pages_[page]) {
        pages_[page] = std::make_unique<Page>();
    }
    return *pages_[page];
}

// Reading a page through the mapping that the file does not hold would make it hold it.
template<typename Visitor>
bool Replica::visit_pages(Visitor visitor) const
{
    off_t end = 0;
    while (end < static_cast<off_t>(size_)) {
        const off_t first = ::lseek(file_.get(), end, SEEK_DATA);
        if (first < 0 || first >= static_cast<off_t>(size_)) {
            break;
        }
        end = ::lseek(file_.get(), first, SEEK_HOLE);
        end = end < 0 ? static_cast<off_t>(size_) : std::min(end, static_cast<off_t>(size_));
        const auto last = static_cast<std::uint32_t>((end - 1) / page_size);
        for (auto page = static_cast<std::uint32_t>(first / page_size); page <= last; ++page) {
            if (!visitor(page)) {
                return false;
            }
        }
    }
    return true;
}

bool Replica::changed() const
{
    return !visit_pages([this](std::uint32_t page) {
        return std::memcmp(region_ + std::size_t{page} * page_size, known(page).data(), size_of(page)) == 0;
    });
}

void Replica::take_changes(const Visit &visit)
{
    visit_pages([&](std::uint32_t page) {
        Page now;
        const std::uint32_t size = size_of(page);
        const std::uint32_t start = page * page_size;
        std::memcpy(now.data(), region_ + start, size); // it may go on changing
        const Bytes before = known(page);
        const auto differs = [&](std::uint32_t at) {
            return std::memcmp(now.data() + at, before.data() + at, std::min(word_size, size - at)) != 0;
        };
        std::vector<std::pair<std::uint32_t, std::uint32_t>> runs;
        for (std::uint32_t at = 0; at < size; at += word_size) {
            if (differs(at)) {
                const std::uint32_t end = std::min(at + word_size, size);
                if (!runs.empty() && runs.back().second == at) {
                    runs.back().second = end;
                } else {
                    runs.emplace_back(at, end);
                }
            }
        }
        if (!runs.empty()) {
            Page &kept = known_for_change(page);
            for (const auto &[first, end] : runs) {
                std::memcpy(kept.data() + first, now.data() + first, end - first);
                visit(start + first, Bytes{now}.subspan(first, end - first));
            }
        }
        return true;
    });
}

void Replica::visit_content(const Visit &visit) const
{
    for (std::uint32_t page = 0; page < pages_.size(); ++page) {
        if (pages_[page]) {
            visit(page * page_size, known(page));
        }
    }
}

void Replica::put(std::uint32_t offset, Bytes bytes)
{
    while (!bytes.empty()) {
        const std::uint32_t page = offset / page_size;
        const std::uint32_t at = offset % page_size;
        const auto size = std::min<std::uint32_t>(page_size - at, static_cast<std::uint32_t>(bytes.size()));
        if (std::memcmp(known(page).data() + at, bytes.data(), size) != 0 ||
            std::memcmp(region_ + offset, bytes.data(), size) != 0) {
            std::memcpy(known_for_change(page).data() + at, bytes.data(), size);
            for (std::uint32_t i = 0; i < size;) {
                const bool word = (offset + i) % word_size == 0 && size - i >= word_size;
                if (word) {
                    store_word(region_ + offset + i, bytes.data() + i);
                } else {
                    region_[offset + i] = bytes[i];
                }
                i += word ? word_size : 1;
            }
        }
        arrived_[page] = true;
        offset += size;
        bytes = bytes.subspan(size);
    }
}

bool Replica::apply(std::uint32_t offset, Bytes bytes)
{
    if (offset > size_ || bytes.size() > size_ - offset) {
        return false;
    }
    put(offset, bytes);
    return true;
}

void Replica::begin_snapshot()
{
    arrived_.assign(pages_.size(), false);
}

void Replica::end_snapshot()
{
    visit_pages([this](std::uint32_t page) {
        if (!arrived_[page]) {
            put(page * page_size, Bytes{zeros}.first(size_of(page)));
        }
        return true;
    });
}

} // namespace switchlab::stackd
