/* Group 9: figures of the modem over QMI. One run opens the statistics client, switches the statistics on, reads one
 * view, prints one line and closes the client. Figures stand as the modem sent them. */
#include "velmor_rbk_groups.h"

#include <stdlib.h>

#include "modem_hydra_mgr.h"
#include "velmor_utils_cmn.h"

#define SHELL_MASK_WITHOUT_TRACES 11

// Second word of the command line.
enum {
    OPT_4G_PCC = 0,
    OPT_4G_SCC1 = 1,
    OPT_4G_SCC2 = 2,
    OPT_4G_SCC3 = 3,
    OPT_4G_SCC4 = 4,
    OPT_4G_SCC5 = 5,
    OPT_4G_SCC6 = 6,
    OPT_5G_RSSI = 7,
    OPT_5G_SNR = 8,
    OPT_5G_ANT_DIVERSITY = 9,
    OPT_5G_PCC_RSRP = 10,
    OPT_5G_SCC1_RSRP = 11,
    OPT_5G_SCC2_RSRP = 12,
    OPT_WCDMA = 20,
    OPT_GSM = 21,
    OPT_ANT_INFO = 30,
    OPT_TX_INFO = 31,
};

// ---- One figure each: a view's record on one line, under one label for the whole group ----

static void velmor_test_qmi_modem_stats_4g_rssi(uint32_t sub, int opt)
{
    static int32_t (*const views[])(uint32_t sub, modem_hydra_lte_srv_meas_info * record) = {
        // by opt
        modem_hydra_lte_srv_meas_info_get_for_pcc,  modem_hydra_lte_srv_meas_info_get_for_scc1,
        modem_hydra_lte_srv_meas_info_get_for_scc2, modem_hydra_lte_srv_meas_info_get_for_scc3,
        modem_hydra_lte_srv_meas_info_get_for_scc4, modem_hydra_lte_srv_meas_info_get_for_scc5,
        modem_hydra_lte_srv_meas_info_get_for_scc6,
    };

    modem_hydra_lte_srv_meas_info info = {};
    if (views[opt - OPT_4G_PCC](sub, &info) != 1) {
        LOG(1, "get hydra data failed");
        return;
    }
    LOG(8,
        "ASDIV DATA: earfcn: %d, pci: %d, rx_valid: %d, "
        "rsrp_rx0: %.2f, rsrq_rx0: %.2f, rssi_rx0: %.2f, snr_rx0: %.2f, "
        "rsrp_rx1: %.2f, rsrq_rx1: %.2f, rssi_rx1: %.2f, snr_rx1: %.2f, "
        "rsrp_rx2: %.2f, rsrq_rx2: %.2f, rssi_rx2: %.2f, snr_rx2: %.2f, "
        "rsrp_rx3: %.2f, rsrq_rx3: %.2f, rssi_rx3: %.2f, snr_rx3: %.2f",
        info.earfcn, info.pci, info.rx_valid,                       //
        info.rsrp_rx0, info.rsrq_rx0, info.rssi_rx0, info.snr_rx0,  //
        info.rsrp_rx1, info.rsrq_rx1, info.rssi_rx1, info.snr_rx1,  //
        info.rsrp_rx2, info.rsrq_rx2, info.rssi_rx2, info.snr_rx2,  //
        info.rsrp_rx3, info.rsrq_rx3, info.rssi_rx3, info.snr_rx3);
}

static void velmor_test_qmi_modem_stats_5g_rssi(uint32_t sub)
{
    modem_hydra_nr5g_ll1_fw_rx_control_agc info = {};
    if (modem_hydra_nr5g_ll1_fw_rx_control_agc_get(sub, &info) != 1) {
        LOG(1, "modem_hydra_nr5g_ll1_fw_rx_control_agc_get failed");
        return;
    }
    LOG(8, "ASDIV DATA: rssi_rx0: %.2f, rssi_rx1: %.2f, rssi_rx2: %.2f, rssi_rx3: %.2f", info.rssi0, info.rssi1,
        info.rssi2, info.rssi3);
}

static void velmor_test_qmi_modem_stats_5g_snr(uint32_t sub)
{
    modem_hydra_nr5g_ll1_fw_serving_ftl info = {};
    if (modem_hydra_nr5g_ll1_fw_serving_ftl_get(sub, &info) != 1) {
        LOG(1, "modem_hydra_nr5g_ll1_fw_serving_ftl_get failed");
        return;
    }
    LOG(8, "ASDIV DATA: snr_rx0: %.2f, snr_rx1: %.2f, snr_rx2: %.2f, snr_rx3: %.2f", info.snr0, info.snr1, info.snr2,
        info.snr3);
}

static void velmor_test_qmi_modem_stats_5g_ant_diversity(uint32_t sub)
{
    modem_hydra_nr5g_ml1_antenna_switch_diversity info = {};
    if (modem_hydra_nr5g_ml1_antenna_switch_diversity_get(sub, &info) != 1) {
        LOG(1, "modem_hydra_nr5g_ml1_antenna_switch_diversity_get failed");
        return;
    }
    LOG(8,
        "ASDIV DATA: ant_rx_0_old = %d, ant_rx_0_new = %d, ant_rx_1_old = %d, ant_rx_1_new = %d, "
        "ant_rx_2_old = %d, ant_rx_2_new = %d, ant_rx_3_old = %d, ant_rx_3_new = %d, "
        "ant_tx_0_old = %d, ant_tx_0_new = %d, ant_tx_1_old = %d, ant_tx_1_new = %d",
        info.ant_rx_0_old, info.ant_rx_0_new, info.ant_rx_1_old, info.ant_rx_1_new,  //
        info.ant_rx_2_old, info.ant_rx_2_new, info.ant_rx_3_old, info.ant_rx_3_new,  //
        info.ant_tx_0_old, info.ant_tx_0_new, info.ant_tx_1_old, info.ant_tx_1_new);
}

static void velmor_test_qmi_modem_stats_5g_rsrp(uint32_t sub, int opt)
{
    static int32_t (*const views[])(uint32_t sub, modem_hydra_nr5g_srv_meas_info * record) = {
        modem_hydra_nr5g_srv_meas_info_get_for_pcc,
        modem_hydra_nr5g_srv_meas_info_get_for_scc1,
        modem_hydra_nr5g_srv_meas_info_get_for_scc2,
    };

    modem_hydra_nr5g_srv_meas_info info = {};
    if (views[opt - OPT_5G_PCC_RSRP](sub, &info) != 1) {
        LOG(1, "get hydra data failed");
        return;
    }
    LOG(8, "ASDIV DATA: rsrp_rx0: %.2f, rsrp_rx1: %.2f, rsrp_rx2: %.2f, rsrp_rx3: %.2f, rsrq: %.2f", info.rsrp_rx0,
        info.rsrp_rx1, info.rsrp_rx2, info.rsrp_rx3, info.rsrq);
}

static void velmor_test_qmi_modem_stats_wcdma_rssi(uint32_t sub)
{
    modem_hydra_wcdma_pn_search_edition2 info = {};
    if (modem_hydra_wcdma_pn_search_edition2_get(sub, &info) != 1) {
        LOG(1, "modem_hydra_wcdma_pn_search_edition2_get failed");
        return;
    }
    LOG(8, "ASDIV DATA: rx_agc_0: %.2f, rx_agc_1: %.2f", info.rx_agc_0, info.rx_agc_1);
}

static void velmor_test_qmi_modem_stats_gsm_rssi(uint32_t sub)
{
    modem_hydra_gsm_l1_rx_diversity_metrics info = {};
    if (modem_hydra_gsm_l1_rx_diversity_metrics_get(sub, &info) != 1) {
        LOG(1, "modem_hydra_gsm_l1_rx_diversity_metrics_get failed");
        return;
    }
    LOG(8, "ASDIV DATA: rx_prx: %.2f, rx_drx: %.2f", info.rx_prx, info.rx_drx);
}

static void velmor_test_qmi_modem_stats_ant_info(uint32_t sub)
{
    modem_hydra_mcs_trm_asdiv info = {};
    if (modem_hydra_mcs_trm_asdiv_get(sub, &info) != 1) {
        LOG(1, "modem_hydra_mcs_trm_asdiv_get failed");
        return;
    }
    LOG(8, "ANT INFO: ant_num: %d, ant_path: %d, sig_path: %d, old_config: %d, new_config: %d", info.ant_number,
        info.ant_switch_path, info.sig_path, info.old_config, info.new_config);
}

/* Its line comes without an answer too, and says 65535 then. */
static void velmor_test_qmi_modem_stats_tx_info(uint32_t sub)
{
    int32_t tx_power;
    switch (sub) {
    case 0:
    case 1: tx_power = modem_tx_power_get_by_sub(sub); break;
    case 2: tx_power = modem_tx_power_get_for_dds_sub(); break;
    default: tx_power = modem_tx_power_get_for_max_sub(); break;
    }
    LOG(8, "TX INFO: tx_power = %d", tx_power);
}

// ---- The group ----

static void velmor_test_qmi_modem_stats_hdl(int opt, int sub)
{
    const uint32_t sub_id = static_cast<uint32_t>(sub);  // a negative one is refused as too high
    switch (opt) {
    case OPT_4G_PCC:
    case OPT_4G_SCC1:
    case OPT_4G_SCC2:
    case OPT_4G_SCC3:
    case OPT_4G_SCC4:
    case OPT_4G_SCC5:
    case OPT_4G_SCC6: velmor_test_qmi_modem_stats_4g_rssi(sub_id, opt); break;
    case OPT_5G_RSSI: velmor_test_qmi_modem_stats_5g_rssi(sub_id); break;
    case OPT_5G_SNR: velmor_test_qmi_modem_stats_5g_snr(sub_id); break;
    case OPT_5G_ANT_DIVERSITY: velmor_test_qmi_modem_stats_5g_ant_diversity(sub_id); break;
    case OPT_5G_PCC_RSRP:
    case OPT_5G_SCC1_RSRP:
    case OPT_5G_SCC2_RSRP: velmor_test_qmi_modem_stats_5g_rsrp(sub_id, opt); break;
    case OPT_WCDMA: velmor_test_qmi_modem_stats_wcdma_rssi(sub_id); break;
    case OPT_GSM: velmor_test_qmi_modem_stats_gsm_rssi(sub_id); break;
    case OPT_ANT_INFO: velmor_test_qmi_modem_stats_ant_info(0); break;  // whatever the command line says
    case OPT_TX_INFO: velmor_test_qmi_modem_stats_tx_info(sub_id); break;
    default: LOG(1, "velmor_test_qmi_modem_stats_hdl: Unknown opt(%d), sub(%d)", opt, sub); break;
    }
}

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

/* No result stops the next step: a run reports what it finds. */
int velmor_test_qmi_modem_stats_do(int argc, char *argv[])
{
    velmor_hal_set_shell_print_mask(SHELL_MASK_WITHOUT_TRACES);  // before the arguments are looked at

    bool help_wanted = true;
    if (argc < 4) {
        LOG(1, "note: Too few parameters, Pls refer to the following cmd:");
    } else if (atoi(argv[1]) != RBK_GROUP_STATS_QMI) {
        LOG(1, "note: the first parameters should be %d, Pls refer to the following cmd:", RBK_GROUP_STATS_QMI);
    } else {
        const int opt = atoi(argv[2]);
        const int sub = atoi(argv[3]);
        LOG(2, "opt = %d, sub = %d", opt, sub);
        modem_hydra_api_init();
        modem_hydra_stats_start();
        velmor_test_qmi_modem_stats_hdl(opt, sub);
        modem_hydra_api_deinit();
        help_wanted = false;
    }
    if (help_wanted) show_help(RBK_GROUP_STATS_QMI);
    return 0;
}
