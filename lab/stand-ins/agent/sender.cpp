// SPDX-License-Identifier: Apache-2.0
#include "lab/stand-ins/agent/sender.h"

#include "lab/stand-ins/agent/notifications.h"

// net-snmp's headers come in this order.
#include <net-snmp/net-snmp-config.h>

#include <net-snmp/net-snmp-includes.h>

#include <arpa/inet.h>
#include <charconv>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace switchlab::agent {
namespace {

using Oid = std::vector<oid>;

const Oid up_time{1, 3, 6, 1, 2, 1, 1, 3, 0};        // NOLINT(cert-err58-cpp): no memory, no agent
const Oid trap_oid{1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0}; // NOLINT(cert-err58-cpp): as above

// Numbers with dots between them, one more dot ahead or not.
std::optional<Oid> parse_oid(std::string_view text)
{
    Oid numbers;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
    }
    for (;;) {
        std::uint32_t number = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc{} || numbers.size() == MAX_OID_LEN) {
            return {};
        }
        numbers.push_back(number);
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (text.empty()) {
            return numbers.size() >= 2 ? std::optional{numbers} : std::nullopt;
        }
        if (!text.starts_with('.')) {
            return {};
        }
        text.remove_prefix(1);
    }
}

template<typename Number>
std::optional<Number> parse_number(std::string_view text)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional{value} : std::nullopt;
}

void add(netsnmp_pdu *pdu, const Oid &name, std::uint8_t type, const void *value, std::size_t size)
{
    snmp_pdu_add_variable(pdu, name.data(), name.size(), type, value, size);
}

bool add_binding(netsnmp_pdu *pdu, const trap_varbind &binding)
{
    const std::optional<Oid> name = parse_oid(binding.oid);
    if (!name) {
        return false;
    }
    const std::string_view text{binding.value};
    switch (binding.type) {
    case 'i': {
        // Masks are written unsigned; on the wire an integer has 32 bits and a sign.
        const auto number = parse_number<std::int64_t>(text);
        if (!number || *number < INT32_MIN || *number > UINT32_MAX) {
            return false;
        }
        const long value = static_cast<std::int32_t>(*number);
        add(pdu, *name, ASN_INTEGER, &value, sizeof value);
        return true;
    }
    case 'u': {
        const auto number = parse_number<std::uint32_t>(text);
        if (!number) {
            return false;
        }
        const unsigned long value = *number;
        add(pdu, *name, ASN_UNSIGNED, &value, sizeof value);
        return true;
    }
    case 'a': {
        in_addr address{};
        if (::inet_pton(AF_INET, binding.value, &address) != 1) {
            return false;
        }
        add(pdu, *name, ASN_IPADDRESS, &address, sizeof address);
        return true;
    }
    case 'o': {
        const std::optional<Oid> value = parse_oid(text);
        if (!value) {
            return false;
        }
        add(pdu, *name, ASN_OBJECT_ID, value->data(), value->size() * sizeof(oid));
        return true;
    }
    default:
        add(pdu, *name, ASN_OCTET_STR, text.data(), text.size());
        return true;
    }
}

} // namespace

void Sender::Close::operator()(snmp_session *session) const
{
    snmp_close(session);
}

Sender::Sender(const std::string &peer, const std::string &community)
{
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_PERSIST_STATE, 1);
    netsnmp_ds_set_boolean(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_DONT_READ_CONFIGS, 1);
    netsnmp_set_mib_directory("");
    (void)::setenv("MIBS", "", 1); // numbers only
    init_snmp("switchlab-agent");
    std::string peer_name = peer;
    std::string name = community;
    snmp_session wanted{};
    snmp_sess_init(&wanted);
    wanted.version = SNMP_VERSION_2c;
    wanted.peername = peer_name.data();
    wanted.community = reinterpret_cast<u_char *>(name.data());
    wanted.community_len = name.size();
    session_.reset(snmp_open(&wanted));
    if (!session_) {
        throw std::runtime_error{peer + ": " + snmp_api_errstring(snmp_errno)};
    }
}

bool Sender::send(const trap_entry &trap) const
{
    const Notification *notification = notification_of(trap.id);
    if (notification == nullptr) {
        (void)std::fprintf(stderr, "switchlab-agent: trap %u: no notification has this number\n", trap.id);
        return false;
    }
    netsnmp_pdu *pdu = snmp_pdu_create(SNMP_MSG_TRAP2);
    const unsigned long ticks = static_cast<unsigned long>(get_uptime());
    add(pdu, up_time, ASN_TIMETICKS, &ticks, sizeof ticks);
    const Oid value = *parse_oid(notification->oid);
    add(pdu, trap_oid, ASN_OBJECT_ID, value.data(), value.size() * sizeof(oid));
    const char *at = trap.text;
    trap_varbind binding{};
    int result = 0;
    while ((result = trap_queue_next_varbind(&at, &binding)) > 0) {
        if (!add_binding(pdu, binding)) {
            (void)std::fprintf(stderr, "switchlab-agent: %s: left out: %s %c %s\n", notification->name, binding.oid,
                binding.type, binding.value);
        }
    }
    if (result < 0) {
        (void)std::fprintf(stderr, "switchlab-agent: %s: cannot be read: %s\n", notification->name, at);
    }
    if (snmp_send(session_.get(), pdu) == 0) {
        (void)std::fprintf(
            stderr, "switchlab-agent: %s: %s\n", notification->name, snmp_api_errstring(session_->s_snmp_errno));
        snmp_free_pdu(pdu);
        return false;
    }
    return true;
}

} // namespace switchlab::agent
