/* Tables: the fields of each sample, and which parameter has which form. */
#include "modem_hydra_samples.h"

#include <stddef.h>

#include <type_traits>

#include "modem_hydra_mgr.h"

// clang-format off
#define HYDRA_DATA_UNPK(T, member)                                                                    \
    {#member, offsetof(T, member), sizeof(T::member), std::is_floating_point_v<decltype(T::member)>,    \
     std::is_signed_v<decltype(T::member)>}
#define HYDRA_FORM(T, fields) {fields, sizeof(fields) / sizeof(fields[0]), sizeof(T)}
// clang-format on

/* The sample has the figures chain by chain, the record has them by kind. */
static const hydra_field g_lte_srv_meas_info_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, version),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, version_ssmr),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, earfcn),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, pci),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, is_srv_cell),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rx_valid),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rsrp_rx0),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rsrq_rx0),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rssi_rx0),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, snr_rx0),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rsrp_rx1),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rsrq_rx1),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rssi_rx1),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, snr_rx1),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rsrp_rx2),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rsrq_rx2),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rssi_rx2),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, snr_rx2),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rsrp_rx3),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rsrq_rx3),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, rssi_rx3),
    HYDRA_DATA_UNPK(modem_hydra_lte_srv_meas_info, snr_rx3),
};
const hydra_form g_lte_srv_meas_info_form = HYDRA_FORM(modem_hydra_lte_srv_meas_info, g_lte_srv_meas_info_fields);

static const hydra_field g_nr5g_srv_meas_info_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_nr5g_srv_meas_info, version),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_srv_meas_info, rsrp_rx0),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_srv_meas_info, rsrp_rx1),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_srv_meas_info, rsrp_rx2),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_srv_meas_info, rsrp_rx3),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_srv_meas_info, rsrq),
};
const hydra_form g_nr5g_srv_meas_info_form = HYDRA_FORM(modem_hydra_nr5g_srv_meas_info, g_nr5g_srv_meas_info_fields);

static const hydra_field g_nr5g_ll1_fw_rx_control_agc_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_rx_control_agc, version),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_rx_control_agc, rssi0),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_rx_control_agc, rssi1),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_rx_control_agc, rssi2),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_rx_control_agc, rssi3),
};
const hydra_form g_nr5g_ll1_fw_rx_control_agc_form =
    HYDRA_FORM(modem_hydra_nr5g_ll1_fw_rx_control_agc, g_nr5g_ll1_fw_rx_control_agc_fields);

static const hydra_field g_nr5g_ll1_fw_serving_ftl_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_serving_ftl, version),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_serving_ftl, snr0),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_serving_ftl, snr1),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_serving_ftl, snr2),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ll1_fw_serving_ftl, snr3),
};
const hydra_form g_nr5g_ll1_fw_serving_ftl_form =
    HYDRA_FORM(modem_hydra_nr5g_ll1_fw_serving_ftl, g_nr5g_ll1_fw_serving_ftl_fields);

static const hydra_field g_nr5g_ml1_antenna_switch_diversity_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, version),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_rx_0_old),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_rx_0_new),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_rx_1_old),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_rx_1_new),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_rx_2_old),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_rx_2_new),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_rx_3_old),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_rx_3_new),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_tx_0_old),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_tx_0_new),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_tx_1_old),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_ml1_antenna_switch_diversity, ant_tx_1_new),
};
const hydra_form g_nr5g_ml1_antenna_switch_diversity_form =
    HYDRA_FORM(modem_hydra_nr5g_ml1_antenna_switch_diversity, g_nr5g_ml1_antenna_switch_diversity_fields);

static const hydra_field g_wcdma_pn_search_edition2_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_wcdma_pn_search_edition2, version),
    HYDRA_DATA_UNPK(modem_hydra_wcdma_pn_search_edition2, rx_agc_0),
    HYDRA_DATA_UNPK(modem_hydra_wcdma_pn_search_edition2, rx_agc_1),
};
const hydra_form g_wcdma_pn_search_edition2_form =
    HYDRA_FORM(modem_hydra_wcdma_pn_search_edition2, g_wcdma_pn_search_edition2_fields);

static const hydra_field g_gsm_l1_rx_diversity_metrics_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_gsm_l1_rx_diversity_metrics, version),
    HYDRA_DATA_UNPK(modem_hydra_gsm_l1_rx_diversity_metrics, rx_prx),
    HYDRA_DATA_UNPK(modem_hydra_gsm_l1_rx_diversity_metrics, rx_drx),
};
const hydra_form g_gsm_l1_rx_diversity_metrics_form =
    HYDRA_FORM(modem_hydra_gsm_l1_rx_diversity_metrics, g_gsm_l1_rx_diversity_metrics_fields);

static const hydra_field g_mcs_trm_asdiv_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_mcs_trm_asdiv, version),         HYDRA_DATA_UNPK(modem_hydra_mcs_trm_asdiv, ant_number),
    HYDRA_DATA_UNPK(modem_hydra_mcs_trm_asdiv, ant_switch_path), HYDRA_DATA_UNPK(modem_hydra_mcs_trm_asdiv, sig_path),
    HYDRA_DATA_UNPK(modem_hydra_mcs_trm_asdiv, old_config),      HYDRA_DATA_UNPK(modem_hydra_mcs_trm_asdiv, new_config),
};
const hydra_form g_mcs_trm_asdiv_form = HYDRA_FORM(modem_hydra_mcs_trm_asdiv, g_mcs_trm_asdiv_fields);

static const hydra_field g_lte_pusch_power_info_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_lte_pusch_power_info, version),
    HYDRA_DATA_UNPK(modem_hydra_lte_pusch_power_info, pusch_tx_power),
    HYDRA_DATA_UNPK(modem_hydra_lte_pusch_power_info, dl_path_loss),
    HYDRA_DATA_UNPK(modem_hydra_lte_pusch_power_info, max_power),
    HYDRA_DATA_UNPK(modem_hydra_lte_pusch_power_info, pusch_ex_tx_power),
};
const hydra_form g_lte_pusch_power_info_form =
    HYDRA_FORM(modem_hydra_lte_pusch_power_info, g_lte_pusch_power_info_fields);

/* All four losses bear one name in messages: meant to stay so. */
static const hydra_field g_nr5g_mac_ul_phy_ch_power_info_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, version_hook),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, tx_power_pusch),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, tx_power_pucch),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, tx_power_srs),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, tx_power_prach),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, mtpl_pusch),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, mtpl_pucch),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, mtpl_srs),
    HYDRA_DATA_UNPK(modem_hydra_nr5g_mac_ul_phy_ch_power_info, mtpl_prach),
    {"pathloss", offsetof(modem_hydra_nr5g_mac_ul_phy_ch_power_info, pathloss[0]), sizeof(uint32_t), false, false},
    {"pathloss", offsetof(modem_hydra_nr5g_mac_ul_phy_ch_power_info, pathloss[1]), sizeof(uint32_t), false, false},
    {"pathloss", offsetof(modem_hydra_nr5g_mac_ul_phy_ch_power_info, pathloss[2]), sizeof(uint32_t), false, false},
    {"pathloss", offsetof(modem_hydra_nr5g_mac_ul_phy_ch_power_info, pathloss[3]), sizeof(uint32_t), false, false},
};
const hydra_form g_nr5g_mac_ul_phy_ch_power_info_form =
    HYDRA_FORM(modem_hydra_nr5g_mac_ul_phy_ch_power_info, g_nr5g_mac_ul_phy_ch_power_info_fields);

static const hydra_field g_sys_mode_fields[] = {
    HYDRA_DATA_UNPK(modem_hydra_sys_mode, stack_max),
    HYDRA_DATA_UNPK(modem_hydra_sys_mode, rat),
};
const hydra_form g_sys_mode_form = HYDRA_FORM(modem_hydra_sys_mode, g_sys_mode_fields);

const hydra_form *modem_hydra_form_of(uint32_t id)
{
    switch (id) {
    case HYDRA_LTE_SRV_MEAS_PCC:
    case HYDRA_LTE_SRV_MEAS_SCC1:
    case HYDRA_LTE_SRV_MEAS_SCC2:
    case HYDRA_LTE_SRV_MEAS_SCC3:
    case HYDRA_LTE_SRV_MEAS_SCC4:
    case HYDRA_LTE_SRV_MEAS_SCC5:
    case HYDRA_LTE_SRV_MEAS_SCC6: return &g_lte_srv_meas_info_form;
    case HYDRA_NR5G_SRV_MEAS_PCC:
    case HYDRA_NR5G_SRV_MEAS_SCC1:
    case HYDRA_NR5G_SRV_MEAS_SCC2: return &g_nr5g_srv_meas_info_form;
    case HYDRA_NR5G_RX_AGC: return &g_nr5g_ll1_fw_rx_control_agc_form;
    case HYDRA_NR5G_SERVING_SNR: return &g_nr5g_ll1_fw_serving_ftl_form;
    case HYDRA_NR5G_ANT_SWITCH: return &g_nr5g_ml1_antenna_switch_diversity_form;
    case HYDRA_WCDMA_RX_AGC: return &g_wcdma_pn_search_edition2_form;
    case HYDRA_GSM_RX_DIVERSITY: return &g_gsm_l1_rx_diversity_metrics_form;
    case HYDRA_ASDIV: return &g_mcs_trm_asdiv_form;
    case HYDRA_LTE_PUSCH_POWER: return &g_lte_pusch_power_info_form;
    case HYDRA_NR5G_UL_POWER: return &g_nr5g_mac_ul_phy_ch_power_info_form;
    case HYDRA_SYS_MODE: return &g_sys_mode_form;
    default: return nullptr;
    }
}
