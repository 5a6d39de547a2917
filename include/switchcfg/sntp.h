/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file sntp.h
 * The SNTP client: on or off, polling interval, up to three servers, authentication, up to three keys.
 *
 * Everything is kept in the running configuration. Calls that say "applies" then rewrite the key file and switch the
 * process "sntpd" on or off, see apply_sntp(); their change stays also when that fails. Callers that change settings
 * hold the CFG lock (locks.h) and write back with cfg_data_sync() as for every change of the configuration; nothing is
 * locked here. Between cfg_init() and cfg_exit() only: while the configuration is not mapped, getters and predicates
 * answer 0, look-ups find nothing (so that what looks for a key or server first gives -8), and other changes give -1.
 *
 * A slot is 0 to 2, of servers and of keys alike. An address is IPv4 ("192.0.2.1") or IPv6 ("2001:db8::1") text; two
 * texts of the same address are the same server. Texts are at most SNTP_KEY_TEXT_SIZE characters.
 *
 * Codes beside 0: -1 not mapped, -5 "Already exists", -6 "Out of limits" (a slot above 2), -7 "Invalid parameter" (no
 * address, or as stated), -8 "Not found", -9 "Maximum number reached", -32 "Text exceeds maximum size", -44 "File
 * operation error" (the key file), and what cfg_pmg_err_code_translate() makes of a failure of the process manager.
 */
#ifndef SWITCHCFG_SNTP_H
#define SWITCHCFG_SNTP_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Slots for servers, and for keys. */
#define SNTP_SLOTS 3

/** Most characters of a key's type and of its value. */
#define SNTP_KEY_TEXT_SIZE 8

/** Bytes of the longest address text with its terminator; SNTP_IPV4_TEXT_SIZE do for IPv4. */
#define SNTP_ADDRESS_TEXT_SIZE 46
#define SNTP_IPV4_TEXT_SIZE 16

/** The file that the SNTP daemon reads the keys from. */
#define SNTP_KEY_FILE "/etc/ntp.keys"

/** Name of the SNTP daemon in the process manager. */
#define SNTP_PROCESS_NAME "sntpd"

/**
 * @name Simple settings
 * Of each: the value in force, the factory default, whether the two are equal (1) or not (0), setting it, setting it to
 * the default. Values are stored as given. The setters apply and return the result of apply_sntp().
 */
/**@{*/

/** @return whether the client runs: 0 or 1 */
SWITCHCFG_API int cfg_get_sntp_enable(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_get_default_sntp_enable(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_is_default_sntp_enable(void) SWITCHCFG_NOEXCEPT;
/** @param enable 0 or 1; one byte of it is stored */
SWITCHCFG_API int cfg_set_sntp_enable(int enable) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_set_default_sntp_enable(void) SWITCHCFG_NOEXCEPT;

/** @return the polling interval, seconds */
SWITCHCFG_API uint32_t cfg_get_sntp_interval(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API uint32_t cfg_get_default_sntp_interval(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_is_default_sntp_interval(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_set_sntp_interval(uint32_t interval) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_set_default_sntp_interval(void) SWITCHCFG_NOEXCEPT;

/** @return whether answers must be authenticated: 0 or 1 */
SWITCHCFG_API int cfg_get_sntp_auth_enable(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_get_default_sntp_auth_enable(void) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_is_default_sntp_auth_enable(void) SWITCHCFG_NOEXCEPT;
/** @param enable 0 or 1; one byte of it is stored */
SWITCHCFG_API int cfg_set_sntp_auth_enable(int enable) SWITCHCFG_NOEXCEPT;
SWITCHCFG_API int cfg_set_default_sntp_auth_enable(void) SWITCHCFG_NOEXCEPT;

/**@}*/

/**
 * @name Servers
 * In use from slot 0 on without gaps, asked in this order. An address of zeros is stored, but its slot
 * does not count as in use: the next server takes it.
 */
/**@{*/

/** Add a server in the first free slot; applies. @return -7; -5 when it is there; -9 when no slot is free; apply_sntp()
 */
SWITCHCFG_API int cfg_add_sntp_server(const char *address) SWITCHCFG_NOEXCEPT;

/**
 * Remove a server, moving those behind it forward with their state words; applies. The first server stays: it is
 * replaced by cfg_sntp_clear_key_server() only, so that a switch is not left without one by mistake.
 * @return -7; -8 when it is not there or is the first; apply_sntp()
 */
SWITCHCFG_API int cfg_del_sntp_server(const char *address) SWITCHCFG_NOEXCEPT;

/**
 * Remove a server, the first one too, and the first key binding to it. Undoing the binding applies, removing the server
 * does not: callers that clear several servers call apply_sntp() once at the end.
 * @return 0; -7, also for "all"; an error of undoing the binding, with the server still there; -8, and the error
 *         message "No server configured for that IP address", when there is no such server (a binding is undone
 *         nevertheless)
 */
SWITCHCFG_API int cfg_sntp_clear_key_server(const char *address) SWITCHCFG_NOEXCEPT;

/** Remove all servers, then all key bindings; applies. @return 0, or -1 */
SWITCHCFG_API int cfg_sntp_clear_all_server(void) SWITCHCFG_NOEXCEPT;

/** @return 1 when the server slot is in use, else 0 */
SWITCHCFG_API int sntp_has_server(int slot) SWITCHCFG_NOEXCEPT;

/** @return 1 when any server slot is in use, else 0 */
SWITCHCFG_API int sntp_has_any_server(void) SWITCHCFG_NOEXCEPT;

/** @return the slot of the server, -1 when it is not there, -7 */
SWITCHCFG_API int sntp_find_server_index(const char *address) SWITCHCFG_NOEXCEPT;

/**
 * Write the address of a server slot as text.
 * @param buffer at least SNTP_ADDRESS_TEXT_SIZE bytes, or SNTP_IPV4_TEXT_SIZE for an IPv4 server
 * @return 0; -1, with nothing written, for a slot above 2 or one that holds no address
 */
SWITCHCFG_API int sntp_dump_server_ip_addr(int slot, char *buffer) SWITCHCFG_NOEXCEPT;

/** The same of the server that answered last, which the SNTP daemon leaves in the status region. */
SWITCHCFG_API int sntp_dump_lastOk_ip_addr(char *buffer) SWITCHCFG_NOEXCEPT;

/** For the SNTP daemon: leave the server that answered last in the status region. @return 0, -7, -1 */
SWITCHCFG_API int sntp_set_lastOk_ip_addr(const char *address) SWITCHCFG_NOEXCEPT;

/**@}*/

/**
 * @name Keys
 * A key has an identifier from 1 on, a type ("MD5", "SHA1", as the SNTP daemon knows them) and a value, and may be
 * bound to one server. Identifier 0 marks a free record and names no key.
 */
/**@{*/

/** @return the identifier of the key in the slot (its 32 bits as an int), 0 when free; -6 */
SWITCHCFG_API int cfg_get_sntp_key_id(int slot) SWITCHCFG_NOEXCEPT;

/** @param slot 0 to 2, NOT checked @return the type in the running configuration; null while that is not mapped */
SWITCHCFG_API const char *cfg_get_sntp_key_type(int slot) SWITCHCFG_NOEXCEPT;

/** @param slot 0 to 2, NOT checked @return the value in the running configuration; null while that is not mapped */
SWITCHCFG_API const char *cfg_get_sntp_key_value(int slot) SWITCHCFG_NOEXCEPT;

/** Store an identifier, nothing else. @return 0, -6, -1 */
SWITCHCFG_API int cfg_set_sntp_key_id(int slot, uint32_t id) SWITCHCFG_NOEXCEPT;

/** Store a type, nothing else. @return 0; -6; -32 when it is too long; -7 when it is empty or null; -1 */
SWITCHCFG_API int cfg_set_sntp_key_type(int slot, const char *type) SWITCHCFG_NOEXCEPT;

/** Store a value, nothing else. @return 0; -6; -32 when it is too long; -7 when it is empty or null; -1 */
SWITCHCFG_API int cfg_set_sntp_key_value(int slot, const char *value) SWITCHCFG_NOEXCEPT;

/**
 * Add a key, not bound, in the first free record and rewrite the key file. The daemon is not switched. A key file that
 * cannot be written is no error here: the key is configured, and binding it to a server writes the file again and
 * tells.
 * @return 0; -7 for identifier 0; -32 when a text is too long; -7 when one is empty or null; -5 when the identifier is
 *         taken; -9 when no record is free
 */
SWITCHCFG_API int cfg_sntp_add_key(uint32_t id, const char *type, const char *value) SWITCHCFG_NOEXCEPT;

/**
 * Remove a key with its binding; applies, and rewrites the key file once more.
 * @return 0; -8; -44, with the key removed. Failures of the process manager are not reported
 */
SWITCHCFG_API int cfg_sntp_remove_key(uint32_t id) SWITCHCFG_NOEXCEPT;

/** Bind a key to a server, which need not be configured; applies. @return -7; -8 for no such key; apply_sntp() */
SWITCHCFG_API int cfg_sntp_define_key_server(uint32_t id, const char *address) SWITCHCFG_NOEXCEPT;

/**
 * Undo the binding of the first key that is bound to a server; applies.
 * @param address an address, or "all" for the bindings of all keys
 * @return -7; 0 when no key is bound to it; apply_sntp(). For "all": 0, whatever applying gives
 */
SWITCHCFG_API int cfg_sntp_undefine_key_server(const char *address) SWITCHCFG_NOEXCEPT;

/** @return the slot of the first key that is bound to the server, -1 when none is, -7 */
SWITCHCFG_API int sntp_find_key_index(const char *address) SWITCHCFG_NOEXCEPT;

/** @return the identifier of the first key that is bound to the server, 0 when none is, -7 */
SWITCHCFG_API int cfg_get_sntp_server_key(const char *address) SWITCHCFG_NOEXCEPT;

/**@}*/

/**
 * Put the settings into force: clear the records of free keys, rewrite the key file, and have the process manager
 * enable "sntpd" when the client is on and has a server, else disable it.
 *
 * The key file has one line per key, "%11lu\t%11s\t%11s \n" of identifier, type and value, and is empty without keys.
 * It is replaced in one step, so a reader sees the old keys or the new ones, also across a power cut. A new file can be
 * read by its owner only, the user of this process; of one that is there, owner and group stay, and the rights of
 * others and of the group to write are taken away. Where only the file itself can be written (a read-only folder, a
 * file that is mounted), it is emptied and written in place.
 * @return 0; -44 when the key file could not be written; a negative code, which wins, when the process manager could
 * not be reached or refused
 */
SWITCHCFG_API int apply_sntp(void) SWITCHCFG_NOEXCEPT;

/**
 * After loading a configuration that an older release saved: set servers and bindings from the legacy address texts,
 * which are the only ones such a file has. An empty text, and one that is no address, clears its record.
 * @return 0, or -1
 */
SWITCHCFG_API int cfg_sntp_compatibility(void) SWITCHCFG_NOEXCEPT;

/**
 * Before saving for an older release: write IPv4 servers and bindings as legacy address texts, and clear the text of
 * all others: older releases know no IPv6. A binding that is the default one is cleared too.
 * @return 0, or -1
 */
SWITCHCFG_API int cfg_sntp_backward_compatibility(void) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
