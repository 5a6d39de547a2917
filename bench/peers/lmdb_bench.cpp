// SPDX-License-Identifier: Apache-2.0
// Beside a key of an LMDB map.
#include "bench/peers/own_value.h"
#include "bench/support/compare.h"

#include <lmdb.h>

namespace {

using namespace switchcfg::bench;

class Lmdb {
  public:
    Lmdb(const std::string &folder, bool durable)
    {
        ::mdb_env_create(&environment_);
        MDB_txn *making = nullptr;
        runs_ = ::mdb_env_open(environment_, folder.c_str(), durable ? 0 : MDB_NOSYNC, 0600) == 0 &&
                ::mdb_txn_begin(environment_, nullptr, 0, &making) == 0 &&
                ::mdb_dbi_open(making, nullptr, 0, &map_) == 0 && ::mdb_txn_commit(making) == 0 && write() &&
                ::mdb_txn_begin(environment_, nullptr, MDB_RDONLY, &reading_) == 0;
        if (runs_) {
            ::mdb_txn_reset(reading_);
        }
    }
    ~Lmdb()
    {
        if (reading_ != nullptr) {
            ::mdb_txn_abort(reading_);
        }
        ::mdb_env_close(environment_);
    }
    Lmdb(const Lmdb &) = delete;
    Lmdb &operator=(const Lmdb &) = delete;

    bool runs() const { return runs_; }
    bool read()
    {
        MDB_val value{};
        const bool found = ::mdb_txn_renew(reading_) == 0 && ::mdb_get(reading_, map_, &key_, &value) == 0;
        benchmark::DoNotOptimize(value);
        ::mdb_txn_reset(reading_);
        return found;
    }
    bool write()
    {
        ++next_;
        MDB_val value{sizeof next_, &next_};
        MDB_txn *writing = nullptr;
        return ::mdb_txn_begin(environment_, nullptr, 0, &writing) == 0 &&
               ::mdb_put(writing, map_, &key_, &value, 0) == 0 && ::mdb_txn_commit(writing) == 0;
    }

  private:
    char name_[14] = "sntp.interval";
    MDB_val key_{13, name_};
    MDB_env *environment_ = nullptr;
    MDB_txn *reading_ = nullptr;
    MDB_dbi map_ = 0;
    bool runs_ = false;
    int next_ = 0;
};

void peer_lmdb_read(benchmark::State &state)
{
    beside_own_value<Lmdb>(state, "LMDB", Job::read);
}
SWITCHCFG_ROW(peer_lmdb_read);

void peer_lmdb_write(benchmark::State &state)
{
    beside_own_value<Lmdb>(state, "LMDB", Job::write);
}
SWITCHCFG_ROW(peer_lmdb_write);

void peer_lmdb_durable(benchmark::State &state)
{
    beside_own_value<Lmdb>(state, "LMDB", Job::durable_write);
}
SWITCHCFG_ROW(peer_lmdb_durable);

} // namespace
