/* SPDX-License-Identifier: Apache-2.0 */
/* A daemon that does nothing: linked twice, with and without the library. With an argument it prints its memory. */
#include <fcntl.h>
#include <unistd.h>

int main(int argc, char **argv)
{
    static char text[4096];
    (void)argv;
    if (argc > 1) {
        const int fd = open("/proc/self/smaps_rollup", O_RDONLY);
        const ssize_t length = read(fd, text, sizeof text);
        return length > 0 && write(STDOUT_FILENO, text, (size_t)length) == length ? 0 : 1;
    }
    return 0;
}
