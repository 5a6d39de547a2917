# SPDX-License-Identifier: Apache-2.0
# How libswitchcfg brings the equipment table along: linked where a program names it, so that no other one pays for its
# private pages. Who finds the installed package takes it from here, too; libswitchcfg.so.in is the same for -lswitchcfg.
# In the cache, since a program may be in any folder of a project that has this one below another.
set(CMAKE_LINK_LIBRARY_USING_switchcfg_where_named "LINKER:--push-state,--as-needed" <LINK_ITEM> "LINKER:--pop-state"
    CACHE INTERNAL "How the equipment table is linked")
set(CMAKE_LINK_LIBRARY_USING_switchcfg_where_named_SUPPORTED TRUE CACHE INTERNAL "How the equipment table is linked")
