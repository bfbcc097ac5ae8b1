/* The parser for a cell's record out of a diag log packet. Fields are addressed by bit position, and the packet's first
 * word chooses the layout. All output goes straight to standard output. One run of the process is one run of the parser:
 * its state is of file scope. */
#ifndef MODEM_STATS_UNPK_H
#define MODEM_STATS_UNPK_H

#include <stdint.h>
#include <stdio.h>

/* A line straight to standard output; its end is printed for itself. For the reports of group 7. */
#define STATS_PRINT(...)     \
    do {                     \
        printf(__VA_ARGS__); \
        printf("\n");        \
    } while (0)

/* A field is taken out of 16 bytes, however narrow it is. Bits outside of the field don't reach its value, but the step
 * lines show them, so zeros should stand behind a packet: as many bytes as this. */
#define MODEM_STATS_UNPK_SLACK 16

/* Non-zero: each step of the parser prints a line of its own. */
extern int32_t g_unpk_print_flag;

/* Parses a packet and prints what is in it: two lines. A failure prints its line and ends the parse.
 *   length   bytes; no position is compared with it
 *   payload  the packet, whole as its layout has it, with MODEM_STATS_UNPK_SLACK bytes behind it; null is a failure */
void velmor_test_modem_stats_parsing_process_do(uint8_t length, const uint8_t *payload);

/* Cuts the bits `low` to `high`, counted from 1, out of two words, the second one above the first.
 *   name      for messages
 *   variable  receives the value, `size` bytes: 1, 2, 4 or 8
 * Result: false, after a message, for bits outside of the words, or more of them than the variable holds. */
bool modem_stats_unpk_mid(const char *name, void *variable, int32_t size, uint64_t first, uint64_t second, int32_t low,
                          int32_t high);

#endif
