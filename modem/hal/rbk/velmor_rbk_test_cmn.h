/* Numbers as people type them, and the eSIM test. */
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

/* rbk 5 10 <esim_on> <debug_on>: switches the second slot to the eSIM (1) or to the physical card (2), reads the EID (3)
 * or the card states (4), or resets the eUICC (5). One line on standard output tells the outcome; with a debug_on of 0 it
 * is all that follows. Takes up to 3 s for an EID beside the waits of the requests.
 * Result: -1 for too few words, else 0 whatever became of it. */
int32_t velmor_cmn_esim_test(int argc, char *argv[]);

/* Whether the hardware has an eSIM, by NV item 6853. */
bool velmor_esim_sku_match();

/* The check of an EID's 32 digits by modulus 97. A hex letter isn't refused: it counts with its code. */
bool is_eid_valid(const char *eid_text);

/* Saves an EID of 16 bytes in the modem's EFS, unless one stands there. */
void save_eid_to_efs(const uint8_t *eid);

/* Prints the states of the two slots in words, as in PRESENT,ABSENT. */
void map_sim_state(const uint8_t *states);

#endif
