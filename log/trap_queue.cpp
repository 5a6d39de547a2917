// SPDX-License-Identifier: Apache-2.0
// The queue of pending traps. Entries stay valid whenever the process dies: a new trap is counted after it is in place,
// and a move notes each step, so that the next process to take the lock finishes it.
#include "log/trap_queue.h"

#include "core/status_region.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <pthread.h>
#include <switchcfg/locks.h>

namespace switchcfg {
namespace {

namespace layout = status_layout;

constexpr int capacity = layout::trap_queue_length;
constexpr std::size_t entry_size = layout::per_trap.stride;

enum class Move : std::uint32_t {
    to_back = 1, // a pending trap is raised again: it goes to the back
    drop_oldest, // the queue is full
    to_head,     // a start
    take,        // the agent took the oldest entries
};

// Record locks exclude processes, not threads.
pthread_mutex_t threads = PTHREAD_MUTEX_INITIALIZER;

// What was written so far stands before what is written next, if the process dies in between.
void settle() noexcept
{
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

char *text_at(std::uint8_t *region, const Field<Text<512>> &field, int index = 0) noexcept
{
    return switchcfg::text(region, field, index);
}

// The C library's copy by its address: of a size that the compiler knows it would make a slower string instruction, and
// a hundred calls would each go through the linkage table.
using Copy = void *(*)(void *, const void *, std::size_t);
Copy library_copy() noexcept
{
    Copy copy = std::memcpy;
    asm("" : "+r"(copy));
    return copy;
}

void copy_entry(Copy copy, std::uint8_t *region, int from, int to) noexcept
{
    std::uint8_t *const first = region + layout::trap_id.offset;
    copy(first + static_cast<std::size_t>(to) * entry_size, first + static_cast<std::size_t>(from) * entry_size,
        entry_size);
}

void copy_text(char *place, std::string_view text) noexcept
{
    place[text.copy(place, text.size())] = '\0';
}

void put_entry(std::uint8_t *region, int index, std::uint32_t id, std::string_view text) noexcept
{
    store(region, layout::trap_id, id, index);
    copy_text(text_at(region, layout::trap_text, index), text);
}

// Entries move down piece by piece, each shorter than an entry, so that it can be moved again. Pieces end where cache
// lines do, which copies are fastest to.
constexpr std::size_t piece_size = 512;
constexpr std::uint32_t most_pieces = capacity * entry_size / piece_size + 2;
static_assert(piece_size <= entry_size);

// Moves entries down by `distance`, to `first` and up to `end`, from the noted step.
void move_down(std::uint8_t *region, int first, int end, int distance) noexcept
{
    const Copy copy = library_copy();
    const auto place_of = [](int entry) {
        return layout::trap_id.offset + static_cast<std::size_t>(entry) * entry_size;
    };
    const std::size_t stop = place_of(end);
    const std::size_t gap = static_cast<std::size_t>(distance) * entry_size;
    std::uint32_t moved = load(region, layout::trap_move_step) - 1;
    std::size_t piece_end = (place_of(first) / piece_size + moved + 1) * piece_size;
    std::size_t place = moved == 0 ? place_of(first) : piece_end - piece_size;
    while (place < stop) {
        copy(region + place, region + place + gap, std::min(piece_end, stop) - place);
        settle();
        store(region, layout::trap_move_step, ++moved + 1);
        settle();
        place = piece_end;
        piece_end += piece_size;
    }
}

// Moves entries up by one, the last first, from the noted step. A start is never refused: with a full queue its move
// carries the last entry past the entries, onto the count and the bytes behind it, and the count goes on from that
// entry's identifier. Agents of all releases find the start at the head and go by the count as it is.
void move_up(std::uint8_t *region) noexcept
{
    const Copy copy = library_copy();
    for (auto at = static_cast<int>(load(region, layout::trap_move_step)) - 1; at > 0; --at) {
        copy_entry(copy, region, at - 1, at);
        if (at == capacity) {
            store(region, layout::trap_count, static_cast<std::int32_t>(load(region, layout::trap_id, at - 1)) + 1);
        }
        settle();
        store(region, layout::trap_move_step, static_cast<std::uint32_t>(at));
        settle();
    }
}

// Runs the move that is noted. Every step can be run again, so this also finishes what a dead process began; the count
// is written last.
void run_move(std::uint8_t *region) noexcept
{
    const std::int32_t count = load(region, layout::trap_move_count);
    const std::uint32_t id = load(region, layout::trap_move_id);
    const std::int32_t source = load(region, layout::trap_move_source);
    const char *kept = text_at(region, layout::trap_move_text);
    const std::string_view text{kept, ::strnlen(kept, TRAP_TEXT_SIZE - 1)};
    const Move kind{load(region, layout::trap_move_kind)};
    const std::uint32_t most_steps = kind == Move::to_head ? capacity : most_pieces;
    const bool sane = load(region, layout::trap_move_step) <= most_steps + 1 && count >= 0 && count <= capacity;
    switch (sane ? kind : Move{}) {
    case Move::to_back:
        if (source > 0 && source <= count) {
            move_down(region, source - 1, count - 1, 1);
            put_entry(region, count - 1, id, text);
        }
        break;
    case Move::drop_oldest:
        // The last place is the overflow marker's, so the first time two entries go: the oldest and the one there.
        move_down(region, 0, capacity - 2, 1);
        put_entry(region, capacity - 2, id, text);
        if (load(region, layout::trap_id, capacity - 1) != TRAP_OVERFLOW) {
            copy_text(text_at(region, layout::trap_text, capacity - 1), {});
            settle(); // the marker is known by its identifier, so that comes last
            store(region, layout::trap_id, TRAP_OVERFLOW, capacity - 1);
        }
        store(region, layout::trap_count, capacity);
        break;
    case Move::to_head:
        move_up(region);
        put_entry(region, 0, id, text);
        if (count < capacity) {
            store(region, layout::trap_count, count + 1);
        }
        break;
    case Move::take:
        if (source > 0 && source <= count) {
            move_down(region, 0, count - source, source);
            store(region, layout::trap_count, count - source);
        }
        break;
    }
    settle();
    store(region, layout::trap_move_step, 0);
    settle();
}

// Whether somebody has taken traps since the move was noted who knows the entries and the count only, as agents of
// other releases do: what is left of the move would bring them back. A start into a full queue runs over the count.
bool taken_since(std::uint8_t *region) noexcept
{
    const std::int32_t count = load(region, layout::trap_count);
    const std::int32_t noted = load(region, layout::trap_move_count);
    const bool overrun = Move{load(region, layout::trap_move_kind)} == Move::to_head && noted == capacity;
    return overrun ? count == 0 : std::clamp(count, 0, capacity) != noted;
}

// What a process that died has left.
void finish_move(std::uint8_t *region) noexcept
{
    if (taken_since(region)) {
        store(region, layout::trap_move_step, 0);
    } else {
        run_move(region);
    }
}

void note_move(std::uint8_t *region, Move kind, int first, int count) noexcept
{
    store(region, layout::trap_move_kind, static_cast<std::uint32_t>(kind));
    store(region, layout::trap_move_count, count);
    settle();
    store(region, layout::trap_move_step, static_cast<std::uint32_t>(first) + 1);
    settle();
}

void note_trap(std::uint8_t *region, std::uint32_t id, std::string_view text) noexcept
{
    store(region, layout::trap_move_id, id);
    copy_text(text_at(region, layout::trap_move_text), text);
}

int find(std::uint8_t *region, int count, std::uint32_t id, std::string_view text) noexcept
{
    // Traps of one kind differ in their last number more often than anywhere else.
    const char last = text.empty() ? '\0' : text.back();
    const std::size_t last_at = text.empty() ? 0 : text.size() - 1;
    for (int i = 0; i < count; ++i) {
        if (load(region, layout::trap_id, i) == id) {
            const char *queued = text_at(region, layout::trap_text, i);
            if (queued[last_at] == last && queued[text.size()] == '\0' &&
                std::memcmp(queued, text.data(), text.size()) == 0) {
                return i;
            }
        }
    }
    return -1;
}

} // namespace

TrapQueueHold::TrapQueueHold() noexcept
{
    if (status_base() == nullptr) {
        errno = ENODEV;
        return;
    }
    ::pthread_mutex_lock(&threads);
    const int fd = cfg_lock_table[CFG_LOCK_TRAPS].fd;
    while (lock_write(fd) != 0) {
        if (errno != EINTR) {
            ::pthread_mutex_unlock(&threads);
            return;
        }
    }
    fd_ = fd;
    region_ = status_base();
    if (load(region_, layout::trap_move_step) != 0) {
        finish_move(region_);
    }
}

TrapQueueHold::~TrapQueueHold()
{
    if (region_ != nullptr) {
        lock_free(fd_);
        ::pthread_mutex_unlock(&threads);
    }
}

int TrapQueueHold::count() const noexcept
{
    return std::clamp(load(region_, layout::trap_count), 0, capacity);
}

void TrapQueueHold::take_oldest(int taken) noexcept
{
    const int queued = count();
    if (taken >= queued) {
        store(region_, layout::trap_count, 0);
    } else if (taken > 0) {
        store(region_, layout::trap_move_source, taken);
        note_move(region_, Move::take, 0, queued);
        run_move(region_);
    }
}

void TrapQueueHold::put(std::uint32_t id, std::string_view text) noexcept
{
    const int queued = count();
    if (id == TRAP_COLD_START || id == TRAP_WARM_START) {
        note_trap(region_, id, text);
        note_move(region_, Move::to_head, queued, queued);
        run_move(region_);
        return;
    }
    const int same = find(region_, queued, id, text);
    if (same >= 0) {
        note_trap(region_, id, text);
        store(region_, layout::trap_move_source, same + 1);
        note_move(region_, Move::to_back, 0, queued);
        run_move(region_);
    } else if (queued == capacity) {
        note_trap(region_, id, text);
        note_move(region_, Move::drop_oldest, 0, queued);
        run_move(region_);
    } else {
        put_entry(region_, queued, id, text);
        settle();
        store(region_, layout::trap_count, queued + 1);
    }
}

int queue_trap(int id, std::string_view text) noexcept
{
    TrapQueueHold queue;
    if (!queue) {
        return -1;
    }
    queue.put(static_cast<std::uint32_t>(id), text);
    return 0;
}

} // namespace switchcfg
