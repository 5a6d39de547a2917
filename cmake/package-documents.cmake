# SPDX-License-Identifier: Apache-2.0
# Run by cpack over the installed trees of all packages: what Debian wants beside the files themselves. With
# SOURCE_DATE_EPOCH set, the same for the same sources.

set(root ${CMAKE_CURRENT_LIST_DIR}/..)
set(format "%a, %d %b %Y %H:%M:%S +0000")
string(TIMESTAMP date "${format}" UTC) # of SOURCE_DATE_EPOCH, if that is set
file(READ ${root}/CHANGELOG.md changes)

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    set(tree ${CPACK_TEMPORARY_DIRECTORY}/${component}/usr)
    set(documents ${tree}/share/doc/${name})
    file(WRITE ${documents}/copyright
        "Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"
        "Upstream-Name: libswitchcfg\n\nFiles: *\nCopyright: 2026 the libswitchcfg authors\nLicense: Apache-2.0\n"
        " On Debian systems the full text of the Apache License 2.0 is in\n /usr/share/common-licenses/Apache-2.0.\n")
    file(WRITE ${documents}/changelog.Debian
        "switchcfg (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
        "  * Packaged by cpack; changelog.gz tells what changed.\n\n -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    file(WRITE ${documents}/changelog "${changes}")
    file(GLOB pages ${tree}/share/man/man*/*)
    execute_process(COMMAND gzip -9nf ${pages} ${documents}/changelog ${documents}/changelog.Debian COMMAND_ERROR_IS_FATAL ANY)
endforeach()
