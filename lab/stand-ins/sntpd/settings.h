// SPDX-License-Identifier: Apache-2.0
// What the SNTP daemon follows: the settings of the running configuration and the key file.
#ifndef SWITCHLAB_SNTPD_SETTINGS_H
#define SWITCHLAB_SNTPD_SETTINGS_H

#include "lab/stand-ins/sntpd/key_file.h"

#include <cstdint>
#include <string>
#include <switchcfg/ip_addr.h>
#include <vector>

namespace switchlab::sntpd {

struct Server {
    std::string text;
    std::uint32_t key; // bound to it, 0 for none
    bool operator==(const Server &) const = default;
    cfg_ip_addr address() const;
};

struct Settings {
    std::uint32_t interval_s; // as configured, or the daemon's own choice
    bool authenticate;
    std::vector<Server> servers;
    KeyFile key_file;

    bool operator==(const Settings &) const = default;
    const Key *key(std::uint32_t id) const;
    std::string text() const; // without secrets
};

Settings current_settings();

} // namespace switchlab::sntpd

#endif
