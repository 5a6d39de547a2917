/* SPDX-License-Identifier: Apache-2.0 */
/**
 * @file address.h
 * IPv4 addresses, masks and prefixes, IPv6 endpoints and MAC addresses as text: what the switch lets an operator
 * configure, and in which form it keeps it.
 *
 * Nothing is logged, no state is kept, any thread may call. Rejected text leaves the outputs as they were unless noted.
 * A null text is rejected everywhere.
 *
 * Binary IPv4 addresses are in network byte order, as inet_aton(3) gives them.
 */
#ifndef SWITCHCFG_ADDRESS_H
#define SWITCHCFG_ADDRESS_H

#include <stdint.h>
#include <switchcfg/export.h>

SWITCHCFG_BEGIN_DECLS

/** Bytes that hold any dotted address or mask that is written here. */
#define IP_TEXT_SIZE 17

/** Bytes that hold any 'address/prefix' that is written here. */
#define IP_PREFIX_TEXT_SIZE 20

/** Longest address part, in characters, that is split off a text or looked at in a URI. */
#define IP_ADDRESS_PART_MAX 127

/**
 * Check four decimal parts of 0 to 255 separated by "." and write them without leading zeros. A part may start with
 * what strtoul(3) skips: white space and a sign.
 * @param normalized receives the text, IP_TEXT_SIZE bytes; may be null; may be `text` when that is large enough
 * @return 0, or -1 when the text is no such address
 */
SWITCHCFG_API int ip_address_normalize(const char *text, char *normalized) SWITCHCFG_NOEXCEPT;

/** As ip_address_normalize(), also rejecting a first part of 0 and a last part of 0 or 255. */
SWITCHCFG_API int ip_address_normalize_valid_host(const char *text, char *normalized) SWITCHCFG_NOEXCEPT;

/** @return 1 when ip_address_normalize() accepts the text, else 0 */
SWITCHCFG_API int str_is_ip(const char *text) SWITCHCFG_NOEXCEPT;

/**
 * The same for 'address/prefix', the prefix made of digits only, 0 to 32.
 * @param normalized receives the text, IP_PREFIX_TEXT_SIZE bytes; may be null; may be `text` when that is large enough
 * @return 0, or -1
 */
SWITCHCFG_API int ip_address_mask_normalize(const char *text, char *normalized) SWITCHCFG_NOEXCEPT;

/**
 * @param prefix number of mask bits as atoi(3) reads it: no number counts as 0, what follows a number is ignored
 * @param mask   receives the dotted mask, IP_TEXT_SIZE bytes
 * @return 0, or -1 when the number is not 0 to 32
 */
SWITCHCFG_API int ip_prefix_to_mask(const char *prefix, char *mask) SWITCHCFG_NOEXCEPT;

/**
 * Split 'address/prefix' at the first "/". The address part is taken as it stands, unchecked.
 * @param address receives what stands before the "/", and a terminator: as many bytes as that takes, at most
 *                IP_ADDRESS_PART_MAX + 1; may be null
 * @param mask    receives the dotted mask as ip_prefix_to_mask() writes it, IP_TEXT_SIZE bytes; null leaves the prefix
 *                unchecked
 * @return 0; -1 when there is no "/", the prefix is out of range, or the address part is longer than the bound
 */
SWITCHCFG_API int ip_addr_prefix_to_addr_mask(const char *text, char *address, char *mask) SWITCHCFG_NOEXCEPT;

/**
 * @param mask dotted; what follows the fourth number is ignored
 * @return number of one bits before the first zero bit, 0 to 32; what comes behind that is not looked at, so
 *         '255.0.255.0' gives 8. -1 when there are no four numbers.
 */
SWITCHCFG_API int ip_mask_to_prefix(const char *mask) SWITCHCFG_NOEXCEPT;

/**
 * @param address dotted, accepted by ip_address_normalize(); its value and the mask's are what inet_aton(3) makes of
 *                them, for which a leading zero means octal
 * @param mask    dotted; need not be contiguous
 * @return 1 when the address is neither the network's own nor its broadcast address, else 0; so always 0 for masks of
 * 31 and 32 bits
 */
SWITCHCFG_API int ip_addr_mask_is_valid_host(const char *address, const char *mask) SWITCHCFG_NOEXCEPT;

/** The same for 'address/prefix', split by ip_addr_prefix_to_addr_mask(). */
SWITCHCFG_API int ip_addr_prefix_is_valid_host(const char *text) SWITCHCFG_NOEXCEPT;

/**
 * @param address network byte order
 * @param text    receives the dotted text, IP_TEXT_SIZE bytes, all of them written
 * @return 0, or -1 for a null `text`
 */
SWITCHCFG_API int ip_uint32_to_str(uint32_t address, char *text) SWITCHCFG_NOEXCEPT;

/**
 * @param text    any form that inet_aton(3) takes, the short and hexadecimal ones included
 * @param address receives the address, network byte order
 * @return 0, or -1
 */
SWITCHCFG_API int ip_str_to_uint32(const char *text, uint32_t *address) SWITCHCFG_NOEXCEPT;

/**
 * Pack an address into two numbers: first part x 256 + second, third x 256 + fourth, each cut to 16 bits.
 *
 * Each part ends at a "." or "/"; the fourth may also end with the text. A part is at most 3 characters, read as
 * atoi(3) does: no number counts as 0. What follows the fourth part is ignored.
 * @return 0; -1 for a null or empty text, with the pair set to 0, 0, and for fewer than four parts or a longer part,
 * with the pair left as it was
 */
SWITCHCFG_API int ip_str_to_short(const char *text, uint16_t pair[2]) SWITCHCFG_NOEXCEPT;

/**
 * Take tcp://[address]:port or tcp://[address%interface]:port apart, wherever in the text it stands.
 * @param address  receives the address, network byte order; all zero when the URI has the form but its address is none
 *                 (or is longer than IP_ADDRESS_PART_MAX)
 * @param scope_id receives the index of the interface; 0 without one and for one that does not exist
 * @param port     receives the low 16 bits of the port, host byte order; written before the address is looked at
 * @return 0, or -1
 */
SWITCHCFG_API int ipv6_parse_uri(
    const char *uri, uint8_t address[16], uint32_t *scope_id, uint16_t *port) SWITCHCFG_NOEXCEPT;

/**
 * Read six groups of one or two hexadecimal digits.
 * @param mac       receives the bytes in transmission order
 * @param separator the character between the groups; 0 takes the first of "-", ":" and "." that the text holds
 * @return 0, or -1
 */
SWITCHCFG_API int parse_mac_address(const char *text, uint8_t mac[6], char separator) SWITCHCFG_NOEXCEPT;

SWITCHCFG_END_DECLS

#endif
