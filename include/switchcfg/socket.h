/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file socket.h
 * One-call helpers that create, connect, accept on and move data through sockets: TCP over IPv4 and IPv6, Unix-domain
 * streams and datagrams, single raw Ethernet frames.
 *
 * Names: socket_is_ is a TCP stream over IPv4, socket_is6_ one over IPv6, socket_us_ a Unix-domain stream and
 * socket_ud_ a Unix-domain datagram socket.
 *
 * A helper returns a ready descriptor, the caller's to close and inherited by programs the process executes, or closes
 * all it opened and returns a negative code. The IPv4 and Unix-domain helpers return -1 for every failure, the IPv6
 * ones tell failures apart (enum socket_is6_error); daemons rely on the difference. errno is left as the failing call
 * set it. Nothing is logged and nothing is shared: every function may be called from any thread.
 *
 * A port is in host order and only its low 16 bits count. An IPv4 address is a 32-bit word in network order, an IPv6
 * address its 16 bytes; both are copied as they stand. A Unix-domain path is cut to 107 characters.
 */
#ifndef SWITCHCFG_SOCKET_H
#define SWITCHCFG_SOCKET_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** What the IPv6 helpers return; any other failure of theirs is -1. */
enum socket_is6_error {
    SOCKET_IS6_ERR_SOCKET = -1001, /**< the socket could not be made */
    SOCKET_IS6_ERR_BIND = -1002,   /**< the address could not be bound, e.g. is in use */
    SOCKET_IS6_ERR_LISTEN = -1003, /**< the socket could not be made to listen */
    SOCKET_IS6_ERR_CONNECT = -1005 /**< the connection failed at once */
};

/** @return a new TCP socket over IPv4, or -1 with errno */
SWITCHCFG_API int net_tcp_socket(void) SWITCHCFG_NOEXCEPT;

/** @return a new UDP socket over IPv4, or -1 with errno */
SWITCHCFG_API int net_udp_socket(void) SWITCHCFG_NOEXCEPT;

/**
 * Listen on every IPv4 address of the switch, with a backlog of 5 and SO_REUSEADDR set.
 * @return the listening descriptor, or -1 with errno
 */
SWITCHCFG_API int socket_is_create(uint32_t port) SWITCHCFG_NOEXCEPT;

/** As socket_is_create(), on 127.0.0.1 only. */
SWITCHCFG_API int socket_is_create_local(uint32_t port) SWITCHCFG_NOEXCEPT;

/**
 * Listen on one IPv6 address, with a backlog of 5 and SO_REUSEADDR set. The any-address takes IPv4 connections too
 * unless the system says otherwise (net.ipv6.bindv6only).
 * @return the listening descriptor; SOCKET_IS6_ERR_SOCKET, SOCKET_IS6_ERR_BIND or SOCKET_IS6_ERR_LISTEN; -1 when
 *         SO_REUSEADDR cannot be set or the address is null
 */
SWITCHCFG_API int socket_is6_create(uint32_t port, const uint8_t address[16]) SWITCHCFG_NOEXCEPT;

/** socket_is6_create() on the any-address: every IPv6 address of the switch. */
SWITCHCFG_API int socket_is6_create_any(uint32_t port) SWITCHCFG_NOEXCEPT;

/** socket_is6_create() on the loopback address, "::1". */
SWITCHCFG_API int socket_is6_create_local(uint32_t port) SWITCHCFG_NOEXCEPT;

/**
 * Connect, waiting as long as the system does.
 * @param address IPv4 address in network order
 * @return the connected descriptor, or -1 with errno
 */
SWITCHCFG_API int socket_is_connect(const uint32_t *address, uint32_t port) SWITCHCFG_NOEXCEPT;

/**
 * Connect, waiting as long as the system does. Flow information and scope are 0, so link-local addresses do not work
 * here; daemon_client_req_connect_ipv6() takes a scope.
 * @return the connected descriptor; SOCKET_IS6_ERR_SOCKET or SOCKET_IS6_ERR_CONNECT; -1 when the address is null
 */
SWITCHCFG_API int socket_is6_connect(const uint8_t address[16], uint32_t port) SWITCHCFG_NOEXCEPT;

/**
 * Connect within a time. The descriptor returned is blocking.
 *
 * A wait that a signal interrupts counts as over, and so does one whose time-out is negative: the descriptor is then
 * returned although the connection may still be under way, and the first transfer tells. Processes that handle signals
 * block them around the call.
 * @param address IPv4 address in network order
 * @param seconds time-out; fractions count, to the microsecond
 * @return the connected descriptor, or -1 (refused, timed out)
 */
SWITCHCFG_API int socket_is_connect_timeout(const uint32_t *address, uint32_t port, double seconds) SWITCHCFG_NOEXCEPT;

/**
 * Connect within a time, as socket_is_connect_timeout().
 * @param seconds time-out; only whole seconds count, a fraction is dropped: 0.5 does not wait at all
 * @return the connected descriptor; SOCKET_IS6_ERR_SOCKET; SOCKET_IS6_ERR_CONNECT when the connection failed at once;
 *         -1 when it failed later or in time
 */
SWITCHCFG_API int socket_is6_connect_timeout(
    const uint8_t address[16], uint32_t port, double seconds) SWITCHCFG_NOEXCEPT;

/**
 * Listen on a Unix-domain stream socket, with a backlog of 5. Whatever lies at the path, a stale socket for instance,
 * is removed first.
 * @return the listening descriptor, or -1 with errno; closing it leaves the file
 */
SWITCHCFG_API int socket_us_create(const char *path) SWITCHCFG_NOEXCEPT;

/** Bind a Unix-domain datagram socket; otherwise as socket_us_create(). */
SWITCHCFG_API int socket_ud_create(const char *path) SWITCHCFG_NOEXCEPT;

/** Wait for a connection on a listening descriptor. @return its descriptor, or -1 with errno */
SWITCHCFG_API int socket_us_accept(int listener) SWITCHCFG_NOEXCEPT;

/**
 * Connect to a Unix-domain stream socket. Waits while the listener's backlog is full.
 * @return the connected descriptor, or -1 with errno
 */
SWITCHCFG_API int socket_us_connect(const char *path) SWITCHCFG_NOEXCEPT;

/** Connect to a Unix-domain datagram socket. @return the connected descriptor, or -1 with errno */
SWITCHCFG_API int socket_ud_connect(const char *path) SWITCHCFG_NOEXCEPT;

/**
 * Send the whole buffer. A peer that closed gives an error, never a signal.
 *
 * When the socket refuses a piece as too long (EMSGSIZE, datagrams), the pieces are halved from there on: 100000 bytes
 * become two datagrams of 50000, and so on. When not even one byte is taken the call fails. An interruption or a full
 * non-blocking socket fails the call at once, and how much went out is then unknown.
 * @param length bytes; 0 or less sends nothing
 * @return `length` (0 for a negative one), or -1 with errno
 */
SWITCHCFG_API int socket_send(int fd, const void *buffer, int32_t length) SWITCHCFG_NOEXCEPT;

/**
 * Receive exactly `length` bytes, waiting for them.
 *
 * When the peer closes first, THIS FUNCTION CLOSES THE DESCRIPTOR and returns 0: do not close it again. After an error
 * it stays open.
 * @param length bytes; 0 or less returns 0 without touching the descriptor
 * @return `length`, 0 when the peer closed (the descriptor is closed), or -1 with errno
 */
SWITCHCFG_API int socket_recv(int fd, void *buffer, int32_t length) SWITCHCFG_NOEXCEPT;

/**
 * Send one raw Ethernet frame. Needs the right to open packet sockets (CAP_NET_RAW).
 * @param frame     the frame from its destination MAC on, without checksum
 * @param length    bytes, at least the 14 of the Ethernet header
 * @param interface name of the network interface, cut to 15 characters
 * @return 0, or -1 with errno
 */
SWITCHCFG_API int socket_raw_send(const void *frame, int length, const char *interface) SWITCHCFG_NOEXCEPT;

/**
 * Bound every later send and receive on the socket; one that exceeds the time fails with EAGAIN.
 * @param seconds whole seconds; 0 waits for ever
 * @return 0, or -1 when either direction could not be set; the other is set all the same
 */
SWITCHCFG_API int socket_timeouts_set(int fd, int seconds) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
