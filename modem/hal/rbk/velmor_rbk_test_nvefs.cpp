/* Group 4: NV items and EFS files. */
#include "velmor_rbk_groups.h"

#include "velmor_utils_cmn.h"

void velmor_test_nvefs_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_NVEFS) return;
    // clang-format off
    LOG(8, "%d: nvefs option cmd: \n", RBK_GROUP_NVEFS);
    LOG(8, "   rbk %d %d sub nv_id             /* nv read */\n", RBK_GROUP_NVEFS, 1);
    LOG(8, "   rbk %d %d sub nv_id nv_data     /* nv write */\n", RBK_GROUP_NVEFS, 2);
    LOG(8, "   rbk %d %d sub nv_id             /* nv delete */\n", RBK_GROUP_NVEFS, 3);
    LOG(8, "   rbk %d %d sub efs_path          /* efs read */\n", RBK_GROUP_NVEFS, 4);
    LOG(8, "   rbk %d %d sub efs_path efs_data /* efs write */\n", RBK_GROUP_NVEFS, 5);
    LOG(8, "   rbk %d %d sub efs_path          /* efs delete */\n", RBK_GROUP_NVEFS, 6);
    // clang-format on
}
