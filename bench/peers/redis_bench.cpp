// SPDX-License-Identifier: Apache-2.0
// Beside a field of a Redis hash, over a Unix socket.
#include "bench/peers/own_value.h"
#include "bench/support/compare.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <hiredis/hiredis.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace switchcfg::bench;

// A server of ours in a folder of its own.
class Redis {
  public:
    Redis(const std::string &folder, bool durable) : path_(folder + "/redis")
    {
        pid_ = ::vfork();
        if (pid_ == 0) {
            const int null = ::open("/dev/null", O_WRONLY);
            ::dup2(null, STDOUT_FILENO);
            ::execlp("redis-server", "redis-server", "--port", "0", "--unixsocket", path_.c_str(), "--dir",
                folder.c_str(), "--save", "", "--appendonly", durable ? "yes" : "no", "--appendfsync", "always",
                static_cast<char *>(nullptr));
            ::_exit(127);
        }
        for (int attempts = 0; connection_ == nullptr && attempts < 500; ++attempts) {
            if (::waitpid(pid_, nullptr, WNOHANG) != 0) {
                pid_ = -1; // not installed, or it ended at once
                return;
            }
            ::usleep(10000);
            connection_ = ::redisConnectUnix(path_.c_str());
            if (connection_ != nullptr && connection_->err != 0) {
                ::redisFree(connection_);
                connection_ = nullptr;
            }
        }
    }
    ~Redis()
    {
        if (connection_ != nullptr) {
            ::redisFree(connection_);
        }
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
    }
    Redis(const Redis &) = delete;
    Redis &operator=(const Redis &) = delete;

    bool runs() const { return connection_ != nullptr; }
    bool read() { return done(::redisCommand(connection_, "HGET config sntp.interval"), REDIS_REPLY_STRING); }
    bool write()
    {
        return done(::redisCommand(connection_, "HSET config sntp.interval %d", ++next_), REDIS_REPLY_INTEGER);
    }

  private:
    static bool done(void *answer, int type)
    {
        auto *const reply = static_cast<redisReply *>(answer);
        const bool good = reply != nullptr && reply->type == type;
        ::freeReplyObject(reply);
        return good;
    }

    std::string path_;
    pid_t pid_ = -1;
    redisContext *connection_ = nullptr;
    int next_ = 0;
};

void peer_redis_read(benchmark::State &state)
{
    beside_own_value<Redis>(state, "Redis", Job::read);
}
SWITCHCFG_ROW(peer_redis_read);

void peer_redis_write(benchmark::State &state)
{
    beside_own_value<Redis>(state, "Redis", Job::write);
}
SWITCHCFG_ROW(peer_redis_write);

void peer_redis_durable(benchmark::State &state)
{
    beside_own_value<Redis>(state, "Redis", Job::durable_write);
}
SWITCHCFG_ROW(peer_redis_durable);

} // namespace
