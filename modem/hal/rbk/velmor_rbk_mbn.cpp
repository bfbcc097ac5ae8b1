/* Group 10: the modem's software configurations. What came of a sub-command stands in what its operation logs. */
#include "velmor_rbk_groups.h"

#include <stdlib.h>

#include "velmor_mbn_utils.h"
#include "velmor_utils_cmn.h"

/* Words: rbk 10 <sub-command> <argument> */
#define MBN_ARGC_MIN 4

enum {
    MBN_REFRESH = 0,
    MBN_REACTIVATE = 1,
    MBN_NO_RESPONSE = 30,
    MBN_WAIT_NOTIFY = 31,
};

void velmor_test_mbn_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_MBN) return;
    // clang-format off
    LOG(8, "%d: velmor mbn test", RBK_GROUP_MBN);
    LOG(8, "   rbk %d %d sub_mask             /* mbn refresh, sub_mask: 1 - sub0; 2 - sub1; 3 - sub0&sub1 */", RBK_GROUP_MBN, MBN_REFRESH);
    LOG(8, "   rbk %d %d sub_mask             /* mbn reactive, sub_mask: 1 - sub0; 2 - sub1; 3 - sub0&sub1 */", RBK_GROUP_MBN, MBN_REACTIVATE);
    LOG(8, "   rbk %d %d count               /* mbn all pdc no response, count: the number of no response */", RBK_GROUP_MBN, MBN_NO_RESPONSE);
    LOG(8, "   rbk %d %d flag                /* mbn pdc wait and notify, flag: wait and notify case */", RBK_GROUP_MBN, MBN_WAIT_NOTIFY);
    LOG(8, "                                 /*                          flag - 1: notify -> wait */");
    // clang-format on
}

int velmor_test_mbn_do(int argc, char *argv[])
{
    if (argc < MBN_ARGC_MIN) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
        show_help(RBK_GROUP_MBN);
        return 0;
    }
    if (atoi(argv[1]) != RBK_GROUP_MBN) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_MBN);
        show_help(RBK_GROUP_MBN);
        return 0;
    }
    const int mbn_i = atoi(argv[2]);
    const int argument = atoi(argv[3]);
    switch (mbn_i) {
    case MBN_REFRESH: velmor_refresh_sw_mbn(static_cast<uint32_t>(argument)); break;
    case MBN_REACTIVATE: velmor_reactivate_sw_mbn(static_cast<uint32_t>(argument)); break;
    case MBN_NO_RESPONSE: velmor_set_property_value_to_int("persist.radio.all_pdc_no_rsp_count", argument); break;
    case MBN_WAIT_NOTIFY: velmor_pdc_test_wait_notify(argument); break;
    default:
        LOG(1, "invalid mbn_i = %d", mbn_i);
        show_help(RBK_GROUP_MBN);
        break;
    }
    return 0;
}
