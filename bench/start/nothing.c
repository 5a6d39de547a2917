/* SPDX-License-Identifier: Apache-2.0 */
int switchcfg_bench_nothing(void);
int switchcfg_bench_nothing(void)
{
    return 0;
}
