/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file robust_io.h
 * Moving whole buffers through descriptors and streams, waiting with a time-out, connecting with a time-out.
 *
 * Like functions differ on purpose in which interruption they retry, what they make of end of file and what a zero
 * length yields; daemons rely on each as it stands. Only vx_write_nointr() (EINTR), vx_read_nointr() and
 * vx_read_nointr_read_err() (EINTR, EAGAIN) and the wait of vx_read_timeout() (EINTR) retry; the others fail.
 *
 * Nothing here allocates, logs, closes a descriptor or makes a system call beyond those its job needs. After a -1 errno
 * is what the failing system call set. Any thread may call, on descriptors that no other thread uses at the time. The
 * functions that wait hold descriptors in a select(2) set and therefore refuse numbers of 1024 (FD_SETSIZE) and above
 * with errno EINVAL, and negative ones with EBADF.
 *
 * Lengths are in bytes.
 */
#ifndef SWITCHCFG_ROBUST_IO_H
#define SWITCHCFG_ROBUST_IO_H

#include <stdint.h>
#include <stdio.h>
#include <switchcfg/export.h>
#include <sys/socket.h>

SWITCHCFG_BEGIN_DECLS

/**
 * Write the whole buffer. Nothing is retried: EINTR, EAGAIN and a write of nothing fail, also after a part was written.
 * @param length at least 1; 0 fails
 * @return 0 when every byte was written, otherwise -1
 */
SWITCHCFG_API int vx_write(int fd, const void *buffer, uint32_t length) SWITCHCFG_NOEXCEPT;

/**
 * Write the whole buffer, going on after EINTR. A descriptor that keeps accepting nothing keeps the call going.
 * @param length 0 succeeds after one write(2) of nothing
 * @return 0 when every byte was written, otherwise -1 (EAGAIN of a non-blocking descriptor included)
 */
SWITCHCFG_API int vx_write_nointr(int fd, const void *buffer, uint32_t length) SWITCHCFG_NOEXCEPT;

/**
 * Fill the buffer. Nothing is retried: end of file, EINTR and EAGAIN fail, also after a part was read.
 * @param length at least 1; 0 fails
 * @return 0 when the buffer was filled, otherwise -1
 */
SWITCHCFG_API int vx_read(int fd, void *buffer, uint32_t length) SWITCHCFG_NOEXCEPT;

/**
 * vx_read_nointr_read_err() without an error slot.
 */
SWITCHCFG_API int vx_read_nointr(int fd, void *buffer, uint32_t length) SWITCHCFG_NOEXCEPT;

/**
 * Fill the buffer, going on after EINTR and EAGAIN; on a non-blocking descriptor that means spinning until data comes.
 *
 * errno is examined at end of file too, where read(2) does not set it: an EINTR or EAGAIN that an earlier call of the
 * thread left behind keeps the function reading. Set errno to 0 first where the peer may close. A zero length makes one
 * read(2) and then yields 0 or -1 by the same rule.
 * @param error receives what the failing read(2) returned: 0 at end of file, -1 on an error; untouched on success; may
 *              be null
 * @return the count delivered by the last read(2), which is `length` only when one was enough: compare with -1 only;
 *         -1 at end of file and on an error
 */
SWITCHCFG_API int vx_read_nointr_read_err(int fd, void *buffer, uint32_t length, int *error) SWITCHCFG_NOEXCEPT;

/**
 * Fill the buffer within a time that bounds the whole transfer, however many pieces it comes in. A signal during the
 * wait does not fail the call; one during read(2) does.
 * @param length  0 succeeds at once
 * @param seconds whole seconds; 0 takes what is there already
 * @return 0 when the buffer was filled; -1 on time-out (errno then says nothing), end of file or error
 */
SWITCHCFG_API int vx_read_timeout(int fd, void *buffer, uint32_t length, uint32_t seconds) SWITCHCFG_NOEXCEPT;

/**
 * Write the whole buffer to a stream.
 * @param length at least 1; 0 fails
 * @return 0 when the stream took every byte, otherwise -1
 */
SWITCHCFG_API int vx_fwrite(const void *buffer, uint32_t length, FILE *stream) SWITCHCFG_NOEXCEPT;

/**
 * Fill the buffer from a stream, or as much of it as the stream still holds; how much came is not told.
 * @return 0 when the buffer was filled or the stream is at its end; -1 on a read error, and for a length of 0 on a
 *         stream that is not at its end
 */
SWITCHCFG_API int vx_fread(void *buffer, uint32_t length, FILE *stream) SWITCHCFG_NOEXCEPT;

/**
 * Read one line of a configuration-style file and keep the part that names the setting: leading spaces and tabs are
 * skipped and everything behind the LAST space or tab of the line is cut off, that blank itself staying. "key value"
 * and a newline yield "key ". An empty line, a comment ("#" first) and a line of a single word yield the empty text. A
 * line without a newline (the last of a file, or one longer than 99 bytes, whose rest comes with the next call) is kept
 * whole.
 * @param line room for at least 100 bytes
 * @return pointer into `line`; null at the end of the input or on a read error
 */
SWITCHCFG_API char *read_cfile_line(FILE *stream, char *line) SWITCHCFG_NOEXCEPT;

/**
 * Wait until one of several descriptors is readable. A signal ends the wait (-1, EINTR).
 * @param seconds time-out, cut to whole microseconds; negative fails with EINVAL, more than 68 years waits that long
 * @param count   how many descriptors follow, each an int; 0 returns 0 at once, negative fails with EINVAL
 * @return how many of them are readable, 0 on time-out, -1 on an error
 */
SWITCHCFG_API int fds_have_data(double seconds, int count, ...) SWITCHCFG_NOEXCEPT;

/**
 * fds_have_data() of one descriptor.
 */
SWITCHCFG_API int fd_has_data(double seconds, int fd) SWITCHCFG_NOEXCEPT;

/**
 * Connect a socket, waiting a bounded time. A signal during the wait fails the call.
 *
 * On success the socket is blocking, whatever it was before; after a failure it is left non-blocking and only good for
 * closing. What the connection attempt itself failed with is not in errno (that stays EINPROGRESS).
 * @param seconds whole seconds
 * @return 0 when connected, otherwise -1
 */
SWITCHCFG_API int vx_connect_timeout(
    int fd, const struct sockaddr *address, socklen_t length, uint32_t seconds) SWITCHCFG_NOEXCEPT;

/**
 * Change the file-status flags of a descriptor (O_NONBLOCK and the like; F_SETFL). A bit in both arguments is set.
 * @return 0, or -1 with errno
 */
SWITCHCFG_API int fcntl_set(int fd, int set, int clear) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
