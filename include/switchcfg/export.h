/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file export.h
 * Linkage and visibility of the public interface. Every other header of the library includes this one.
 *
 * Everything the two shared objects define is hidden unless its declaration carries SWITCHCFG_API; the version scripts
 * in cmake/ list the same names once more, and a test holds the three together.
 */
#ifndef SWITCHCFG_EXPORT_H
#define SWITCHCFG_EXPORT_H

#if defined(__GNUC__)
#    define SWITCHCFG_API __attribute__((visibility("default")))
/** Lets the compiler check a printf-like call; `text` and `first` are places in the argument list, from 1. */
#    define SWITCHCFG_PRINTF(text, first) __attribute__((__format__(__printf__, text, first)))
#else
#    define SWITCHCFG_API
#    define SWITCHCFG_PRINTF(text, first)
#endif

/*
 * Functions of the library never throw. Those that run a callback of the caller's do not carry the mark. Cancel no
 * thread (pthread_cancel) that may be in one of them: locks and descriptors of the call would not be given back, and a
 * C++ program would end.
 */
#ifdef __cplusplus
#    define SWITCHCFG_NOEXCEPT noexcept
#    define SWITCHCFG_BEGIN_DECLS extern "C" {
#    define SWITCHCFG_END_DECLS }
#else
#    define SWITCHCFG_NOEXCEPT
#    define SWITCHCFG_BEGIN_DECLS
#    define SWITCHCFG_END_DECLS
#endif

#endif
