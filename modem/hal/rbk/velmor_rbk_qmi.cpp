/* Group 12: network scans. A scan is set off, and the group says whether the request went through; what was found isn't
 * read. */
#include "velmor_rbk_groups.h"

#include <stdlib.h>

#include "services/nas_v01.h"
#include "velmor_extend_sar_nas.h"
#include "velmor_utils_cmn.h"

constexpr uint32_t SCAN_TIMEOUT_MS = 10000;  // a scan that takes longer ends as a failure

// ---- Scans ----

/* The messages go out with no optional field: the scope stands in the log alone. */
static int32_t tell_result(const char *name, int32_t result)
{
    if (result != 0) LOG_FROM(name, 1, "qmi_client_send_msg_sync fail, qmi_client_error = %d", result);
    LOG_FROM(name, 4, "function exit <-------------");
    return result;
}

static int32_t velmor_send_nas_perform_network_scan_req_msg_v01(nas_scan_scope_enum_v01 scan_scope)
{
    LOG(4, "function entry ------------->");
    LOG(2, "velmor_send_nas_perform_network_scan_req_msg_v01, scan_scope = %d", scan_scope);
    nas_perform_network_scan_req_msg_v01  req = {};
    nas_perform_network_scan_resp_msg_v01 resp = {};
    return tell_result(__func__, velmor_send_nas_qmi_req_msg(QMI_NAS_PERFORM_NETWORK_SCAN_REQ_MSG_V01, &req,
                                                             sizeof(req), &resp, sizeof(resp), SCAN_TIMEOUT_MS));
}

static int32_t velmor_send_nas_perform_incremental_network_scan_req_msg_v01(nas_scan_scope_enum_v01 scan_scope)
{
    LOG(4, "function entry ------------->");
    LOG(2, "velmor_send_nas_perform_incremental_network_scan_req_msg_v01, scan_scope = %d", scan_scope);
    nas_perform_incremental_network_scan_req_msg_v01  req = {};
    nas_perform_incremental_network_scan_resp_msg_v01 resp = {};
    return tell_result(__func__, velmor_send_nas_qmi_req_msg(QMI_NAS_PERFORM_INCREMENTAL_NETWORK_SCAN_REQ_MSG_V01, &req,
                                                             sizeof(req), &resp, sizeof(resp), SCAN_TIMEOUT_MS));
}

// ---- The group ----

void velmor_test_qmi_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_QMI) return;
    // clang-format off
    LOG(8, "%d: qmi option cmd", RBK_GROUP_QMI);
    LOG(8, "   rbk %d %d arlist               /* nas_perform_network_scan_req_msg_v01 */", RBK_GROUP_QMI, 0);
    LOG(8, "   rbk %d %d arlist               /* nas_perform_incremental_network_scan_req_msg_v01 */", RBK_GROUP_QMI, 1);
    // clang-format on
}

/* The word that the help calls arlist isn't read, and nothing behind it. */
int velmor_test_qmi_do(int argc, char *argv[])
{
    bool      help_wanted = true;
    const int sub_command = argc < 3 ? 0 : atoi(argv[2]);
    if (argc < 3) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_QMI) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_QMI);
    } else if (sub_command != 0 && sub_command != 1) {
        LOG(1, "note: the second parameters is invalid, Pls refer to the following cmd:");
    } else {
        const int32_t result = sub_command == 0 ? velmor_send_nas_perform_network_scan_req_msg_v01(0)
                                                : velmor_send_nas_perform_incremental_network_scan_req_msg_v01(0);
        if (result != 0) LOG(1, "note: Error happen! error_code(%d)", result);
        help_wanted = result != 0;
    }
    if (help_wanted) show_help(RBK_GROUP_QMI);
    return 0;
}
