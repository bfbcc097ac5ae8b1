/* Group 7: statistics parsed from a diag packet, and the statistics engine's debug report. */
#include "velmor_rbk_groups.h"

#include "velmor_utils_cmn.h"

// Named after the other statistics group on purpose, as that one's is after this.
void velmor_test_qmi_modem_stats_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_STATS) return;
    // clang-format off
    LOG(8, "%d: velmor modem stats test", RBK_GROUP_STATS);
    LOG(8, "   rbk %d 0 print                 /* modem stats diag-parsed test */", RBK_GROUP_STATS);
    LOG(8, "                                    print: 0 - print-off for temp info, 1 - print-on for temp info ");
    LOG(8, "   rbk %d 1 type                  /* get the debug info of modem stats */", RBK_GROUP_STATS);
    LOG(8, "                                    type: 0 - check, 1 - debuginfo ");
    // clang-format on
}
