// SPDX-License-Identifier: Apache-2.0
// Owns the precompiled headers that every test takes over.
int main()
{
    return 0;
}
