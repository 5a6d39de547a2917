// SPDX-License-Identifier: Apache-2.0
#include <switchcfg/locks.h>

#include "bench/support/compare.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

void lock_pair(benchmark::State &state)
{
    const int bare = ::open("/tmp/lock_bare", O_RDWR | O_CREAT, 0600);
    const int fd = lock_create("/tmp/lock_bench");
    struct flock whole {};
    compare(
        state, {"lock and unlock", "the two fcntl calls", 1.05},
        [&] {
            whole.l_type = F_WRLCK;
            const int locked = ::fcntl(bare, F_SETLKW, &whole);
            whole.l_type = F_UNLCK;
            return ::fcntl(bare, F_SETLK, &whole) + locked == 0;
        },
        [&] { return lock_write(fd) + lock_free(fd) == 0; });
    ::close(bare);
    lock_destroy(fd);
}
SWITCHCFG_ROW(lock_pair);

} // namespace
