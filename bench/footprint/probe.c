/* SPDX-License-Identifier: Apache-2.0 */
/*
 * What the library costs a process, seen from inside one. scripts/footprint compiles it twice: with SWITCHCFG_FLOOR it
 * is the same program without the library, linked with libc and zlib only. Its first argument is one of
 * - start: ends at once
 * - init: cfg_init; two impossible close() calls stand before and behind it in a trace
 * - memory: prints the process's private dirty KiB, by mapping and in all; shared files are left out
 * - time ROUNDS STARTS PROGRAM ARGUMENT [PROGRAM ARGUMENT]...: prints microseconds from start to exit of each, the best
 *   round of STARTS
 */
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <zlib.h>
#ifndef SWITCHCFG_FLOOR
#    include <switchcfg/startup.h>
#endif

extern char **environ;

static int attach(void)
{
#ifdef SWITCHCFG_FLOOR
    return crc32(0, Z_NULL, 0) != 0;
#else
    close(-1001);
    int result = cfg_init();
    close(-1002);
    return result;
#endif
}

static int memory(void)
{
    char line[512], name[256] = "", access[5] = "";
    long all = 0, kib;
    FILE *maps = fopen("/proc/self/smaps", "r");
    if (maps == NULL) {
        perror("/proc/self/smaps");
        return 1;
    }
    while (fgets(line, sizeof line, maps) != NULL) {
        unsigned long from, to;
        char mapped[256] = "", may[5];
        if (sscanf(line, "%lx-%lx %4s %*s %*s %*s %255s", &from, &to, may, mapped) >= 3) {
            memcpy(access, may, sizeof access);
            memcpy(name, mapped, sizeof name);
        } else if (access[3] == 'p' && sscanf(line, "Private_Dirty: %ld", &kib) == 1 && kib > 0) {
            printf("%ld %s\n", kib, name[0] == 0 ? "[anonymous]" : name);
            all += kib;
        }
    }
    fclose(maps);
    printf("%ld\n", all);
    return 0;
}

static double now_us(void)
{
    struct timespec at;
    clock_gettime(CLOCK_MONOTONIC, &at);
    return (double)at.tv_sec * 1e6 + (double)at.tv_nsec / 1e3;
}

/* The rounds of the programs alternate, so that whatever else the machine does meets all of them. */
static int start_times(int rounds, int starts, char **programs)
{
    double best[16];
    int count = 0;
    for (int round = 0; round < rounds; ++round) {
        count = 0;
        for (char **program = programs; program[0] != NULL && program[1] != NULL && count < 16; program += 2, ++count) {
            char *const arguments[] = {program[0], program[1], NULL};
            const double from = now_us();
            for (int start = 0; start < starts; ++start) {
                pid_t child;
                int status;
                if (posix_spawn(&child, program[0], NULL, NULL, arguments, environ) != 0 ||
                    waitpid(child, &status, 0) != child || status != 0) {
                    fprintf(stderr, "%s %s failed\n", program[0], program[1]);
                    return 1;
                }
            }
            const double each = (now_us() - from) / starts;
            if (round == 0 || each < best[count]) {
                best[count] = each;
            }
        }
    }
    for (int i = 0; i < count; ++i) {
        printf("%.0f\n", best[i]);
    }
    return 0;
}

int main(int argc, char **argv)
{
    const char *what = argc > 1 ? argv[1] : "";
    if (strcmp(what, "start") == 0) {
        return 0;
    }
    if (strcmp(what, "init") == 0) {
        return attach();
    }
    if (strcmp(what, "memory") == 0) {
        return attach() != 0 || memory() != 0;
    }
    if (strcmp(what, "time") == 0 && argc > 5) {
        return start_times(atoi(argv[2]), atoi(argv[3]), argv + 4);
    }
    fprintf(stderr, "usage: probe start|init|memory|time ROUNDS STARTS PROGRAM ARGUMENT...\n");
    return 2;
}
