// SPDX-License-Identifier: Apache-2.0
// A field of a shared record as a typed handle. The layout files give every field one name, one type and one place;
// everything that reads or writes a region goes through load(), store() and bytes() with such a handle, so no other
// file holds an offset.
//
// The regions are shared with processes that store plain words, so values are in the processor's own byte order. An
// aligned field no wider than a register is one relaxed atomic access and never tears; any other one is a memcpy. Both
// are one instruction, for 64 bits on a 32-bit processor two.
#ifndef SWITCHCFG_CORE_FIELD_H
#define SWITCHCFG_CORE_FIELD_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>

namespace switchcfg {

enum class FieldType : std::uint8_t { u8, i8, u16, i16, u32, i32, u64, bytes, text };

// One dimension of a repeated field.
struct Dimension {
    std::uint32_t count = 1;
    std::uint32_t stride = 0;
};

// What a field is, without its C++ type: enough to list, print and check it.
struct FieldInfo {
    const char *name;
    const char *about;
    std::uint32_t offset;
    std::uint32_t size; // bytes of one element
    FieldType type;
    Dimension dimensions[2] = {};
    bool shares_storage = false; // a second name, on purpose, for bytes that another field names too

    [[gnu::always_inline]] constexpr std::uint32_t count() const noexcept
    {
        return dimensions[0].count * dimensions[1].count;
    }
    [[gnu::always_inline]] constexpr std::uint32_t place_of(
        std::uint32_t first = 0, std::uint32_t second = 0) const noexcept
    {
        // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): the analyser does not see the base set
        return offset + first * dimensions[0].stride + second * dimensions[1].stride;
    }
    constexpr std::uint32_t end() const noexcept
    {
        return place_of(dimensions[0].count - 1, dimensions[1].count - 1) + size;
    }
};

template<std::uint32_t Size>
struct Bytes {
}; // a record or MAC address: raw bytes, never converted
template<std::uint32_t Size>
struct Text {
}; // NUL-terminated text in a fixed number of bytes

namespace detail {

template<typename T>
struct Describe;
template<>
struct Describe<std::uint8_t> {
    static constexpr auto type = FieldType::u8;
    static constexpr std::uint32_t size = 1;
};
template<>
struct Describe<std::int8_t> {
    static constexpr auto type = FieldType::i8;
    static constexpr std::uint32_t size = 1;
};
template<>
struct Describe<std::uint16_t> {
    static constexpr auto type = FieldType::u16;
    static constexpr std::uint32_t size = 2;
};
template<>
struct Describe<std::int16_t> {
    static constexpr auto type = FieldType::i16;
    static constexpr std::uint32_t size = 2;
};
template<>
struct Describe<std::uint32_t> {
    static constexpr auto type = FieldType::u32;
    static constexpr std::uint32_t size = 4;
};
template<>
struct Describe<std::int32_t> {
    static constexpr auto type = FieldType::i32;
    static constexpr std::uint32_t size = 4;
};
template<>
struct Describe<std::uint64_t> {
    static constexpr auto type = FieldType::u64;
    static constexpr std::uint32_t size = 8;
};
template<std::uint32_t Size>
struct Describe<Bytes<Size>> {
    static constexpr auto type = FieldType::bytes;
    static constexpr std::uint32_t size = Size;
};
template<std::uint32_t Size>
struct Describe<Text<Size>> {
    static constexpr auto type = FieldType::text;
    static constexpr std::uint32_t size = Size;
};

} // namespace detail

template<typename T>
struct Field : FieldInfo {
    constexpr Field(const char *field_name, std::uint32_t first, const char *meaning, Dimension outer = {},
        Dimension inner = {}) noexcept
        // NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject): nor here
        : FieldInfo{
              field_name, meaning, first, detail::Describe<T>::size, detail::Describe<T>::type, {outer, inner}, false}
    {
    }

    // The same field, declared to name bytes that another field names too.
    constexpr Field sharing() const noexcept
    {
        Field alias = *this;
        alias.shares_storage = true;
        return alias;
    }

    [[gnu::always_inline]] constexpr bool one_access() const noexcept
    {
        return sizeof(T) <= sizeof(std::uintptr_t) && offset % alignof(T) == 0 &&
               dimensions[0].stride % alignof(T) == 0 && dimensions[1].stride % alignof(T) == 0;
    }
};

// Indexes are the caller's to check: these run on the fast path of every accessor.
template<typename T, typename... Index>
[[gnu::always_inline]] inline T load(const std::uint8_t *region, const Field<T> &field, Index... index) noexcept
{
    static_assert(std::is_integral_v<T>);
    const std::uint8_t *place = region + field.place_of(static_cast<std::uint32_t>(index)...);
    if (field.one_access()) {
        using Word [[gnu::may_alias]] = T;
        return __atomic_load_n(reinterpret_cast<const Word *>(place), __ATOMIC_RELAXED);
    }
    T value;
    std::memcpy(&value, place, sizeof value);
    return value;
}

template<typename T, typename... Index>
[[gnu::always_inline]] inline void store(
    std::uint8_t *region, const Field<T> &field, std::type_identity_t<T> value, Index... index) noexcept
{
    static_assert(std::is_integral_v<T>);
    std::uint8_t *place = region + field.place_of(static_cast<std::uint32_t>(index)...);
    if (field.one_access()) {
        using Word [[gnu::may_alias]] = T;
        __atomic_store_n(reinterpret_cast<Word *>(place), value, __ATOMIC_RELAXED);
        return;
    }
    std::memcpy(place, &value, sizeof value);
}

template<std::uint32_t Size, typename... Index>
[[gnu::always_inline]] inline std::span<std::uint8_t, Size> bytes(
    std::uint8_t *region, const Field<Bytes<Size>> &field, Index... index) noexcept
{
    return std::span<std::uint8_t, Size>{region + field.place_of(static_cast<std::uint32_t>(index)...), Size};
}

template<std::uint32_t Size, typename... Index>
[[gnu::always_inline]] inline char *text(std::uint8_t *region, const Field<Text<Size>> &field, Index... index) noexcept
{
    return reinterpret_cast<char *>(region + field.place_of(static_cast<std::uint32_t>(index)...));
}

} // namespace switchcfg

#endif
