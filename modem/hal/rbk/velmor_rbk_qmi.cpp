/* Group 12: network scans. */
#include "velmor_rbk_groups.h"

#include "velmor_utils_cmn.h"

void velmor_test_qmi_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_QMI) return;
    // clang-format off
    LOG(8, "%d: qmi option cmd", RBK_GROUP_QMI);
    LOG(8, "   rbk %d %d arlist               /* nas_perform_network_scan_req_msg_v01 */", RBK_GROUP_QMI, 0);
    LOG(8, "   rbk %d %d arlist               /* nas_perform_incremental_network_scan_req_msg_v01 */", RBK_GROUP_QMI, 1);
    // clang-format on
}
