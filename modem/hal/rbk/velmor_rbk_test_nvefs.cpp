/* Group 4: NV items and EFS files, read, written and deleted by hand. A sub-command checks how many words it was given,
 * calls its operation, says at level 1 that it failed and hands the result to the entry, which tells it and adds the
 * help. */
#include "velmor_rbk_groups.h"

#include <stdlib.h>
#include <string.h>

#include "velmor_extend_nvefs.h"
#include "velmor_utils_cmn.h"

#define READ_SIZE       365  // bytes that a read shows at most
#define WRITE_WORDS_MAX 365  // words that a write takes

/* Words: rbk 4 <sub-command> <sub> <item or path> [<byte> ...] */
#define ARG_SUB    3
#define ARG_TARGET 4
#define ARG_DATA   5

// ---- Words of the command line ----

static bool has_exact_count(const char *name, int argc)
{
    if (argc == ARG_DATA) return true;
    LOG_FROM(name, 1, "note: need %d inputs, Pls refer to the following cmd:", ARG_DATA);
    return false;
}

static bool has_data(const char *name, int argc)
{
    if (argc > ARG_DATA) return true;
    LOG_FROM(name, 1, "note: Too few inputs, Pls refer to the following cmd:");
    return false;
}

/* Any number but 0 is the second subscription. */
static uint32_t sub_of(char *argv[])
{
    return atoi(argv[ARG_SUB]) != 0;
}

static uint32_t nv_id_of(char *argv[])
{
    return static_cast<uint32_t>(atoi(argv[ARG_TARGET]));
}

static uint32_t path_len_of(char *argv[])
{
    return static_cast<uint32_t>(strlen(argv[ARG_TARGET]));
}

/* One word a byte, of which the low 8 bits count. Result: words read, which may be fewer than there are. */
static uint32_t read_data(int argc, char *argv[], uint8_t *data)
{
    uint32_t len = 0;
    for (int i = ARG_DATA; i < argc && len < WRITE_WORDS_MAX; ++i) data[len++] = static_cast<uint8_t>(atoi(argv[i]));
    return len;
}

// ---- Outcome ----

static int32_t tell_failure(const char *name, int32_t result)
{
    if (result != 0) LOG_FROM(name, 1, "velmor_extend_qmi_send_sync fail, REQUEST_ID_EFS");
    return result;
}

static void dump(const char *name, const uint8_t *data, uint32_t len)
{
    LOG_FROM(name, 2, "data len(%d)\ndata: ", len);
    for (uint32_t i = 0; i < len; ++i) LOG_FROM(name, 2, " %02X", data[i]);
    LOG_FROM(name, 2, "");
}

// ---- Sub-commands ----

static int32_t velmor_nvefs_test_nv_read(int argc, char *argv[])
{
    if (!has_exact_count(__func__, argc)) return VELMOR_ERR_BAD_ARGUMENT;
    uint8_t       data[READ_SIZE] = {};
    uint32_t      len = sizeof(data);
    const int32_t result = tell_failure(__func__, velmor_nv_read(sub_of(argv), nv_id_of(argv), data, &len));
    if (result == 0) dump(__func__, data, len);
    return result;
}

/* The item gets as many bytes as there are words: behind the last one that is read it has zeros, which is why the buffer
 * has the room of the longest item. A longer one is refused by its length, before anything is read behind the buffer. */
static int32_t velmor_nvefs_test_nv_write(int argc, char *argv[])
{
    if (!has_data(__func__, argc)) return VELMOR_ERR_BAD_ARGUMENT;
    uint8_t data[NVEFS_DATA_MAX] = {};
    read_data(argc, argv, data);
    const uint32_t len = static_cast<uint32_t>(argc - ARG_DATA);
    return tell_failure(__func__, velmor_nv_write_ex(sub_of(argv), nv_id_of(argv), data, len));
}

static int32_t velmor_nvefs_test_nv_delete(int argc, char *argv[])
{
    if (!has_exact_count(__func__, argc)) return VELMOR_ERR_BAD_ARGUMENT;
    return tell_failure(__func__, velmor_nv_delete(sub_of(argv), nv_id_of(argv)));
}

static int32_t velmor_nvefs_test_efs_read(int argc, char *argv[])
{
    if (!has_exact_count(__func__, argc)) return VELMOR_ERR_BAD_ARGUMENT;
    uint8_t       data[READ_SIZE] = {};
    uint32_t      len = sizeof(data);
    const int32_t result =
        tell_failure(__func__, velmor_efs_read(sub_of(argv), argv[ARG_TARGET], path_len_of(argv), data, &len));
    if (result == 0) dump(__func__, data, len);
    return result;
}

/* The file gets the words that were read, and no zeros. */
static int32_t velmor_nvefs_test_efs_write(int argc, char *argv[])
{
    if (!has_data(__func__, argc)) return VELMOR_ERR_BAD_ARGUMENT;
    uint8_t        data[WRITE_WORDS_MAX] = {};
    const uint32_t len = read_data(argc, argv, data);
    return tell_failure(__func__, velmor_efs_write(sub_of(argv), argv[ARG_TARGET], path_len_of(argv), data, len));
}

static int32_t velmor_nvefs_test_efs_delete(int argc, char *argv[])
{
    if (!has_exact_count(__func__, argc)) return VELMOR_ERR_BAD_ARGUMENT;
    return tell_failure(__func__, velmor_efs_delete(sub_of(argv), argv[ARG_TARGET], path_len_of(argv)));
}

// ---- The group ----

void velmor_test_nvefs_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_NVEFS) return;
    // clang-format off
    LOG(8, "%d: nvefs option cmd: ", RBK_GROUP_NVEFS);
    LOG(8, "   rbk %d %d sub nv_id             /* nv read */", RBK_GROUP_NVEFS, 1);
    LOG(8, "   rbk %d %d sub nv_id nv_data     /* nv write */", RBK_GROUP_NVEFS, 2);
    LOG(8, "   rbk %d %d sub nv_id             /* nv delete */", RBK_GROUP_NVEFS, 3);
    LOG(8, "   rbk %d %d sub efs_path          /* efs read */", RBK_GROUP_NVEFS, 4);
    LOG(8, "   rbk %d %d sub efs_path efs_data /* efs write */", RBK_GROUP_NVEFS, 5);
    LOG(8, "   rbk %d %d sub efs_path          /* efs delete */", RBK_GROUP_NVEFS, 6);
    // clang-format on
}

int velmor_test_nvefs_do(int argc, char *argv[])
{
    static int32_t (*const operations[])(int argc, char *argv[]) = {
        // by the sub-command's number, from 1 on
        velmor_nvefs_test_nv_read,  velmor_nvefs_test_nv_write,  velmor_nvefs_test_nv_delete,
        velmor_nvefs_test_efs_read, velmor_nvefs_test_efs_write, velmor_nvefs_test_efs_delete,
    };

    constexpr int operation_count = sizeof(operations) / sizeof(operations[0]);

    bool      help_wanted = true;
    const int sub_command = argc < 3 ? 0 : atoi(argv[2]);
    if (argc < 3) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_NVEFS) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_NVEFS);
    } else if (sub_command < 1 || sub_command > operation_count) {
        LOG(1, "note: the second parameters is invalid, Pls refer to the following cmd:");
    } else {
        const int32_t result = operations[sub_command - 1](argc, argv);
        if (result != 0) LOG(1, "note: Error happen! error_code(%d)", result);
        help_wanted = result != 0;
    }
    if (help_wanted) show_help(RBK_GROUP_NVEFS);
    return 0;
}
