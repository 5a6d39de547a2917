// SPDX-License-Identifier: Apache-2.0
// One command in the statistics of the server, from its begin to its end. Does nothing while none are kept.
#ifndef SWITCHCFG_FUNCLIST_COMMAND_RECORD_H
#define SWITCHCFG_FUNCLIST_COMMAND_RECORD_H

#include <cstdint>
#include <switchcfg/funclist.h>

namespace switchcfg::funclist {

class CommandRecord {
  public:
    // Takes the next record of the ring. `what` needs its family, function and arguments only.
    CommandRecord(const BcmdFunclistServer &server, const funclist_command &what) noexcept;
    ~CommandRecord(); // a function that throws has the result that its caller gets
    CommandRecord(const CommandRecord &) = delete;
    CommandRecord &operator=(const CommandRecord &) = delete;
    // Counts once.
    void end(std::int32_t result) noexcept;

  private:
    funclist_command *record_ = nullptr;
};

} // namespace switchcfg::funclist

#endif
