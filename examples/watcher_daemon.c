/* SPDX-License-Identifier: Apache-2.0 */
/* A daemon in C: attaches, then follows the UTC offset of the running configuration until it is told to end. */
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <switchcfg/config_region.h>
#include <switchcfg/startup.h>

static volatile sig_atomic_t ending;

static void on_term(int signo)
{
    (void)signo;
    ending = 1;
}

static int32_t utc_offset(void)
{
    int32_t minutes;
    memcpy(&minutes, (const char *)cfg_get_cfg() + CFG_UTC_OFFSET_MINUTES_AT, sizeof minutes);
    return minutes;
}

int main(void)
{
    if (cfg_init() != 0) {
        perror("cfg_init");
        return 1;
    }
    signal(SIGTERM, on_term);
    setvbuf(stdout, NULL, _IOLBF, 0);
    printf("attached\n");

    int32_t known = utc_offset();
    while (!ending) {
        const int32_t now = utc_offset();
        if (now != known) {
            known = now;
            updateTZ();
            printf("UTC offset is now %d minutes: TZ=%s\n", (int)now, getenv("TZ"));
        }
        const struct timespec pause = {0, 10 * 1000 * 1000};
        nanosleep(&pause, NULL);
    }
    return cfg_exit();
}
