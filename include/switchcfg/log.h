/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file log.h
 * Reaching the logging daemon: messages, and commands to its control port.
 *
 * A message is one formatted line, tagged with a facility or a named category and a level. It goes over a connection of
 * its own to the daemon's local socket; the caller is never held up by a full socket. A message that finds the daemon
 * but cannot be handed over leaves a line in the fallback file. A message that finds no daemon leaves nothing but its
 * result.
 *
 * Results are 0 or one of the negative codes of enum log_error. Nothing is printed. There is no shared state: every
 * function may be called from any thread.
 */
#ifndef SWITCHCFG_LOG_H
#define SWITCHCFG_LOG_H

#include <stdarg.h>
#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Local stream socket on which the logging daemon takes messages. */
#define LOG_SOCKET_PATH "/tmp/logtest"

/** Where a message goes that could not be handed over. Its folder is not created. */
#define LOG_FALLBACK_PATH "/mnt/flash/log/log_libloggers.txt"

/** Bytes of the category name in the message header, terminator included. */
#define LOG_CATEGORY_SIZE 64

/** Category name of messages that go by facility. */
#define LOG_NO_CATEGORY "NO_CATEGORY"

/** Facility byte of messages that go by category. */
#define LOG_NO_FACILITY 255

/** Bytes of the buffer of log_set_err_msg(). */
#define LOG_ERR_MSG_SIZE 500

/** Bytes of the result of log_standardize_ip(). */
#define LOG_ADDRESS_TEXT_SIZE 46

/** Results of the logging interface and of the logging daemon. */
enum log_error {
    LOGGERS_RET_OK = 0,
    LOGGERS_ERR_GENERIC = -1001,
    LOGGERS_ERR_NOT_FOUND = -1002,
    LOGGERS_ERR_NULL_POINTER = -1003,
    LOGGERS_ERR_PERMISSION_DENIED = -1004,
    LOGGERS_ERR_NO_RESOURCES = -1005,
    LOGGERS_ERR_INVALID_INPUT = -1006,
    LOGGERS_ERR_INVALID_RANGE = -1007,
    LOGGERS_ERR_INVALID_PARAM = -1008,
    LOGGERS_ERR_INVALID_STR_LEN = -1009,
    LOGGERS_ERR_INVALID_IP = -1010,
    LOGGERS_ERR_INVALID_PATH = -1011,
    LOGGERS_ERR_INVALID_FIFONAME = -1012,
    LOGGERS_ERR_INVALID_DESTINATION = -1013,
    LOGGERS_ERR_INVALID_FACILITY = -1014,
    LOGGERS_ERR_INVALID_LEVEL = -1015,
    LOGGERS_ERR_INVALID_COMMAND = -1016,
    LOGGERS_ERR_SYSTEM_IO = -1017,
    LOGGERS_ERR_SERVER_CONNECT = -1018,
    LOGGERS_ERR_SERVER_SEND = -1019,
    LOGGERS_ERR_SERVER_RECV = -1020,
    LOGGERS_ERR_CONVERT_IP_STR_TO_IP_BIN = -1021,
    LOGGERS_ERR_CONVERT_HOSTNAME_TO_IP_STR = -1022,
    LOGGERS_ERR_FIFO_OPEN = -1023,
    LOGGERS_ERR_FIFO_CREATE = -1024,
    LOGGERS_ERR_FILE_OPEN = -1025,
    LOGGERS_ERR_FILE_READ = -1026,
    LOGGERS_ERR_FILE_WRITE = -1027,
    LOGGERS_ERR_QUEUE_ADD_LOG = -1028,
    LOGGERS_ERR_QUEUE_FULL = -1029,
    LOGGERS_ERR_EXTRA_DATA_ALLOCATE = -1030,
    LOGGERS_ERR_CONFIGURATION_SAVE = -1031,
    LOGGERS_ERR_CONFIGURATION_GET = -1032
};

/** Commands of the logging daemon. */
enum log_command_code {
    LOGGERS_CMD_HELP,
    LOGGERS_CMD_SHUTDOWN,
    LOGGERS_CMD_CREATE_DESTINATION,
    LOGGERS_CMD_UPDATE_DESTINATION,
    LOGGERS_CMD_REMOVE_DESTINATION,
    LOGGERS_CMD_GET_DESTINATION,
    LOGGERS_CMD_GET_ALL_DESTINATION,
    LOGGERS_CMD_SHOW_DESTINATION,
    LOGGERS_CMD_CLEAN_DESTINATION,
    LOGGERS_CMD_CREATE_RULE,
    LOGGERS_CMD_UPDATE_RULE,
    LOGGERS_CMD_REMOVE_RULE,
    LOGGERS_CMD_GET_RULE,
    LOGGERS_CMD_GET_ALL_RULES,
    LOGGERS_CMD_CREATE_CATEGORY,
    LOGGERS_CMD_UPDATE_CATEGORY,
    LOGGERS_CMD_REMOVE_CATEGORY,
    LOGGERS_CMD_GET_CATEGORY,
    LOGGERS_CMD_GET_ALL_CATEGORY,
    LOGGERS_CMD_SET_ID,
    LOGGERS_CMD_ENABLE_QUEUE,
    LOGGERS_CMD_COUNT
};

/** What goes ahead of the text of every message, in host byte order: 118 bytes. */
struct log_message_header {
    char category[LOG_CATEGORY_SIZE]; /**< NUL-terminated */
    uint8_t level;
    uint8_t facility;     /**< LOG_NO_FACILITY when the message goes by category */
    uint16_t text_length; /**< bytes of text that follow, terminator included */
    uint8_t reserved[47];
    uint8_t reserved_flag;
    uint16_t reserved_word;
};

/** Bytes of a command on the wire. */
#define LOGGERS_COMMAND_SIZE 4688

/**
 * A command to the logging daemon and its reply. The first LOGGERS_COMMAND_SIZE bytes are what travels, in host byte
 * order; `body` and `tail` are laid out by the daemon and pass through untouched. On machines whose pointers do not fit
 * the four bytes that the record keeps for one, the pointer stands behind the record; use `extra_data` by its name and
 * the difference does not show.
 */
struct loggers_command {
    uint32_t command; /**< enum log_command_code */
    uint32_t word;
    char destination[64]; /**< NUL-terminated */
    uint8_t body[4100];
#if UINTPTR_MAX == UINT32_MAX
    void *extra_data; /**< what followed the reply, element_count x element_size bytes, or null */
#else
    uint32_t extra_data_slot; /**< always 0 */
#endif
    uint32_t element_count; /**< elements of extra data; set by the reply */
    uint32_t element_size;  /**< bytes of one element; set by the reply */
    uint8_t tail[504];
#if UINTPTR_MAX != UINT32_MAX
    void *extra_data; /**< what followed the reply, element_count x element_size bytes, or null */
#endif
};

/**
 * Send one message by facility.
 *
 * `format` is printf's, with the conversions that cfg_init() adds (print_ext.h). The daemon sees the low 16 bits of the
 * text's length plus 1: texts of 65,535 characters and more are cut, and one of exactly 65,535 fails.
 * @param facility,level low 8 bits; their meaning is the daemon's (the switch uses syslog's numbers)
 * @return 0 when the message was handed over; -1018 when the daemon cannot be reached, or takes no connection for 10
 *         seconds; -1001 when the text cannot be formatted; -1019 when it could not be sent, with a line in the
 * fallback file
 */
SWITCHCFG_API int log_send_fac(int facility, int level, const char *format, ...) SWITCHCFG_NOEXCEPT;

/** As log_send_fac(). */
SWITCHCFG_API int vlog_send_fac(int facility, int level, const char *format, va_list arguments) SWITCHCFG_NOEXCEPT;

/**
 * Send one message by category, otherwise as log_send_fac().
 * @param category cut to 63 characters
 * @return as log_send_fac(); also -1003 when `category` is null and -1008, nothing sent, when it is empty
 */
SWITCHCFG_API int log_send_cat(const char *category, int level, const char *format, ...) SWITCHCFG_NOEXCEPT;

/** As log_send_cat(). */
SWITCHCFG_API int vlog_send_cat(
    const char *category, int level, const char *format, va_list arguments) SWITCHCFG_NOEXCEPT;

/**
 * Fill in a message header: all of it but `reserved`, which the sender clears.
 * @param name        category, cut to 63 characters
 * @param text_length characters of text, without the terminator
 * @return 0; -1008 when `name` is null or empty or `header` is null
 */
SWITCHCFG_API int log_build_message_header(const char *name, int facility, int level, uint16_t text_length,
    struct log_message_header *header) SWITCHCFG_NOEXCEPT;

/**
 * Format a text into a buffer of LOG_ERR_MSG_SIZE bytes, cleared first.
 * @return 0; -1001 when the text was cut (499 characters remain) or formatting failed; -1008 when an argument is null
 */
SWITCHCFG_API int log_set_err_msg(char *buffer, const char *format, ...) SWITCHCFG_NOEXCEPT;

/**
 * Resolve a host name or address text with the system's resolver, which may ask the network.
 * @param family_out family of the first result (AF_INET, AF_INET6); 0 when there is none
 * @return 0; -1022 when it cannot be resolved; -1008 when an argument is null
 */
SWITCHCFG_API int log_get_address_family(const char *host, int *family_out) SWITCHCFG_NOEXCEPT;

/**
 * Write the canonical text of an IPv4 or IPv6 address; of a host name, that of its first address.
 * @param out LOG_ADDRESS_TEXT_SIZE bytes, cleared first; stays empty for any other family
 * @return as log_get_address_family()
 */
SWITCHCFG_API int log_standardize_ip(const char *text, char *out) SWITCHCFG_NOEXCEPT;

/**
 * @param code a result of this interface, or its number counted from 0 (1 for -1001)
 * @return the name of the code, "LOGGERS_RET_OK" for instance; null when it has none
 */
SWITCHCFG_API const char *log_get_error_string(int code) SWITCHCFG_NOEXCEPT;

/** @return the name of the command, "LOGGERS_CMD_HELP" for instance; null when it has none */
SWITCHCFG_API const char *log_get_command_string(int command) SWITCHCFG_NOEXCEPT;

/**
 * Append an entry to the fallback file: the date on a line of its own, then a blank and the text.
 * @return 0; -1001 when the file cannot be opened; -1003 when `text` is null
 */
SWITCHCFG_API int log_log_to_file(const char *text) SWITCHCFG_NOEXCEPT;

/**
 * Send a command to the logging daemon of this switch over IPv4 and read its reply over the record.
 *
 * The extra data of the reply, if any, is the caller's: release it with loggers_finish_command(). It has one NUL byte
 * behind it that is not counted. After a failure there is none.
 * @param address must be an IPv4 address, or a name of one; the connection goes to 127.0.0.1 all the same
 * @param port    only the low 16 bits count
 * @param timeout whole seconds, once for the reply and once for the extra data
 * @param command command, word, destination, body and tail filled in; the rest is set here
 * @return 0; -1003 when an argument is null; -1022 when `address` cannot be resolved, -1010 when it is of another
 *         family; -1018 when the daemon cannot be reached; -1019 when the exchange failed; -1008 when the reply claims
 * a pointer; -1030 when memory for the extra data cannot be had, or its size cannot be true; -1020 when the extra data
 * did not arrive
 */
SWITCHCFG_API int loggers_send_command_ipv4(
    const char *address, uint32_t port, uint32_t timeout, struct loggers_command *command) SWITCHCFG_NOEXCEPT;

/**
 * As loggers_send_command_ipv4(), over IPv6 and to the address given.
 * @param address  IPv6 address text
 * @param scope_id index of the interface for a link-local address, else 0
 * @return as loggers_send_command_ipv4(); also -1021 when `address` is a name and not an address
 */
SWITCHCFG_API int loggers_send_command_ipv6(const char *address, uint32_t scope_id, uint32_t port, uint32_t timeout,
    struct loggers_command *command) SWITCHCFG_NOEXCEPT;

/** Release the extra data of a command; nothing happens when there is none or `command` is null. */
SWITCHCFG_API void loggers_finish_command(struct loggers_command *command) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
