// SPDX-License-Identifier: Apache-2.0
// Beside a row of an SQLite table, through prepared statements, with a write-ahead log.
#include "bench/peers/own_value.h"
#include "bench/support/compare.h"

#include <sqlite3.h>

namespace {

using namespace switchcfg::bench;

class Sqlite {
  public:
    Sqlite(const std::string &folder, bool durable)
    {
        const std::string make = std::string{"PRAGMA journal_mode=WAL; PRAGMA synchronous="} +
                                 (durable ? "FULL" : "OFF") +
                                 "; CREATE TABLE config(name TEXT PRIMARY KEY, value INTEGER) WITHOUT ROWID;"
                                 "INSERT INTO config VALUES('sntp.interval', 1);";
        runs_ = ::sqlite3_open((folder + "/sqlite").c_str(), &data_) == SQLITE_OK &&
                ::sqlite3_exec(data_, make.c_str(), nullptr, nullptr, nullptr) == SQLITE_OK &&
                ::sqlite3_prepare_v2(
                    data_, "SELECT value FROM config WHERE name='sntp.interval'", -1, &select_, nullptr) == SQLITE_OK &&
                ::sqlite3_prepare_v2(
                    data_, "UPDATE config SET value=? WHERE name='sntp.interval'", -1, &update_, nullptr) == SQLITE_OK;
    }
    ~Sqlite()
    {
        ::sqlite3_finalize(select_);
        ::sqlite3_finalize(update_);
        ::sqlite3_close(data_);
    }
    Sqlite(const Sqlite &) = delete;
    Sqlite &operator=(const Sqlite &) = delete;

    bool runs() const { return runs_; }
    bool read()
    {
        const bool found = ::sqlite3_step(select_) == SQLITE_ROW;
        benchmark::DoNotOptimize(::sqlite3_column_int(select_, 0));
        return ::sqlite3_reset(select_) == SQLITE_OK && found;
    }
    bool write()
    {
        ::sqlite3_bind_int(update_, 1, ++next_);
        const bool done = ::sqlite3_step(update_) == SQLITE_DONE;
        return ::sqlite3_reset(update_) == SQLITE_OK && done;
    }

  private:
    sqlite3 *data_ = nullptr;
    sqlite3_stmt *select_ = nullptr;
    sqlite3_stmt *update_ = nullptr;
    bool runs_ = false;
    int next_ = 0;
};

void peer_sqlite_read(benchmark::State &state)
{
    beside_own_value<Sqlite>(state, "SQLite", Job::read);
}
SWITCHCFG_ROW(peer_sqlite_read);

void peer_sqlite_write(benchmark::State &state)
{
    beside_own_value<Sqlite>(state, "SQLite", Job::write);
}
SWITCHCFG_ROW(peer_sqlite_write);

void peer_sqlite_durable(benchmark::State &state)
{
    beside_own_value<Sqlite>(state, "SQLite", Job::durable_write);
}
SWITCHCFG_ROW(peer_sqlite_durable);

} // namespace
