/* radio_bench_kit: one run hands one command line to the group that its first word names. The exit status is always 0;
 * what came of it stands in what was printed. */
#include <stdlib.h>

#include "velmor_rbk_groups.h"
#include "velmor_utils_cmn.h"

#define VELMOR_MANUFACTURER_ID_VELMOR 1  // the only manufacturer there is

// clang-format off
void show_help(int group)
{
    LOG(8, "=========== blew: radio_bench_kit(rbk) cmd help =======================================================");
    if (group == RBK_GROUP_ALL || group == RBK_GROUP_NV) {
        LOG(8, "%d: nv option cmd", RBK_GROUP_NV);
        LOG(8, "   rbk %d 1       /* nv test */", RBK_GROUP_NV);
        LOG(8, "   rbk %d 2 0     /* nv backup(no privacy nvs) */", RBK_GROUP_NV);
        LOG(8, "   rbk %d 2 1     /* nv backup(have privacy nvs) */", RBK_GROUP_NV);
        LOG(8, "   rbk %d 3 0     /* nv restore(no goldencopy done after restore) */", RBK_GROUP_NV);
        LOG(8, "   rbk %d 3 1     /* nv restore(do goldencopy done after restore) */", RBK_GROUP_NV);
        LOG(8, "   rbk %d 4 nvid  /* nv delete */", RBK_GROUP_NV);
    }
    if (group == RBK_GROUP_ALL || group == RBK_GROUP_IMEI) {
        LOG(8, "%d: imei option cmd", RBK_GROUP_IMEI);
        LOG(8, "   rbk %d 0       /* imei_protect disable */", RBK_GROUP_IMEI);
        LOG(8, "   rbk %d 1       /* imei_protect start */", RBK_GROUP_IMEI);
    }
    velmor_test_rf_show_help(group);
    velmor_test_nvefs_show_help(group);
    velmor_test_cmn_show_help(group);
    velmor_test_qmi_send_data_show_help(group);
    velmor_test_qmi_modem_stats_show_help(group);
    velmor_test_at_cmd_show_help(group);
    velmor_test_modem_stats_show_help(group);
    velmor_test_mbn_show_help(group);
    velmor_smart_test_show_help(group);
    velmor_test_qmi_show_help(group);
    LOG(8, "=========== above: radio_bench_kit(rbk) cmd help =======================================================\n");
}
// clang-format on

/* Says who is running, and stops nobody. Its arguments fill the process's identity and its gates merge both masks, so
 * that the properties behind them are read before any group runs. */
static void velmor_modem_check_odm_white_list()
{
    LOG(4, "VELMOR_MANUFACTURER_ID is VELMOR_MANUFACTURER_ID_VELMOR(%d), p_id: %d, p_name: %s",
        VELMOR_MANUFACTURER_ID_VELMOR, velmor_utils_get_pid_number(), velmor_utils_get_pid_name());
}

int main(int argc, char *argv[])
{
    velmor_modem_check_odm_white_list();
    const int group = argc < 2 ? RBK_GROUP_ALL : atoi(argv[1]);
    switch (group) {
    case RBK_GROUP_NV:
    case RBK_GROUP_IMEI: LOG(2, "Not support"); break;
    case RBK_GROUP_RF: velmor_test_rf_do(argc, argv); break;
    case RBK_GROUP_NVEFS: velmor_test_nvefs_do(argc, argv); break;
    case RBK_GROUP_CMN: velmor_test_cmn_do(argc, argv); break;
    case RBK_GROUP_SEND_DATA: velmor_test_qmi_send_data_do(argc, argv); break;
    case RBK_GROUP_STATS: velmor_test_modem_stats_do(argc, argv); break;
    case RBK_GROUP_AT: velmor_test_at_cmd_do(argc, argv); break;
    case RBK_GROUP_STATS_QMI: velmor_test_qmi_modem_stats_do(argc, argv); break;
    case RBK_GROUP_MBN: velmor_test_mbn_do(argc, argv); break;
    case RBK_GROUP_SMART: velmor_smart_test_do(argc, argv); break;
    case RBK_GROUP_QMI: velmor_test_qmi_do(argc, argv); break;
    default: show_help(RBK_GROUP_ALL); break;
    }
    return 0;
}
