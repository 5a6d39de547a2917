// SPDX-License-Identifier: Apache-2.0
// The reading side of the trap queue.
#include "log/trap_queue.h"

#include "core/status_layout.h"
#include "util/digits.h"

#include <algorithm>
#include <cstring>

namespace {

namespace layout = switchcfg::status_layout;
using switchcfg::TrapQueueHold;

static_assert(sizeof(trap_entry) == layout::per_trap.stride && TRAP_TEXT_SIZE == layout::trap_text_size);

int read_oldest(const TrapQueueHold &queue, trap_entry *entries, int max) noexcept
{
    const int wanted = std::min(queue.count(), max);
    std::memcpy(entries, queue.region() + layout::trap_id.offset, static_cast<std::size_t>(wanted) * sizeof *entries);
    for (int i = 0; i < wanted; ++i) {
        entries[i].text[TRAP_TEXT_SIZE - 1] = '\0';
    }
    return wanted;
}

// The word at `at`, which it leaves behind; empty when it does not fit.
bool take_word(const char *&at, char (&word)[TRAP_TEXT_SIZE], char end) noexcept
{
    const std::size_t length = std::strcspn(at, end == ' ' ? " " : "\x03");
    if (length >= sizeof word) {
        return false;
    }
    std::memcpy(word, at, length);
    word[length] = '\0';
    at += length;
    return true;
}

bool is_oid(const char *text) noexcept
{
    bool digit = false;
    for (const char *at = text; *at != '\0'; ++at) {
        if (*at == '.' ? !digit && at != text : !switchcfg::is_digit(*at)) {
            return false;
        }
        digit = *at != '.';
    }
    return digit;
}

} // namespace

int trap_queue_count() noexcept
{
    const TrapQueueHold queue;
    return queue ? queue.count() : -1;
}

int trap_queue_peek(struct trap_entry *entries, int max) noexcept
{
    if (entries == nullptr || max < 0) {
        return -1;
    }
    const TrapQueueHold queue;
    return queue ? read_oldest(queue, entries, max) : -1;
}

int trap_queue_drain(struct trap_entry *entries, int max) noexcept
{
    if (entries == nullptr || max < 0) {
        return -1;
    }
    TrapQueueHold queue;
    if (!queue) {
        return -1;
    }
    const int taken = read_oldest(queue, entries, max);
    queue.take_oldest(taken);
    return taken;
}

int trap_queue_clear() noexcept
{
    TrapQueueHold queue;
    if (!queue) {
        return -1;
    }
    queue.take_oldest(queue.count());
    return 0;
}

int trap_queue_next_varbind(const char **text, struct trap_varbind *out) noexcept
{
    if (text == nullptr || *text == nullptr || out == nullptr) {
        return -1;
    }
    const char *at = *text;
    at += std::strspn(at, " ");
    *text = at;
    if (*at == '\0') {
        return 0;
    }
    if (!take_word(at, out->oid, ' ') || !is_oid(out->oid) || *at++ != ' ' || *at == '\0' ||
        std::strchr("iusao", *at) == nullptr) {
        return -1;
    }
    out->type = *at++;
    if (*at++ != ' ') {
        return -1;
    }
    const bool is_string = out->type == 's';
    if (!take_word(at, out->value, is_string ? '\x03' : ' ') || (!is_string && out->value[0] == '\0')) {
        return -1;
    }
    out->cut = is_string && *at == '\0' ? 1 : 0;
    *text = at + (is_string && *at != '\0' ? 1 : 0);
    return 1;
}
