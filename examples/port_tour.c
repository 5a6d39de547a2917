/* SPDX-License-Identifier: Apache-2.0 */
/* What a command of the CLI does: finds a front port on its switch chip and back, and checks a value for its user. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <switchcfg/error.h>
#include <switchcfg/ports.h>
#include <switchcfg/startup.h>

/* Prints what the library has to say about a failure, as the CLI would: the explanation, or else the code's own text.
 */
static int report(int code)
{
    const char *const explanation = cfg_error_get_msg();
    printf("%% %s\n", *explanation != '\0' ? explanation : cfg_strerror(code));
    return 1;
}

static int convert(int unit, int port)
{
    int module;
    int chip_port;
    int code = cfg_equip_user_to_phys_port_tq5200(unit, port, &module, &chip_port);
    if (code != 0) {
        return report(code);
    }
    int unit_again;
    int port_again;
    code = cfg_equip_phys_to_user_port_tq5200(module, chip_port, &unit_again, &port_again);
    if (code != 0) {
        return report(code);
    }
    printf("unit %d port %d is module %d chip port %d is unit %d port %d\n", unit, port, module, chip_port, unit_again,
        port_again);
    return unit == unit_again && port == port_again ? 0 : 1;
}

static int check(const char *what, int value, int step, int min, int max)
{
    const int code = cfg_error_granularity(what, value, step, min, max);
    return code == 0 ? 0 : report(code);
}

int main(int argc, char **argv)
{
    if (cfg_init() != 0) {
        perror("cfg_init");
        return 1;
    }
    cfg_set_error_msg_enable(1);
    if (argc == 4 && strcmp(argv[1], "convert") == 0) {
        return convert(atoi(argv[2]), atoi(argv[3]));
    }
    if (argc == 7 && strcmp(argv[1], "check") == 0) {
        return check(argv[2], atoi(argv[3]), atoi(argv[4]), atoi(argv[5]), atoi(argv[6]));
    }
    fputs("usage: port-tour convert UNIT PORT | check WHAT VALUE STEP MIN MAX\n", stderr);
    return 2;
}
