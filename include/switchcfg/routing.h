/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file routing.h
 * Commands to the routing stack, the daemon of the routing and MPLS protocols.
 *
 * A process keeps one TCP connection to the daemon on 127.0.0.1, opened by its first command. A command is a header of
 * three big-endian words (DC_FRAME_MAGIC, command id, payload length) and the payload, which is between the caller and
 * the daemon. A reply is a header of two big-endian words (status, data length) and the data. Status DC_STATUS_MORE
 * means that more replies follow, DC_STATUS_PROTOCOL_ERROR that the daemon did not understand; every other status ends
 * the exchange and is its result.
 *
 * One command is in flight on the whole switch: each holds the lock "/tmp/dcGetSetLock" (locks.h), which cfg_init()
 * opens, from before it is sent until its last reply. Threads of one process wait for each other like processes. A
 * forked child makes a connection of its own. cfg_exit() closes the connection.
 *
 * What goes on is told in debug lines of class DC_DEBUG_CLASS (debug.h).
 */
#ifndef SWITCHCFG_ROUTING_H
#define SWITCHCFG_ROUTING_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** TCP port of the routing stack. */
#define DC_PORT 61037

/** First word of each command. */
#define DC_FRAME_MAGIC 0xDADAADADu

/** Largest data of one reply, in bytes. What is announced as larger is refused without being read. */
#define DC_REPLY_LIMIT (256u * 1024u * 1024u)

/** Longest wait for a reply's header, and again for its data, in seconds. */
#define DC_REPLY_TIMEOUT_S 400

/** Class of the bridge's debug lines. */
#define DC_DEBUG_CLASS 27

/** Statuses that are no result. */
enum dc_status {
    DC_STATUS_MORE = 1000,          /**< data, and more replies follow */
    DC_STATUS_PROTOCOL_ERROR = 1001 /**< the command was not understood; the connection is given up */
};

/** Results of the routing stack that mean something to us; cfg_dc_cvt_dcl_to_cfg_error_code() has their error codes. */
enum dc_result {
    DC_RESULT_OK = 1,
    DC_RESULT_INVALID = 3,
    DC_RESULT_INVALID_VALUE = 4,
    DC_RESULT_NO_RESOURCES = 5,
    DC_RESULT_NOT_FOUND = 6
};

/** Commands that this library treats differently from the others. */
enum dc_command {
    /** Has no reply. */
    DC_CMD_RTM_CTRL_NED_DELAY = 6,
    /* Each of these starts on a fresh connection. */
    DC_RSVP_SET_TUNNEL = 215,
    DC_MPLS_GET_TUNNEL_INFO = 366,
    DC_MPLS_GET_TUNNEL_RESOURCE_INFO = 367,
    DC_MPLS_GET_TUNNEL_ARHOP_INFO = 369
};

/**
 * Name of a command, for diagnostics. Ids 188 and 224 were given twice; the name is one of the two.
 * @return constant text; "Unknown" for an id that no command has. Any thread may call
 */
SWITCHCFG_API const char *dc_get_cmd_id_name(uint32_t id) SWITCHCFG_NOEXCEPT;

/**
 * Called with each reply of status DC_STATUS_MORE that has data.
 *
 * The data is the sender's and good until the callback returns; a NUL follows it that its length does not count. The
 * length stands in the `reply_length` that the exchange was started with, so user data usually leads there. The
 * callback runs while the command lock is held: it must not send a command, and not leave by a C++ exception or
 * longjmp().
 * @return negative when the data makes no sense, which only goes to the debug lines: the exchange goes on
 */
typedef int (*dc_reply_callback)(void *user_data, void *reply_data);

/**
 * Register the callback for this process's next exchange, which takes the registration along, also when it fails before
 * it begins. To be called by the thread that sends next.
 * @return 0; -1 when a callback is registered already
 */
SWITCHCFG_API int dc_register_callback(void *user_data, dc_reply_callback callback) SWITCHCFG_NOEXCEPT;

/**
 * Send a command to the routing stack and read its replies.
 *
 * Waiting is bounded everywhere: 110 s for the lock; 49 s for a daemon that refuses connections, 99 s for one that does
 * not answer; 60 s for one that stops taking the command; DC_REPLY_TIMEOUT_S for each header and each data. Writing is
 * tried six times, each on a connection of its own. A daemon that goes on sending parts is listened to as long as it
 * does.
 *
 * A connection is kept from command to command, and what the daemon sent unasked meanwhile is thrown away. A daemon
 * that ended since is noticed when it does not answer: the first command to its successor may fail with -37, and is not
 * sent again by itself, because it may have been carried out.
 *
 * Any thread may call, between cfg_init(), which opens the lock, and cfg_exit().
 * @param payload      `length` bytes in the form that the command has; may be null when `length` is 0
 * @param reply        receives the data of the last reply that had any, with a NUL behind it: heap memory that the
 *                     caller frees; null when there was none and after a failure. May be null
 * @param reply_length receives the data length of the last reply, which may be 0 although an earlier one had data; 0
 *                     after a failure. May be null
 * @return the daemon's result (above 0 as a rule, DC_RESULT_OK for success; see cfg_dc_cvt_dcl_to_cfg_error_code()); 0
 *         for DC_CMD_RTM_CTRL_NED_DELAY once it is sent; -2 when memory for a reply is not to be had or the reply is
 *         larger than DC_REPLY_LIMIT; -7 when `payload` is null and `length` is not 0; -37 when the connection, the
 *         sending or the reading failed, or the daemon reported a protocol error; -140 when the lock was held elsewhere
 *         all the time. After every failure but -7 and -140 the connection is closed
 */
SWITCHCFG_API int dc_socket_send(
    uint32_t command, const void *payload, uint32_t length, void **reply, uint32_t *reply_length);

/**
 * Throw away what the daemon sent unasked and close the connection, if there is one. Not during an exchange of another
 * thread. cfg_exit() calls it.
 */
SWITCHCFG_API void cfg_dc_finish_connection(void) SWITCHCFG_NOEXCEPT;

/**
 * Translate a result of the routing stack. Error codes that dc_socket_send() itself returned are negative and must not
 * be translated.
 * @return 0 for 1; -7 for 3 and 4; -2 for 5; -8 for 6; -1 for everything else, 0 included
 */
SWITCHCFG_API int cfg_dc_cvt_dcl_to_cfg_error_code(int code) SWITCHCFG_NOEXCEPT;

/** Result files are "/tmp/cliN/file.S": N is the caller's number, S counts from 0. */
#define DC_RESULT_FOLDER "/tmp/cli"
#define DC_RESULT_FILE "file"

/**
 * Send a command whose answer the daemon writes to files, and read those.
 *
 * The folder "/tmp/cliN/" is made with mode 0700 (one of a caller that died is emptied and used), the command is sent,
 * then "file.0", "file.1" and so on up to the first that is missing are read one behind the other. The files and the
 * folder are gone afterwards, whatever the result. Any thread may call; `number` is one caller's at a time.
 * @param payload tells the daemon the number, in the form that the command has
 * @param number  which folder; a process number or a terminal's
 * @param text    receives what the files hold, always terminated
 * @param size    bytes of `text`, at least 1
 * @param used    receives the length of the text; may be null
 * @return 0; -32 when the files hold more than fits (`text` is full then); -44 when the folder cannot be made or is
 *         another user's, or a file cannot be read; -7 when `text` is null or `size` is 0; error codes as
 *         dc_socket_send(); the translation of any other result than DC_RESULT_OK, nothing is read then
 */
SWITCHCFG_API int cfg_dc_read_data_from_file(
    uint32_t command, const void *payload, uint32_t length, uint32_t number, char *text, uint32_t size, uint32_t *used);

SWITCHCFG_END_DECLS

#endif
