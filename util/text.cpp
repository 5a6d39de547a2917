// SPDX-License-Identifier: Apache-2.0
// Texts in buffers of fixed size and on the heap.
#include <switchcfg/text.h>

#include "util/owned.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

using switchcfg::KeepErrno;

char *strncpy_safe(char *destination, const char *source, std::size_t size) noexcept
{
    if (size > 0) {
        std::strncpy(destination, source, size - 1);
        destination[size - 1] = '\0';
    }
    return destination;
}

char *strncat_safe(char *destination, const char *source, std::size_t size) noexcept
{
    if (size > 0) {
        const std::size_t used = ::strnlen(destination, size - 1);
        const std::size_t added = ::strnlen(source, size - 1 - used);
        std::memcpy(destination + used, source, added);
        destination[used + added] = '\0';
        destination[size - 1] = '\0';
    }
    return destination;
}

char *strncat_allocate(const char *first, const char *second) noexcept
{
    const std::size_t size = std::strlen(first) + std::strlen(second) + 1;
    auto *const joined = static_cast<char *>(std::malloc(size));
    if (joined == nullptr) {
        return nullptr;
    }
    strncpy_safe(joined, first, size);
    return strncat_safe(joined, second, size);
}

char *string_array_concat(const char *const *texts, int count, char separator) noexcept
{
    std::size_t size = 0;
    for (int i = 0; i < count; ++i) {
        size += std::strlen(texts[i]) + 1;
    }
    if (size == 0) {
        return static_cast<char *>(std::calloc(1, 1));
    }
    auto *const joined = static_cast<char *>(std::calloc(1, size));
    if (joined == nullptr) {
        return nullptr;
    }
    char *end = joined;
    for (int i = 0; i < count; ++i) {
        end = ::stpcpy(end, texts[i]);
        *end++ = separator;
    }
    end[-1] = '\0';
    return joined;
}

int vx_setenv(const char *name, const char *format, ...) noexcept
{
    char *value = nullptr;
    va_list arguments;
    va_start(arguments, format);
    const int length = ::vasprintf(&value, format, arguments);
    va_end(arguments);
    if (length < 0) {
        return -1;
    }
    const int result = ::setenv(name, value, 1);
    const KeepErrno keep;
    std::free(value);
    return result;
}

int strftime_safe(char *buffer, std::size_t size, const char *format, const std::tm *time) noexcept
{
    if (size == 0) {
        return 0;
    }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral" // the format is the caller's, that is what the function is for
    const std::size_t length = std::strftime(buffer, size, format, time);
#pragma GCC diagnostic pop
    if (length == 0) {
        buffer[0] = '\0'; // what a text that does not fit leaves behind is not defined
    }
    return static_cast<int>(length);
}

void *vxmemdup(const void *memory, std::size_t length) noexcept
{
    void *const copy = std::malloc(length > 0 ? length : 1);
    return copy != nullptr && length > 0 ? std::memcpy(copy, memory, length) : copy;
}
