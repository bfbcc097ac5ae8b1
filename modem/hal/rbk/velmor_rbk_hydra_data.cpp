/* Group 9: figures of the modem over QMI. */
#include "velmor_rbk_groups.h"

#include "velmor_utils_cmn.h"

// Named after the other statistics group on purpose, as that one's is after this.
void velmor_test_modem_stats_show_help(int group)
{
    if (group != RBK_GROUP_ALL && group != RBK_GROUP_STATS_QMI) return;
    // clang-format off
    LOG(8, "%d: velmor modem stats qmi test", RBK_GROUP_STATS_QMI);
    LOG(8, "   rbk %d %d sub                   /* 4G PCC rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 0);
    LOG(8, "   rbk %d %d sub                   /* 4G SCC1 rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 1);
    LOG(8, "   rbk %d %d sub                   /* 4G SCC2 rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 2);
    LOG(8, "   rbk %d %d sub                   /* 4G SCC3 rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 3);
    LOG(8, "   rbk %d %d sub                   /* 4G SCC4 rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 4);
    LOG(8, "   rbk %d %d sub                   /* 4G SCC5 rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 5);
    LOG(8, "   rbk %d %d sub                   /* 4G SCC6 rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 6);
    LOG(8, "   rbk %d %d sub                   /* 5G PCC rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 7);
    LOG(8, "   rbk %d %d sub                   /* 5G PCC snr, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 8);
    LOG(8, "   rbk %d %d sub                   /* 5G ANT diversity, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 9);
    LOG(8, "   rbk %d %d sub                  /* 5G PCC rsrp, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 10);
    LOG(8, "   rbk %d %d sub                  /* 5G SCC1 rsrp, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 11);
    LOG(8, "   rbk %d %d sub                  /* 5G SCC2 rsrp, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 12);
    LOG(8, "   rbk %d %d sub                  /* WCDMA rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 20);
    LOG(8, "   rbk %d %d sub                  /* GSM rssi, sub: 0 - sub0; 1 - sub1 */", RBK_GROUP_STATS_QMI, 21);
    LOG(8, "   rbk %d %d 0                    /* Ant info */", RBK_GROUP_STATS_QMI, 30);
    LOG(8, "   rbk %d %d sub                  /* Tx info, sub: 0 - sub0 tx; sub: 1 - sub1 tx; sub: 2 - dds tx; sub: other - max tx of dual subs; */", RBK_GROUP_STATS_QMI, 31);
    // clang-format on
}
