# SPDX-License-Identifier: Apache-2.0
# Makes a generated header include the one that defines the mark on its names, so that it compiles alone.
file(READ ${HEADER} text)
file(WRITE ${HEADER} "#include <switchcfg/export.h>\n${text}")
