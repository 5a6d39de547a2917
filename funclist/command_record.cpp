// SPDX-License-Identifier: Apache-2.0
#include "funclist/command_record.h"

#include "funclist/endpoints.h"

#include <cstddef>
#include <sys/time.h>
#include <type_traits>

namespace switchcfg::funclist {
namespace {

// Tools hand the block around as bytes.
static_assert(sizeof(funclist_command) == 44 && sizeof(funclist_stats) == 716);
static_assert(offsetof(funclist_stats, next) == 708 && offsetof(funclist_stats, keep_alive_time) == 712);
static_assert(std::is_trivially_copyable_v<funclist_stats>);

struct Now {
    std::uint32_t s;
    std::uint32_t us;
};

Now now() noexcept
{
    timeval time{};
    (void)::gettimeofday(&time, nullptr);
    return {static_cast<std::uint32_t>(time.tv_sec), static_cast<std::uint32_t>(time.tv_usec)};
}

} // namespace

CommandRecord::CommandRecord(const BcmdFunclistServer &server, const funclist_command &what) noexcept
{
    funclist_stats *const stats = server.stats_;
    if (stats == nullptr) {
        return;
    }
    ++stats->executed;
    record_ = &stats->commands[stats->next];
    *record_ = what;
    const Now start = now();
    record_->start_s = start.s;
    record_->start_us = start.us;
    record_->end_s = 0;
    record_->end_us = 0;
    record_->result = 0;
    stats->next = (stats->next + 1) % FUNCLIST_STATS_COMMANDS;
}

CommandRecord::~CommandRecord()
{
    end(communication_error);
}

void CommandRecord::end(std::int32_t result) noexcept
{
    if (record_ != nullptr) {
        const Now end = now();
        record_->result = result;
        record_->end_us = end.us;
        __atomic_store_n(&record_->end_s, end.s, __ATOMIC_RELEASE); // it says that the rest is there
        record_ = nullptr;
    }
}

} // namespace switchcfg::funclist
