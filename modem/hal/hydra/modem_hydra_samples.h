/* The forms of the statistics' samples: which fields stand in one, in which order. A sample is packed, little-endian. */
#ifndef MODEM_HYDRA_SAMPLES_H
#define MODEM_HYDRA_SAMPLES_H

#include <stdint.h>

/* One field of a sample: where it goes in the record, how many bytes it has, and its name in messages. */
struct hydra_field {
    const char *name;
    uint32_t    offset;
    uint8_t     size;     // 1, 2 or 4
    bool        is_real;  // a float, else a whole number
    bool        is_signed;
};

struct hydra_form {
    const hydra_field *fields;  // in the order of the sample
    uint32_t           field_count;
    uint32_t           record_size;  // bytes of the record in memory
};

/* Of the records of modem_hydra_mgr.h that bear these names. */
extern const hydra_form g_lte_srv_meas_info_form;
extern const hydra_form g_nr5g_srv_meas_info_form;
extern const hydra_form g_nr5g_ll1_fw_rx_control_agc_form;
extern const hydra_form g_nr5g_ll1_fw_serving_ftl_form;
extern const hydra_form g_nr5g_ml1_antenna_switch_diversity_form;
extern const hydra_form g_wcdma_pn_search_edition2_form;
extern const hydra_form g_gsm_l1_rx_diversity_metrics_form;
extern const hydra_form g_mcs_trm_asdiv_form;
extern const hydra_form g_lte_pusch_power_info_form;
extern const hydra_form g_nr5g_mac_ul_phy_ch_power_info_form;
extern const hydra_form g_sys_mode_form;

struct modem_hydra_sys_mode {
    uint8_t  stack_max;  // 0: no rat follows
    uint32_t rat;
};

/* The form of a parameter's samples; null for a parameter that isn't in use. Threads: any. */
const hydra_form *modem_hydra_form_of(uint32_t id);

#endif
