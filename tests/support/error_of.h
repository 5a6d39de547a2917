// SPDX-License-Identifier: Apache-2.0
#ifndef SWITCHCFG_TESTS_SUPPORT_ERROR_OF_H
#define SWITCHCFG_TESTS_SUPPORT_ERROR_OF_H

#include <cerrno>

namespace switchcfg::testing {

// The errno of a call that gave -1, which the next one has to set anew; 0 for any other result.
inline int error_of(long long result)
{
    const int error = result == -1 ? errno : 0;
    errno = 0;
    return error;
}

} // namespace switchcfg::testing

#endif
