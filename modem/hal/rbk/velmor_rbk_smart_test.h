/* Where the shared memory test looks. */
#ifndef VELMOR_RBK_SMART_TEST_H
#define VELMOR_RBK_SMART_TEST_H

#include <stdint.h>

extern const char *g_share_memory_file_path;  // fixed in the program
extern int32_t     g_share_memory_size;       // bytes

#endif
