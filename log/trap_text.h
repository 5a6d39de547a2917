// SPDX-License-Identifier: Apache-2.0
// The variable bindings of one trap as a line of text: triples of identifier, type letter and value. What does not fit
// into the queue's 512 bytes is cut off, as snprintf would.
#ifndef SWITCHCFG_LOG_TRAP_TEXT_H
#define SWITCHCFG_LOG_TRAP_TEXT_H

#include <switchcfg/trap.h>

#include <charconv>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace switchcfg {

// The switch's own subtree. The number that the agent reports as the kind of device is one level up.
#define SWITCHCFG_TRAP_DEVICE ".1.3.6.1.4.1.64711.3.5.201"
#define SWITCHCFG_TRAP_SUBTREE SWITCHCFG_TRAP_DEVICE ".1"

class TrapText {
  public:
    TrapText() noexcept { buffer_[0] = '\0'; }

    // Begins a binding; one of the value functions follows.
    template<typename... Sub>
    TrapText &oid(std::string_view prefix, Sub... sub) noexcept
    {
        if (length_ > 0) {
            add(" ");
        }
        add(prefix);
        (sub_identifier(sub), ...);
        return *this;
    }

    // A scalar of the group that most bindings are in.
    TrapText &scalar(int number) noexcept { return oid(SWITCHCFG_TRAP_SUBTREE ".14.2", number, 0); }

    // The two bindings that most traps begin or end with.
    TrapText &common() noexcept
    {
        return oid(SWITCHCFG_TRAP_SUBTREE ".14.2.21.0 i 1 " SWITCHCFG_TRAP_SUBTREE ".14.2.22.0 i 1");
    }

    // The port by its number.
    TrapText &port_number(std::int32_t number) noexcept
    {
        return oid(SWITCHCFG_TRAP_SUBTREE ".2.1.1.1", number).integer(number);
    }

    TrapText &integer(std::int32_t value) noexcept { return add(" i ").number(value); }
    TrapText &unsigned_integer(std::uint32_t value) noexcept { return add(" u ").number(value); }
    TrapText &unsigned_as_integer(std::uint32_t value) noexcept { return add(" i ").number(value); }
    TrapText &string(std::string_view value) noexcept { return add(" s ").add(value).add("\x03"); }
    TrapText &string(const char *value) noexcept { return string(present(value)); }
    TrapText &string(std::uint64_t value) noexcept { return add(" s ").number(value).add("\x03"); }
    TrapText &string(std::int32_t value) noexcept { return add(" s ").number(value).add("\x03"); }
    // With a blank ahead of the end mark, as the receivers of some names know them.
    TrapText &string_and_blank(const char *value) noexcept { return add(" s ").add(present(value)).add(" \x03"); }
    TrapText &address(const char *value) noexcept { return add(" a ").add(present(value)); }
    TrapText &object(const char *value) noexcept { return add(" o ").add(present(value)); }

    TrapText &mac(const std::uint8_t *bytes) noexcept
    {
        if (bytes == nullptr) {
            return string(std::string_view{"<null pointer>"});
        }
        constexpr char digits[] = "0123456789ABCDEF";
        char text[17];
        for (std::size_t i = 0; i < 6; ++i) {
            text[3 * i] = digits[bytes[i] >> 4];
            text[3 * i + 1] = digits[bytes[i] & 15];
            if (i < 5) {
                text[3 * i + 2] = ':';
            }
        }
        return string(std::string_view{text, sizeof text});
    }

    bool cut() const noexcept { return cut_; }
    std::string_view view() const noexcept { return {buffer_, length_}; }

  private:
    static std::string_view present(const char *text) noexcept
    {
        return text == nullptr ? std::string_view{"(null)"} : std::string_view{text};
    }

    TrapText &add(std::string_view text) noexcept
    {
        const std::size_t room = sizeof buffer_ - 1 - length_;
        if (text.size() > room) {
            text = text.substr(0, room);
            cut_ = true;
        }
        std::memcpy(buffer_ + length_, text.data(), text.size());
        length_ += text.size();
        buffer_[length_] = '\0';
        return *this;
    }

    template<typename Number>
    TrapText &number(Number value) noexcept
    {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, value);
        return add({digits, static_cast<std::size_t>(end.ptr - digits)});
    }

    void sub_identifier(std::int32_t value) noexcept { add(".").number(value); }

    char buffer_[TRAP_TEXT_SIZE];
    std::size_t length_ = 0;
    bool cut_ = false;
};

} // namespace switchcfg

#endif
