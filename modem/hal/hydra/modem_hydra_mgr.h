/* The statistics manager and its views. The manager holds the process's one client of the statistics library, switches
 * the statistics on in the modem and fetches one sample at a time; a view turns a sample into a record.
 *
 * There is no cache: each view asks the modem anew. Figures are the modem's own, without a scale and unchecked.
 *
 * Threads: views on any thread, one after the other under g_hydra_data_mutex, which is held through the request (up to
 * 30 seconds) and, where there is no client, through its opening first (up to 9 seconds); init, start and deinit while no
 * view runs. */
#ifndef MODEM_HYDRA_MGR_H
#define MODEM_HYDRA_MGR_H

#include <stdint.h>

#include "modem_hydra_api.h"

/* Statistics parameters in use. */
enum : uint32_t {
    HYDRA_NR5G_SRV_MEAS_SCC1 = 6,
    HYDRA_NR5G_SRV_MEAS_SCC2 = 7,
    HYDRA_SYS_MODE = 44,
    HYDRA_LTE_SRV_MEAS_PCC = 82,
    HYDRA_NR5G_UL_POWER = 90,
    HYDRA_NR5G_RX_AGC = 94,
    HYDRA_LTE_PUSCH_POWER = 98,
    HYDRA_ASDIV = 100,
    HYDRA_LTE_SRV_MEAS_SCC1 = 103,
    HYDRA_LTE_SRV_MEAS_SCC2 = 104,
    HYDRA_LTE_SRV_MEAS_SCC3 = 105,
    HYDRA_LTE_SRV_MEAS_SCC4 = 106,
    HYDRA_LTE_SRV_MEAS_SCC5 = 107,
    HYDRA_LTE_SRV_MEAS_SCC6 = 108,
    HYDRA_WCDMA_RX_AGC = 110,
    HYDRA_GSM_RX_DIVERSITY = 111,
    HYDRA_NR5G_SERVING_SNR = 112,
    HYDRA_NR5G_ANT_SWITCH = 113,
    HYDRA_NR5G_SRV_MEAS_PCC = 135,
};

// ---- The client ----

/* Replace the process's client by a fresh one.
 *   event_cb, operational_status_cb  as modem_api_init_client has them
 * Result: 1 when the client stands, 0 when not. An absent service costs ten attempts, a second apart. */
int32_t modem_hydra_api_init_ex(vs_event_callback event_cb, modem_api_status_callback operational_status_cb);
int32_t modem_hydra_api_init();  // with the two callbacks below

int32_t modem_hydra_api_is_inited();  // 1 or 0

/* Closes the client. Result: that of modem_api_release. */
int32_t modem_hydra_api_deinit();

/* Events carry nothing that the manager wants: both log and do nothing. */
void modem_hydra_callback_event_cb(uint32_t event_id, void *data, uint32_t data_len);
void modem_hydra_operational_status_cb(uint32_t event_id, uint32_t client_type);

/* Switch the statistics on; nothing switches them off again. Result: 1, or 0 after a failure. */
int32_t modem_hydra_stats_start();
int32_t modem_hydra_set_feature_status(uint8_t status, uint8_t has_value, uint8_t value);

// ---- One sample ----

/* Asks for parameters. `number`, the running number of fetches, goes out as the slot.
 * Result: a code of the statistics library; 0 with nothing done when there is no client. */
int32_t modem_hydra_get_stats_parameter(uint32_t sub, uint32_t number, stats_para_data *data);

/* Fetches a sample into the manager's buffer, and makes a client first when there is none. With g_hydra_data_mutex held,
 * so for views alone.
 * Result: 0 when a sample stands there; 1 when not, and the buffer is zero then. */
int32_t modem_hydra_data_get(uint32_t sub, uint32_t id);

// ---- Records ----

struct modem_hydra_lte_srv_meas_info {
    uint8_t  version;
    uint8_t  version_ssmr;
    uint32_t earfcn;
    uint16_t pci;
    uint8_t  is_srv_cell;
    uint16_t rx_valid;
    float    rsrp_rx0, rsrp_rx1, rsrp_rx2, rsrp_rx3;
    float    rsrq_rx0, rsrq_rx1, rsrq_rx2, rsrq_rx3;
    float    rssi_rx0, rssi_rx1, rssi_rx2, rssi_rx3;
    float    snr_rx0, snr_rx1, snr_rx2, snr_rx3;
};

struct modem_hydra_nr5g_srv_meas_info {
    uint32_t version;
    float    rsrp_rx0, rsrp_rx1, rsrp_rx2, rsrp_rx3;
    float    rsrq;
};

struct modem_hydra_nr5g_ll1_fw_rx_control_agc {
    uint32_t version;
    float    rssi0, rssi1, rssi2, rssi3;
};

struct modem_hydra_nr5g_ll1_fw_serving_ftl {
    uint32_t version;
    float    snr0, snr1, snr2, snr3;
};

struct modem_hydra_nr5g_ml1_antenna_switch_diversity {
    uint32_t version;
    uint8_t  ant_rx_0_old, ant_rx_0_new;
    uint8_t  ant_rx_1_old, ant_rx_1_new;
    uint8_t  ant_rx_2_old, ant_rx_2_new;
    uint8_t  ant_rx_3_old, ant_rx_3_new;
    uint8_t  ant_tx_0_old, ant_tx_0_new;
    uint8_t  ant_tx_1_old, ant_tx_1_new;
};

struct modem_hydra_wcdma_pn_search_edition2 {
    uint8_t version;
    float   rx_agc_0, rx_agc_1;
};

struct modem_hydra_gsm_l1_rx_diversity_metrics {
    uint8_t version;
    float   rx_prx, rx_drx;
};

struct modem_hydra_mcs_trm_asdiv {
    uint8_t  version;
    uint8_t  ant_number;
    uint16_t ant_switch_path;
    uint16_t sig_path;
    uint8_t  old_config, new_config;
};

struct modem_hydra_lte_pusch_power_info {
    uint8_t  version;
    int16_t  pusch_tx_power;
    uint8_t  dl_path_loss;
    uint16_t max_power;
    uint16_t pusch_ex_tx_power;
};

struct modem_hydra_nr5g_mac_ul_phy_ch_power_info {
    uint32_t version_hook;
    float    tx_power_pusch;
    uint32_t tx_power_pucch, tx_power_srs, tx_power_prach;
    uint32_t mtpl_pusch, mtpl_pucch, mtpl_srs, mtpl_prach;
    uint32_t pathloss[4];
};

// ---- Views ----

/* Each fetches one sample and unpacks it.
 *   sub     subscription, 0 or 1
 *   record  receives the figures. A failed fetch leaves it as it was; a sample that is too short leaves the fields that
 *           it has, and zeros
 * Result: 1, or 0 after a failure. */
int32_t modem_hydra_lte_srv_meas_info_get(uint32_t sub, uint32_t id, modem_hydra_lte_srv_meas_info *record);
int32_t modem_hydra_lte_srv_meas_info_get_for_pcc(uint32_t sub, modem_hydra_lte_srv_meas_info *record);
int32_t modem_hydra_lte_srv_meas_info_get_for_scc1(uint32_t sub, modem_hydra_lte_srv_meas_info *record);
int32_t modem_hydra_lte_srv_meas_info_get_for_scc2(uint32_t sub, modem_hydra_lte_srv_meas_info *record);
int32_t modem_hydra_lte_srv_meas_info_get_for_scc3(uint32_t sub, modem_hydra_lte_srv_meas_info *record);
int32_t modem_hydra_lte_srv_meas_info_get_for_scc4(uint32_t sub, modem_hydra_lte_srv_meas_info *record);
int32_t modem_hydra_lte_srv_meas_info_get_for_scc5(uint32_t sub, modem_hydra_lte_srv_meas_info *record);
int32_t modem_hydra_lte_srv_meas_info_get_for_scc6(uint32_t sub, modem_hydra_lte_srv_meas_info *record);
int32_t modem_hydra_nr5g_srv_meas_info_get(uint32_t sub, uint32_t id, modem_hydra_nr5g_srv_meas_info *record);
int32_t modem_hydra_nr5g_srv_meas_info_get_for_pcc(uint32_t sub, modem_hydra_nr5g_srv_meas_info *record);
int32_t modem_hydra_nr5g_srv_meas_info_get_for_scc1(uint32_t sub, modem_hydra_nr5g_srv_meas_info *record);
int32_t modem_hydra_nr5g_srv_meas_info_get_for_scc2(uint32_t sub, modem_hydra_nr5g_srv_meas_info *record);
int32_t modem_hydra_nr5g_ll1_fw_rx_control_agc_get(uint32_t sub, modem_hydra_nr5g_ll1_fw_rx_control_agc *record);
int32_t modem_hydra_nr5g_ll1_fw_serving_ftl_get(uint32_t sub, modem_hydra_nr5g_ll1_fw_serving_ftl *record);
int32_t modem_hydra_nr5g_ml1_antenna_switch_diversity_get(uint32_t                                       sub,
                                                          modem_hydra_nr5g_ml1_antenna_switch_diversity *record);
int32_t modem_hydra_wcdma_pn_search_edition2_get(uint32_t sub, modem_hydra_wcdma_pn_search_edition2 *record);
int32_t modem_hydra_gsm_l1_rx_diversity_metrics_get(uint32_t sub, modem_hydra_gsm_l1_rx_diversity_metrics *record);
int32_t modem_hydra_mcs_trm_asdiv_get(uint32_t sub, modem_hydra_mcs_trm_asdiv *record);
int32_t modem_hydra_lte_pusch_power_info_get(uint32_t sub, modem_hydra_lte_pusch_power_info *record);
int32_t modem_hydra_nr5g_mac_ul_phy_ch_power_info_get(uint32_t sub, modem_hydra_nr5g_mac_ul_phy_ch_power_info *record);

// ---- Transmit power ----

constexpr uint32_t HYDRA_RAT_NONE = 0xFFFFFFFF;
constexpr uint32_t HYDRA_RAT_LTE = 9;
constexpr uint32_t HYDRA_RAT_NR5G = 12;
constexpr int32_t  HYDRA_TX_POWER_NONE = 65535;

/* The system mode of a subscription: HYDRA_RAT_LTE, HYDRA_RAT_NR5G, the modem's own number for any other, or
 * HYDRA_RAT_NONE without an answer. */
uint32_t modem_sys_mode_get(uint32_t sub);

/* The power at which the modem transmits: on a subscription, on the default data subscription, and the stronger of the
 * subscriptions 0 and 1. HYDRA_TX_POWER_NONE without an answer, which never wins over a figure. Mode and power are two
 * fetches, and the lock is dropped between them. */
int32_t modem_tx_power_get_by_sub(uint32_t sub);
int32_t modem_tx_power_get_for_dds_sub();
int32_t modem_tx_power_get_for_max_sub();

#endif
