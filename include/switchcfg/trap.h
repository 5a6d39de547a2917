/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file trap.h
 * Raising SNMP notifications, and reading the queue they wait in.
 *
 * A daemon raises a notification by calling its sender. The sender writes its log line, if it has one, through vxlog();
 * then it looks whether the notification is enabled in the running configuration, and for the port where the
 * notification has flags by port; then it queues the notification's identifier with its variable bindings as one line
 * of text in the status region. The SNMP agent drains the queue. No socket is opened here.
 *
 * Unless noted, every sender
 *  - returns 0 when the trap is queued or not enabled, and -1 when the queue cannot be had (cfg_init() has not run, or
 *    the Traps lock is not open);
 *  - takes units and ports counted from 0 (log lines and bindings show them counted from 1), and any number: ports
 *    without a record in the configuration have no notifications that need one;
 *  - takes texts of any length, cut with the whole line at 511 characters; a null text shows as "(null)". A text must
 *    not hold the byte 0x03, which ends it for the agent. The text and MAC arguments stay the caller's;
 *  - may be called from any thread. It waits for the Traps lock, so never call it while holding that lock.
 *
 * The queue holds 100 traps. A trap raised again while it waits moves to the back instead of being queued twice. When
 * the queue is full, the oldest trap makes room and the last place holds TRAP_OVERFLOW, which tells the agent that
 * traps were lost. Starts go to the head, always: a start into a full queue leaves a count that is the last trap's
 * identifier plus 1, and the agent goes by it.
 */
#ifndef SWITCHCFG_TRAP_H
#define SWITCHCFG_TRAP_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Traps that the queue holds. */
#define TRAP_QUEUE_LENGTH 100

/** Bytes of the text of a queued trap, terminator included. */
#define TRAP_TEXT_SIZE 512

/** Identifiers that the queue treats apart. All others are the senders' own, see docs/traps.md. */
enum trap_identifier {
    TRAP_COLD_START = 0,
    TRAP_WARM_START = 1,
    TRAP_OVERFLOW = 14 /**< no sender's: traps before this place were lost */
};

/** State of a link as the chip daemon reports it. */
struct trap_link {
    int32_t state; /**< 1 while the port may carry traffic */
    int32_t link;  /**< non-zero while the link is up */
};

/** @name The switch and its boards
 * @{ */
SWITCHCFG_API int send_trap_cold_start(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_warm_start(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_config_change(void) SWITCHCFG_NOEXCEPT;
/** Always 0. @param what what was saved, from 0  @param action,user for the log line */
SWITCHCFG_API int send_trap_config_saved(int what, const char *action, const char *user) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_core_dump(void) SWITCHCFG_NOEXCEPT;
/** @param mask one bit per unit that has warnings */
SWITCHCFG_API int send_trap_system_warnings_units(uint32_t mask) SWITCHCFG_NOEXCEPT;
/** The log line is written only when the trap is enabled. */
SWITCHCFG_API int send_trap_new_bootloader_version(int slot, const char *version) SWITCHCFG_NOEXCEPT;
/** `id_high` and `id_low` are the halves of the unit's identifier: the log shows all of it, the trap the high half. */
SWITCHCFG_API int send_trap_stack_attach(
    int unit, int reserved, uint32_t id_high, uint32_t id_low, const char *model) SWITCHCFG_NOEXCEPT;
/** The log line tells a removal by command from a pulled unit, where the boards can tell. */
SWITCHCFG_API int send_trap_stack_detach(
    int unit, int reserved, uint32_t id_high, uint32_t id_low, const char *model) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_stack_unit_comm_fail_blocked(
    int unit, int reserved, uint32_t id_high, uint32_t id_low) SWITCHCFG_NOEXCEPT;
/** Write the log line of send_trap_stack_attach() and nothing else. */
SWITCHCFG_API void send_log_stack_attach(
    int unit, uint32_t id_high, uint32_t id_low, const char *model) SWITCHCFG_NOEXCEPT;
/** @param absent non-zero when the processor board is gone  @param slot from 0 */
SWITCHCFG_API int send_trap_standby_mpu_presence(
    int absent, int slot, uint32_t id_high, uint32_t id_low, int state) SWITCHCFG_NOEXCEPT;
/** @} */

/** @name Fans, power, temperature, load. Fan, supply, alarm and fuse numbers are sent as they are given.
 * @{ */
SWITCHCFG_API int send_trap_fan_fail(int unit, int fan, int state) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_power_change(int unit, int supply, int state) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_alarm_change(int unit, int alarm, int active) SWITCHCFG_NOEXCEPT;
/** @param temperature degrees Celsius */
SWITCHCFG_API int send_trap_critical_temperature_detected(int unit, int temperature) SWITCHCFG_NOEXCEPT;
/** @param temperature degrees Celsius */
SWITCHCFG_API int send_trap_critical_temperature_no_more_detected(int unit, int temperature) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_fuse_status_change(int unit, int fuse, int ok) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_fan_fuse_status_change(int unit, int fuse, int ok) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_fans_board_presence(int absent) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_high_cpu_usage_detected(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_high_cpu_usage_no_more_detected(void) SWITCHCFG_NOEXCEPT;
/** @param usage per cent */
SWITCHCFG_API int send_trap_high_memory_usage_detected(int usage) SWITCHCFG_NOEXCEPT;
/** @param usage per cent */
SWITCHCFG_API int send_trap_high_memory_usage_no_more_detected(int usage) SWITCHCFG_NOEXCEPT;
/** @} */

/** @name Users and management access
 * @{ */
SWITCHCFG_API int send_trap_snmp_authentication_fail(void) SWITCHCFG_NOEXCEPT;
/** @param method what denied the user, for the log line */
SWITCHCFG_API int send_trap_login_failed(const char *user, const char *method) SWITCHCFG_NOEXCEPT;
/** @param method what let the user in, for the log line; null for a public key */
SWITCHCFG_API int send_trap_login_success(const char *user, const char *method) SWITCHCFG_NOEXCEPT;
/** An access from an address that is not allowed. @param service_port TCP or UDP port; known ones are sent as a code */
SWITCHCFG_API int send_trap_ip_illegal(int service_port, const char *address) SWITCHCFG_NOEXCEPT;
/** @} */

/** @name Ports
 * @{ */
/** Also needs the port's flag for link traps. Always 0. A null `link` counts as down. */
SWITCHCFG_API int send_trap_linkUp(int unit, int port, const struct trap_link *link) SWITCHCFG_NOEXCEPT;
/** As send_trap_linkUp(). */
SWITCHCFG_API int send_trap_linkDown(int unit, int port, const struct trap_link *link) SWITCHCFG_NOEXCEPT;
/** @param port_number interface number as the bindings have it: 64 x unit + port, both from 0, plus 1 */
SWITCHCFG_API int send_trap_sfp_changed(int port_number, int present) SWITCHCFG_NOEXCEPT;
/** @param disable non-zero when the port is disabled, zero when it is blocked */
SWITCHCFG_API int send_trap_loopback_detected(int unit, int port, int disable) SWITCHCFG_NOEXCEPT;
/** @param disable non-zero when the port was disabled, zero when it was blocked */
SWITCHCFG_API int send_trap_loopback_no_more_detected(int unit, int port, int disable) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_unidirectional_link_detected(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_unidirectional_link_recovered(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_critical_event_detected(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_critical_event_recovered(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_dying_gasp_received(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_link_flap_detected(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_link_flap_no_more_detected(int unit, int port) SWITCHCFG_NOEXCEPT;
/** @param port -1 for the management port */
SWITCHCFG_API int send_trap_lldp_remote_changed(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_port_sec_violation(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_poe_overcurrent(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_poe_restricted(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_remote_device_ready(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_remote_device_lost(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_remote_device_config_fail(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_remote_device_config_forced(int unit, int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_storm_control_broadcast(int unit, int port, int rate, int exceeded) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_storm_control_multicast(int unit, int port, int rate, int exceeded) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_bpdu_protect_limit_reached(int port) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_bpdu_protect_timer_expired(int port) SWITCHCFG_NOEXCEPT;
/**
 * The arguments are looked at first, whether or not the trap is enabled.
 * @return 0; -3 when `unit` is outside 0 to 7 or not in the stack, or it has no such Ethernet port; -7 when `name` is
 *         null or empty; -32, nothing queued, when the line is too long; -1 when the queue cannot be had
 */
SWITCHCFG_API int send_trap_evc_status_notification(
    int unit, int port, const char *name, int status) SWITCHCFG_NOEXCEPT;
/** @} */

/** @name Protocols
 * @{ */
/** @param mac 6 bytes, or null  @param ... ignored */
SWITCHCFG_API int send_trap_mac_move_detected(const uint8_t *mac, ...) SWITCHCFG_NOEXCEPT;
/** @param mac 6 bytes, or null */
SWITCHCFG_API int send_trap_duplicated_ip(int kind, const char *address, const uint8_t *mac) SWITCHCFG_NOEXCEPT;
/** @param rising non-zero when the threshold was crossed upwards  @param variable the object, in dotted form */
SWITCHCFG_API int send_trap_rmon_alarm(
    int rising, int threshold, int value, int sample_type, const char *variable, int index) SWITCHCFG_NOEXCEPT;
/** @param name null or empty for a domain without one */
SWITCHCFG_API int send_trap_eaps_status_change(int domain, int state, const char *name) SWITCHCFG_NOEXCEPT;
/** @param name null or empty for a ring without one */
SWITCHCFG_API int send_trap_erps_status_change(int ring, int state, const char *name) SWITCHCFG_NOEXCEPT;
/**
 * The arguments are looked at first, whether or not the trap is enabled.
 * @param text1,text2 names of the maintenance domain and association
 * @param second      VLAN, 1 to 4094
 * @return 0; -7 when a text is null or empty; -13 when `second` is no VLAN; -32, nothing queued, when the line is too
 *         long; -1 when the queue cannot be had
 */
SWITCHCFG_API int send_trap_cfm_fault_notification(
    const char *text1, const char *text2, int first, int second, int third) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_l3_route_table_full(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_l3_host_table_full(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_egress_table_full(void) SWITCHCFG_NOEXCEPT;
/** @param address IPv4 address in dotted form */
SWITCHCFG_API int send_trap_ldp(int a, int b, const char *address) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_rsvp(int a, int b) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_lldp_remote_changed_global(
    uint32_t inserts, uint32_t deletes, uint32_t drops, uint32_t ageouts) SWITCHCFG_NOEXCEPT;
/** @param name null or empty when it is not known */
SWITCHCFG_API int send_trap_lldp_med_remote_changed_global(int a, const char *name, int b) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_lst_link_down(int group) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int send_trap_lst_link_up(int group) SWITCHCFG_NOEXCEPT;
/** @param address IPv4 address in dotted form */
SWITCHCFG_API int send_trap_vrrp_new_master(int ifindex, int vrid, const char *address) SWITCHCFG_NOEXCEPT;
/** @param address IPv4 address in dotted form */
SWITCHCFG_API int send_trap_vrrp_auth_failure(const char *address, int error_type) SWITCHCFG_NOEXCEPT;
/** @} */

/** @name Reading the queue, for the SNMP agent. Each takes the Traps lock; any thread may call.
 * @{ */

/** A queued trap, as the status region has it. */
struct trap_entry {
    uint32_t id;
    char text[TRAP_TEXT_SIZE]; /**< variable bindings, NUL-terminated */
};

/** One binding of a trap's text. */
struct trap_varbind {
    char oid[TRAP_TEXT_SIZE];   /**< dotted numbers, with or without a dot ahead */
    char value[TRAP_TEXT_SIZE]; /**< as text */
    char type;                  /**< i integer, u unsigned, s string, a IPv4 address, o object identifier */
    uint8_t cut;                /**< 1 for a string without its end: the line was too long */
};

/** @return traps in the queue, 0 to 100, or -1 when the queue cannot be had */
SWITCHCFG_API int trap_queue_count(void) SWITCHCFG_NOEXCEPT;

/**
 * Copy the oldest traps and leave them in the queue.
 * @param max entries that fit, from 0
 * @return traps copied, or -1 when the queue cannot be had or an argument is bad
 */
SWITCHCFG_API int trap_queue_peek(struct trap_entry *entries, int max) SWITCHCFG_NOEXCEPT;

/**
 * Take the oldest traps out of the queue. Those that do not fit stay. When the process dies in the middle of it they
 * are all still there or all taken.
 * @param max entries that fit, from 0
 * @return traps taken, or -1 when the queue cannot be had or an argument is bad
 */
SWITCHCFG_API int trap_queue_drain(struct trap_entry *entries, int max) SWITCHCFG_NOEXCEPT;

/** Empty the queue. @return 0, or -1 when it cannot be had */
SWITCHCFG_API int trap_queue_clear(void) SWITCHCFG_NOEXCEPT;

/**
 * Read the next binding of a trap's text. Needs no queue.
 * @param text where to read; moves behind the binding
 * @return 1 with `out` set; 0 at the end of the text; -1, and `text` at the place, when no binding can be read there or
 *         an argument is null. After -1 the rest of the text cannot be read.
 */
SWITCHCFG_API int trap_queue_next_varbind(const char **text, struct trap_varbind *out) SWITCHCFG_NOEXCEPT;
/** @} */

SWITCHCFG_END_DECLS

#endif
