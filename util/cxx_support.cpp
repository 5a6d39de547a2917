// SPDX-License-Identifier: Apache-2.0
// The header-only parts of the standard library refer to these when a range check fails. libswitchcfg does not carry
// the C++ run-time, so they are ours, hidden, and end the process: a failed check is a bug, and the crash report names
// it.
#include <cstdlib>

namespace std {

[[noreturn]] void __throw_out_of_range_fmt(const char * /*format*/, ...) noexcept(false)
{
    abort();
}
[[noreturn]] void __throw_length_error(const char * /*what*/) noexcept(false)
{
    abort();
}
[[noreturn]] void __throw_logic_error(const char * /*what*/) noexcept(false)
{
    abort();
}

} // namespace std
