/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file request_channel.h
 * The request/reply channel between the daemons of the switch.
 *
 * A daemon listens on one TCP port and runs one loop: a callback for each connection and a periodic one. A client
 * connects, sends one record and reads a reply of the same size into the same buffer; then the connection ends. The
 * channel adds no header: size and layout of the record are agreed between each client and its daemon, and its words
 * travel in the byte order of the machine.
 *
 * The loop is single-threaded: while a callback works, no other connection is accepted and the timer waits, so a
 * connection callback reads with a time-out (vx_read_timeout(), socket_timeouts_set()) and never trusts its peer to go
 * on. Up to 5 connections wait meanwhile. Clients may call from any thread; each call has its own connection. Nothing
 * is logged.
 */
#ifndef SWITCHCFG_REQUEST_CHANNEL_H
#define SWITCHCFG_REQUEST_CHANNEL_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Called each time the period has run out. The result is ignored. */
typedef int (*daemon_timer_callback)(void *argument);

/** Called for each accepted connection, with its descriptor. The result is ignored. */
typedef int (*daemon_connection_callback)(void *argument, int fd);

/**
 * What a daemon serves. The daemon owns it and keeps it alive; the loop only reads it, and anew on every pass, so the
 * callbacks may change period, argument and callbacks. A new period set from the timer callback counts from the tick
 * after the next one.
 */
struct daemon_server {
    uint16_t port;   /**< TCP port to listen on */
    uint64_t period; /**< timer period in hundredths of a second, counted from the last tick, not from the last due
                          time; 0 ticks whenever no connection waits, without pause */
    void *argument;  /**< first argument of both callbacks */
    daemon_timer_callback timer;           /**< may be null */
    daemon_connection_callback connection; /**< may be null: connections are then accepted and, if asked, closed */
};

/**
 * Serve on 127.0.0.1, closing each connection after its callback: the callback must leave the descriptor open.
 *
 * The first tick comes at once, unless a connection is already waiting. Later errors never end the loop: a failed wait
 * pauses it for a second (a signal does not), a failed accept is passed over.
 * @return does not return, except -1 when `server` is null or its port cannot be listened on
 */
SWITCHCFG_API int daemon_server_loop(const struct daemon_server *server);

/**
 * As daemon_server_loop(), saying who closes.
 * @param close_connections non-zero: the loop closes each connection after its callback, which must leave it open; 0:
 *                          the callback owns the descriptor
 */
SWITCHCFG_API int daemon_server_loop_conn_close(const struct daemon_server *server, int close_connections);

/** As daemon_server_loop(), on every IPv6 address: other hosts can connect too. */
SWITCHCFG_API int daemon_server_loop6(const struct daemon_server *server);

/** As daemon_server_loop_conn_close(), on every IPv6 address: other hosts can connect too. */
SWITCHCFG_API int daemon_server_loop_conn_close6(const struct daemon_server *server, int close_connections);

/**
 * Connect to the daemon on 127.0.0.1, waiting as long as the system does.
 * @param port only the low 16 bits count
 * @return the connected descriptor, the caller's to close, or -1 with errno
 */
SWITCHCFG_API int daemon_client_req_connect(uint32_t port) SWITCHCFG_NOEXCEPT;

/**
 * Connect to a daemon over IPv6, waiting as long as the system does.
 * @param port     only the low 16 bits count
 * @param scope_id index of the interface for a link-local address, else 0
 * @return the connected descriptor, the caller's to close, or -1 with errno
 */
SWITCHCFG_API int daemon_client_req_connect_ipv6(
    uint32_t port, const uint8_t address[16], uint32_t scope_id) SWITCHCFG_NOEXCEPT;

/**
 * Send the record in `buffer` and read the reply over it.
 *
 * On success the descriptor stays open, for more of the exchange or for the caller to close. On failure IT IS CLOSED,
 * except when `buffer` is null. A peer that closed gives an error, never a signal.
 * @param seconds time-out, whole seconds, of the whole reply; a peer that takes no more data is given up after the same
 *                time
 * @param length  bytes of the record and of the reply
 * @return 0; -1 on an error, a time-out or a peer that closed before its reply was whole. The buffer then holds the
 *         record, or a part of a reply over it
 */
SWITCHCFG_API int daemon_client_req_send(int fd, uint32_t seconds, void *buffer, uint32_t length) SWITCHCFG_NOEXCEPT;

/**
 * One exchange with the daemon on 127.0.0.1: connect, send, reply, close.
 * @param port    only the low 16 bits count
 * @param seconds time-out of the reply, whole seconds
 * @param buffer  the record, then the reply; never null (the connection would stay open)
 * @return 0, or -1
 */
SWITCHCFG_API int daemon_client_req(uint32_t port, uint32_t seconds, void *buffer, uint32_t length) SWITCHCFG_NOEXCEPT;

/** One exchange with a daemon over IPv6, as daemon_client_req(). */
SWITCHCFG_API int daemon_client_req_ipv6(uint32_t port, const uint8_t address[16], uint32_t scope_id, uint32_t seconds,
    void *buffer, uint32_t length) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
