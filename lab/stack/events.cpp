// SPDX-License-Identifier: Apache-2.0
#include "lab/stack/events.h"

#include "lab/refusal.h"
#include "lab/sandbox/namespaces.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace switchlab {

void Events::entrance(int part, const nlohmann::json &environment, const nlohmann::json &daemons) const
{
    const switchcfg::Descriptor self = process_handle(::getpid());
    const switchcfg::Descriptor root{::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC)};
    if (!root) {
        throw refusal("open", "/");
    }
    const std::array descriptors{self.get(), root.get()};
    send_message(channel_, {{"event", "entrance"}, {"part", part}, {"environment", environment}, {"daemons", daemons}},
        descriptors);
}

} // namespace switchlab
