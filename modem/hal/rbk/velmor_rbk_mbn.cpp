/* Group 10: the modem's software configurations. */
#include "velmor_rbk_groups.h"

#include "velmor_utils_cmn.h"

void velmor_test_mbn_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_MBN) return;
    // clang-format off
    LOG(8, "%d: velmor mbn test", RBK_GROUP_MBN);
    LOG(8, "   rbk %d %d sub_mask             /* mbn refresh, sub_mask: 1 - sub0; 2 - sub1; 3 - sub0&sub1 */", RBK_GROUP_MBN, 0);
    LOG(8, "   rbk %d %d sub_mask             /* mbn reactive, sub_mask: 1 - sub0; 2 - sub1; 3 - sub0&sub1 */", RBK_GROUP_MBN, 1);
    LOG(8, "   rbk %d %d count               /* mbn all pdc no response, count: the number of no response */", RBK_GROUP_MBN, 30);
    LOG(8, "   rbk %d %d flag                /* mbn pdc wait and notify, flag: wait and notify case */", RBK_GROUP_MBN, 31);
    LOG(8, "                                 /*                          flag - 1: notify -> wait */");
    // clang-format on
}
