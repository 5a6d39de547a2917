# SPDX-License-Identifier: Apache-2.0
# <switchcfg/funclist.pb.h> and what belongs to it, generated from funclist/proto. When cross-compiling, protoc is the
# machine's own and of the version that the target's library has.

set(messages_dir ${PROJECT_BINARY_DIR}/generated)
set(messages_header ${messages_dir}/switchcfg/funclist.pb.h)
set(messages_source ${messages_dir}/switchcfg/funclist.pb.cc)
set(messages_proto ${PROJECT_SOURCE_DIR}/funclist/proto/funclist.proto)
set(mark_header ${PROJECT_SOURCE_DIR}/cmake/include-export-header.cmake)
file(MAKE_DIRECTORY ${messages_dir}/switchcfg)
add_custom_command(
    OUTPUT ${messages_header} ${messages_source}
    COMMAND protobuf::protoc --proto_path=${PROJECT_SOURCE_DIR}/funclist/proto
        --cpp_out=dllexport_decl=SWITCHCFG_API:${messages_dir}/switchcfg ${messages_proto}
    COMMAND ${CMAKE_COMMAND} -DHEADER=${messages_header} -P ${mark_header}
    DEPENDS ${messages_proto} ${mark_header}
    COMMENT "Generating <switchcfg/funclist.pb.h>"
    VERBATIM)
add_custom_target(switchcfg-funclist-messages DEPENDS ${messages_header} ${messages_source})

target_sources(switchcfg-funclist PRIVATE ${messages_source})
add_dependencies(switchcfg-funclist switchcfg-funclist-messages)
# Our warnings are for our own code.
set_source_files_properties(${messages_source} TARGET_DIRECTORY switchcfg-funclist PROPERTIES
    GENERATED TRUE COMPILE_OPTIONS -w)
target_include_directories(switchcfg-funclist SYSTEM PUBLIC $<BUILD_INTERFACE:${messages_dir}>)
set(SWITCHCFG_FUNCLIST_GENERATED_DIR ${messages_dir} CACHE INTERNAL "Where the generated headers lie")
set(SWITCHCFG_FUNCLIST_GENERATED_HEADERS ${messages_header} CACHE INTERNAL "Generated headers to install")
