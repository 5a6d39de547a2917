// SPDX-License-Identifier: Apache-2.0
// Sets of hardware model numbers, written as people write them ("1-4 19-26") and kept as bit sets, and tables with one
// entry per model that are filled set by set. Both are complete at compile time; asking one is one load.
#ifndef SWITCHCFG_EQUIP_MODEL_SET_H
#define SWITCHCFG_EQUIP_MODEL_SET_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace switchcfg {

inline constexpr std::uint32_t last_model = 85;

// Not constant expressions: a list that is malformed or claims a model twice does not compile.
void model_list_is_malformed();
void model_is_listed_twice();

class ModelSet {
  public:
    // Numbers and ranges, ascending, separated by blanks.
    consteval ModelSet(const char *list) // NOLINT(google-explicit-constructor): the list is the set
    {
        const char *at = list;
        std::uint32_t lowest = 0;
        while (*at != '\0') {
            const std::uint32_t first = number(at);
            std::uint32_t last = first;
            if (*at == '-') {
                ++at;
                last = number(at);
            }
            if (first < lowest || last < first || last > last_model) {
                model_list_is_malformed();
            }
            for (std::uint32_t model = first; model <= last; ++model) {
                words_[model / 32] |= 1U << (model % 32);
            }
            lowest = last + 1;
            while (*at == ' ') {
                ++at;
            }
        }
    }

    // False for every number that is no model's, negative ones included.
    constexpr bool contains(std::int32_t model) const noexcept
    {
        const auto index = static_cast<std::uint32_t>(model);
        return index < 32 * words && ((words_[index / 32] >> (index % 32)) & 1U) != 0;
    }

    constexpr int count() const noexcept
    {
        int total = 0;
        for (const std::uint32_t word : words_) {
            total += std::popcount(word);
        }
        return total;
    }

    friend constexpr ModelSet operator|(ModelSet a, const ModelSet &b) noexcept
    {
        for (std::size_t i = 0; i < words; ++i) {
            a.words_[i] |= b.words_[i];
        }
        return a;
    }
    friend constexpr ModelSet operator&(ModelSet a, const ModelSet &b) noexcept
    {
        for (std::size_t i = 0; i < words; ++i) {
            a.words_[i] &= b.words_[i];
        }
        return a;
    }
    friend constexpr ModelSet operator-(ModelSet a, const ModelSet &b) noexcept
    {
        for (std::size_t i = 0; i < words; ++i) {
            a.words_[i] &= ~b.words_[i];
        }
        return a;
    }
    friend constexpr bool operator==(const ModelSet &, const ModelSet &) noexcept = default;

  private:
    static constexpr std::size_t words = 3;

    static consteval std::uint32_t number(const char *&at)
    {
        if (*at < '0' || *at > '9') {
            model_list_is_malformed();
        }
        std::uint32_t value = 0;
        while (*at >= '0' && *at <= '9') {
            value = 10 * value + static_cast<std::uint32_t>(*at++ - '0');
        }
        return value;
    }

    std::array<std::uint32_t, words> words_{};
};

inline constexpr ModelSet no_models = "";
inline constexpr ModelSet all_models = "1-85";

// One entry for each model, and one for every number that is no model's.
template<typename T>
class PerModel {
  public:
    struct Row {
        ModelSet models;
        T value;
    };

    template<std::size_t Count>
    consteval PerModel(T otherwise, const Row (&rows)[Count])
    {
        entries_.fill(otherwise);
        ModelSet listed = no_models;
        for (const Row &row : rows) {
            if ((listed & row.models) != no_models) {
                model_is_listed_twice();
            }
            listed = listed | row.models;
            for (std::uint32_t model = 0; model <= last_model; ++model) {
                if (row.models.contains(static_cast<std::int32_t>(model))) {
                    entries_[model] = row.value;
                }
            }
        }
    }

    constexpr const T &operator[](std::int32_t model) const noexcept
    {
        const auto index = static_cast<std::uint32_t>(model);
        return entries_[index <= last_model ? index : last_model + 1];
    }

  private:
    std::array<T, last_model + 2> entries_{};
};

} // namespace switchcfg

#endif
