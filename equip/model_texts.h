// SPDX-License-Identifier: Apache-2.0
// The texts of the equipment record that follow from a model's facts, worked out at compile time. They are characters
// in place, not pointers: a pointer costs every process that loads it a relocation, and soon a page.
#ifndef SWITCHCFG_EQUIP_MODEL_TEXTS_H
#define SWITCHCFG_EQUIP_MODEL_TEXTS_H

#include "equip/model_facts.h"

#include <array>
#include <string_view>
#include <switchcfg/equip.h>

namespace switchcfg {

// "ETH44GT+4GC+2XX+S+MPLS (DC)" is the longest.
inline constexpr std::size_t model_name_size = 28;
using ModelName = std::array<char, model_name_size>;
using ShortText = std::array<char, 8>;

// The texts of one record under the names they have there; empty where the model has none.
struct ModelTexts {
    ModelName name;
    std::array<ShortText, 1> block_name;
    ShortText mgmt_eth;
    std::array<ShortText, 2> power_input_names;
};

namespace detail {

class NameWriter {
  public:
    constexpr NameWriter &operator<<(const char *part)
    {
        while (*part != '\0') {
            name_.at(length_++) = *part++;
        }
        return *this;
    }
    constexpr NameWriter &operator<<(int count)
    {
        if (count >= 10) {
            name_.at(length_++) = static_cast<char>('0' + count / 10);
        }
        name_.at(length_++) = static_cast<char>('0' + count % 10);
        return *this;
    }
    constexpr ModelName name() const { return name_; }

  private:
    ModelName name_{};
    std::size_t length_ = 0;
};

constexpr const char *text_of(Front front)
{
    return front == Front::gx ? "GX" : front == Front::gt ? "GT" : "GP";
}

constexpr const char *text_of(Layer layer)
{
    return layer == Layer::l2 ? "L2" : layer == Layer::l3 ? "L3" : "MPLS";
}

constexpr std::string_view port_range(int ports)
{
    switch (ports) {
    case 24:
        return " 1-24";
    case 26:
        return " 1-26";
    case 28:
        return " 1-28";
    case 48:
        return " 1-48";
    case 50:
        return " 1-50";
    case 52:
        return " 1-52";
    default:
        return {};
    }
}

constexpr std::array<std::string_view, 2> power_inputs(Supply supply)
{
    switch (supply) {
    case Supply::removable:
        return {"Main", "Backup"};
    case Supply::redundant:
        return {"Main", "RPU"};
    case Supply::dc:
        return {"A", "B"};
    case Supply::unlabelled:
        break;
    }
    return {};
}

constexpr ShortText short_text(std::string_view text)
{
    ShortText result{};
    std::ranges::copy(text, result.begin());
    result.at(text.size()) = '\0'; // one that is too long does not compile
    return result;
}

} // namespace detail

constexpr ModelName model_name(const ModelFacts &facts)
{
    detail::NameWriter name;
    name << "ETH" << facts.front_ports << detail::text_of(facts.front);
    if (facts.combo_ports != 0) {
        name << "+" << facts.combo_ports << "GC";
    }
    if (facts.cages != 0) {
        name << "+" << facts.cages << (facts.cage == Cage::xx ? "XX" : "XS");
    }
    if (facts.stacks()) {
        name << "+S";
    }
    name << "+" << detail::text_of(facts.layer);
    if (facts.supply == Supply::dc) {
        name << " (DC)";
    }
    return name.name();
}

constexpr ModelTexts texts_of(int model)
{
    const ModelFacts &facts = model_facts[model];
    const auto inputs = detail::power_inputs(facts.supply);
    return {model_name(facts), {detail::short_text(detail::port_range(facts.user_ports()))}, detail::short_text("eth0"),
        {detail::short_text(inputs[0]), detail::short_text(inputs[1])}};
}

// By model; that of model 0 has none.
constexpr std::array<ModelTexts, CFG_EQUIP_RECORDS> texts_of_all()
{
    std::array<ModelTexts, CFG_EQUIP_RECORDS> all{};
    for (int model = 1; model < model_limit; ++model) {
        all[static_cast<std::size_t>(model)] = texts_of(model);
    }
    return all;
}

} // namespace switchcfg

#endif
