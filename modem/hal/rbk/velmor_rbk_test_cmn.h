/* Numbers as people type them. */
#ifndef VELMOR_RBK_TEST_CMN_H
#define VELMOR_RBK_TEST_CMN_H

#include <stdint.h>

/* Decimal with an optional sign, as atoi reads it, or hex behind "0x" or "0X". Octal isn't known: "010" is 10.
 * Null gives 0 and a message. */
int32_t velmor_string_to_int(const char *text);

/* Hex digits without "0x", at most 48. A character that is no hex digit counts as 0 and ends nothing: "G1" is 1. Each
 * digit's product is held at 0x7FFFFFFF and the sum wraps, so that "80000000" is 0x7FFFFFFF and "FFFFFFFF" is
 * 0x8FFFFFFE. Null and longer words give 0 and a message. */
int32_t velmor_hex_string_to_int(const char *text);

#endif
