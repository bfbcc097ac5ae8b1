/* The statistics manager. A view takes g_hydra_data_mutex, has a sample fetched into the one buffer, unpacks it field by
 * field into its record and lets go. All views share one frame, which reports under the view's name; a view itself is
 * its parameter and the form of its sample (modem_hydra_samples). */
#include "modem_hydra_mgr.h"

#include <pthread.h>
#include <stddef.h>
#include <string.h>

#include "modem_hydra_samples.h"
#include "velmor_utils_cmn.h"

constexpr uint32_t HYDRA_FEATURE_STATS = 2;
constexpr uint32_t HYDRA_SUB_COUNT = 2;
constexpr uint32_t HYDRA_DATA_MAX = VS_VALUE_MAX;  // bytes of a sample

/* State: the sample and its counters belong to g_hydra_data_mutex. */
static int32_t         g_hydra_client_id = -1;  // -1: not inited
static pthread_mutex_t g_hydra_data_mutex = PTHREAD_MUTEX_INITIALIZER;
static uint32_t        g_hydra_data_number;               // fetches so far; raised before each request
static uint32_t        g_hydra_data_len;                  // bytes of the last answer; 0 after a failure
static uint8_t         g_hydra_data_buf[HYDRA_DATA_MAX];  // the last sample
static int32_t         g_hydra_data_left;                 // bytes of it not yet unpacked
static uint32_t        g_hydra_data_id;                   // parameter of the last good sample
static int32_t         g_pK_DATA_CNT;                     // read position in it

// ---- The client ----

void modem_hydra_callback_event_cb(uint32_t event_id, void *, uint32_t data_len)
{
    LOG(4, "do nothing, event_id = %d, data_len = %d", event_id, data_len);
}

void modem_hydra_operational_status_cb(uint32_t event_id, uint32_t client_type)
{
    LOG(4, "do nothing, event_id = %d, client_type = %d", event_id, client_type);
}

int32_t modem_hydra_api_init_ex(vs_event_callback event_cb, modem_api_status_callback operational_status_cb)
{
    LOG(4, "old g_hydra_client_id = %d", g_hydra_client_id);
    if (g_hydra_client_id != -1) {
        modem_api_free_client(g_hydra_client_id);
        g_hydra_client_id = -1;
    }
    /* From clean ground, and without a look at the results: the id alone tells whether there is a client. */
    modem_api_release();
    modem_api_init();
    modem_api_init_client(VS_CLIENT_TYPE, event_cb, operational_status_cb, &g_hydra_client_id);
    LOG(4, "new g_hydra_client_id = %d", g_hydra_client_id);
    if (g_hydra_client_id >= 0) return 1;
    LOG(1, "modem_api_init_client failed");
    return 0;
}

int32_t modem_hydra_api_init()
{
    return modem_hydra_api_init_ex(modem_hydra_callback_event_cb, modem_hydra_operational_status_cb);
}

int32_t modem_hydra_api_is_inited()
{
    LOG(4, "g_hydra_client_id = %d", g_hydra_client_id);
    return g_hydra_client_id >= 0;
}

int32_t modem_hydra_api_deinit()
{
    LOG(4, "g_hydra_client_id = %d", g_hydra_client_id);
    if (g_hydra_client_id != -1) {
        modem_api_free_client(g_hydra_client_id);
        g_hydra_client_id = -1;
    }
    return modem_api_release();
}

int32_t modem_hydra_set_feature_status(uint8_t status, uint8_t has_value, uint8_t value)
{
    if (modem_hydra_api_is_inited() == 0) {
        LOG(1, "The hydra is not inited, do nothing");
        return 0;
    }
    const int32_t ret =
        modem_api_set_hydra_feature_status(g_hydra_client_id, HYDRA_FEATURE_STATS, status, has_value, value);
    LOG(4, "ret = %d", ret);
    return ret == MODEM_API_SUCCESS;
}

int32_t modem_hydra_stats_start()
{
    if (modem_hydra_api_is_inited() == 0) {
        LOG(1, "The hydra is not inited, do nothing");
        return 0;
    }
    return modem_hydra_set_feature_status(1, 1, 1);
}

// ---- Fetching a sample ----

int32_t modem_hydra_get_stats_parameter(uint32_t sub, uint32_t number, stats_para_data *data)
{
    if (modem_hydra_api_is_inited() == 0) {
        LOG(1, "The hydra is not inited, do nothing");
        return 0;
    }
    return modem_api_get_stats_parameter(g_hydra_client_id, sub, number, data);
}

/* Whether the answer is one value, the one that was asked for. Reports under the fetch's name. */
static bool judge_answer(const char *name, const stats_para_data *data, uint32_t sub, uint32_t id)
{
    const stats_para_entry *entry = &data->ids[0];
    const uint32_t          number = g_hydra_data_number;
    if (data->para_num == 0) {
        LOG_FROM(name, 1, "Fail to get data, empty, number = %d, sub = %d, ret id_num = %d, id = %d", number, sub,
                 data->para_num, id);
        return false;
    }
    if (data->para_num != 1) {
        LOG_FROM(name, 1, "Fail to get data, id num error, number = %d, sub = %d, ret id_num = %d, id = %d", number,
                 sub, data->para_num, id);
        return false;
    }
    if (entry->id != id) {
        LOG_FROM(name, 1, "Fail to get data, ret_id(%d) is invalid, number = %d, sub = %d, ret id_num = %d, id = %d",
                 entry->id, number, sub, data->para_num, id);
        return false;
    }
    if (entry->sub != sub) {
        LOG_FROM(name, 1, "Fail to get data, ret_sub(%d) is invalid, number = %d, sub = %d, ret id_num = %d, id = %d",
                 entry->sub, number, sub, data->para_num, id);
        return false;
    }
    /* The library cuts a longer value; the test stands for itself all the same. */
    if (entry->value_len < 1 || entry->value_len > HYDRA_DATA_MAX) {
        LOG_FROM(name, 1,
                 "Fail to get data, data_len(%d) is invalid, should be in (0, %d], number = %d, sub = %d, "
                 "ret id_num = %d, id = %d",
                 entry->value_len, HYDRA_DATA_MAX, number, sub, data->para_num, id);
        return false;
    }
    LOG_FROM(name, 4, "Success to get data, number = %d, sub = %d, ret id_num = %d, id = %d, data_len = %d", number,
             sub, data->para_num, id, entry->value_len);
    return true;
}

/* A failure leaves the counters as the sample before left them: no view goes on to read then. */
int32_t modem_hydra_data_get(uint32_t sub, uint32_t id)
{
    g_hydra_data_len = 0;
    memset(g_hydra_data_buf, 0, sizeof(g_hydra_data_buf));

    if (modem_hydra_api_is_inited() == 0) {
        LOG(1, "The hydra is not inited, will init it");
        modem_hydra_api_init_ex(modem_hydra_callback_event_cb, modem_hydra_operational_status_cb);
        if (modem_hydra_api_is_inited() == 0) {
            LOG(1, "The hydra init failed, will do nothing");
            return 1;
        }
    }
    if (sub >= HYDRA_SUB_COUNT) {
        LOG(1, "modem_api_get_stats_parameter, sub(%d) is invalid", sub);
        return 1;
    }

    stats_para_data data = {};  // room for 10 entries though one is used: the library takes no smaller form
    data.para_num = 1;
    data.ids[0].sub = static_cast<uint16_t>(sub);
    data.ids[0].id = id;
    g_hydra_data_number++;
    const int32_t ret = modem_hydra_get_stats_parameter(sub, g_hydra_data_number, &data);
    if (ret != MODEM_API_SUCCESS) {
        LOG(1, "Fail to get data fail, number = %d, ret = %d, sub = %d, id = %d", g_hydra_data_number, ret, sub, id);
        return 1;
    }
    if (!judge_answer(__func__, &data, sub, id)) return 1;

    g_hydra_data_len = data.ids[0].value_len;
    memcpy(g_hydra_data_buf, data.ids[0].value, g_hydra_data_len);
    g_hydra_data_left = static_cast<int32_t>(g_hydra_data_len);
    g_hydra_data_id = id;
    g_pK_DATA_CNT = 0;
    return 0;
}

// ---- Unpacking a sample ----

/* Takes the next field off the sample, whatever its alignment. Reports under the view's name. */
static bool unpack_field(const char *name, const hydra_field *field, void *record)
{
    const int32_t size = static_cast<int32_t>(field->size);
    if (g_hydra_data_left < size) {
        LOG_FROM(name, 1, "g_hydra_data_left(%d) is not enough for %s, id(0x%x)", g_hydra_data_left, field->name,
                 g_hydra_data_id);
        return false;
    }
    if (g_pK_DATA_CNT < 0) {
        // The message shows what is left in the place of the count: meant to stay so.
        LOG_FROM(name, 1, "g_pK_DATA_CNT(%d) is can not < 0 for %s, id(0x%x)", g_hydra_data_left, field->name,
                 g_hydra_data_id);
        return false;
    }
    memcpy(static_cast<uint8_t *>(record) + field->offset, g_hydra_data_buf + g_pK_DATA_CNT, field->size);
    g_pK_DATA_CNT += size;
    g_hydra_data_left -= size;
    return true;
}

/* Which trace a view begins with: the general views tell the parameter that they were given. */
enum view_trace { TRACES_SUB, TRACES_SUB_AND_ID };

/* A view's fetch and its fields; with the lock held. */
static int32_t read_sample(const char *name, uint32_t sub, uint32_t id, const hydra_form *form, void *record)
{
    if (record == nullptr) {
        LOG_FROM(name, 1, "ptr_hydra_data is NULL");
        return 0;
    }
    if (modem_hydra_data_get(sub, id) != 0) {
        LOG_FROM(name, 1, "modem_hydra_data_get failed");
        return 0;
    }
    memset(record, 0, form->record_size);
    for (uint32_t i = 0; i < form->field_count; ++i)
        if (!unpack_field(name, &form->fields[i], record)) return 0;
    return 1;
}

static int32_t view(const char *name, view_trace trace, uint32_t sub, uint32_t id, const hydra_form *form, void *record)
{
    const uint32_t shown = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(record));

    LOG_FROM(name, 4, "function entry ------------->");
    pthread_mutex_lock(&g_hydra_data_mutex);
    if (trace == TRACES_SUB_AND_ID) {
        LOG_FROM(name, 4, "sub = %d, id = %d, ptr_hydra_data = 0x%x", sub, id, shown);
    } else {
        LOG_FROM(name, 4, "sub = %d, ptr_hydra_data = 0x%x", sub, shown);
    }
    const int32_t ret = read_sample(name, sub, id, form, record);
    pthread_mutex_unlock(&g_hydra_data_mutex);
    LOG_FROM(name, 4, "function exit, ret = %d <-------------", ret);
    return ret;
}

/* The frame under the name of the view that it stands in. */
#define HYDRA_VIEW(trace, sub, id, form, record) view(__func__, trace, sub, id, &(form), record)

// ---- LTE serving measurement ----

int32_t modem_hydra_lte_srv_meas_info_get(uint32_t sub, uint32_t id, modem_hydra_lte_srv_meas_info *record)
{
    return HYDRA_VIEW(TRACES_SUB_AND_ID, sub, id, g_lte_srv_meas_info_form, record);
}

int32_t modem_hydra_lte_srv_meas_info_get_for_pcc(uint32_t sub, modem_hydra_lte_srv_meas_info *record)
{
    return modem_hydra_lte_srv_meas_info_get(sub, HYDRA_LTE_SRV_MEAS_PCC, record);
}

int32_t modem_hydra_lte_srv_meas_info_get_for_scc1(uint32_t sub, modem_hydra_lte_srv_meas_info *record)
{
    return modem_hydra_lte_srv_meas_info_get(sub, HYDRA_LTE_SRV_MEAS_SCC1, record);
}

int32_t modem_hydra_lte_srv_meas_info_get_for_scc2(uint32_t sub, modem_hydra_lte_srv_meas_info *record)
{
    return modem_hydra_lte_srv_meas_info_get(sub, HYDRA_LTE_SRV_MEAS_SCC2, record);
}

int32_t modem_hydra_lte_srv_meas_info_get_for_scc3(uint32_t sub, modem_hydra_lte_srv_meas_info *record)
{
    return modem_hydra_lte_srv_meas_info_get(sub, HYDRA_LTE_SRV_MEAS_SCC3, record);
}

int32_t modem_hydra_lte_srv_meas_info_get_for_scc4(uint32_t sub, modem_hydra_lte_srv_meas_info *record)
{
    return modem_hydra_lte_srv_meas_info_get(sub, HYDRA_LTE_SRV_MEAS_SCC4, record);
}

int32_t modem_hydra_lte_srv_meas_info_get_for_scc5(uint32_t sub, modem_hydra_lte_srv_meas_info *record)
{
    return modem_hydra_lte_srv_meas_info_get(sub, HYDRA_LTE_SRV_MEAS_SCC5, record);
}

int32_t modem_hydra_lte_srv_meas_info_get_for_scc6(uint32_t sub, modem_hydra_lte_srv_meas_info *record)
{
    return modem_hydra_lte_srv_meas_info_get(sub, HYDRA_LTE_SRV_MEAS_SCC6, record);
}

// ---- NR5G views ----

int32_t modem_hydra_nr5g_srv_meas_info_get(uint32_t sub, uint32_t id, modem_hydra_nr5g_srv_meas_info *record)
{
    return HYDRA_VIEW(TRACES_SUB_AND_ID, sub, id, g_nr5g_srv_meas_info_form, record);
}

int32_t modem_hydra_nr5g_srv_meas_info_get_for_pcc(uint32_t sub, modem_hydra_nr5g_srv_meas_info *record)
{
    return modem_hydra_nr5g_srv_meas_info_get(sub, HYDRA_NR5G_SRV_MEAS_PCC, record);
}

int32_t modem_hydra_nr5g_srv_meas_info_get_for_scc1(uint32_t sub, modem_hydra_nr5g_srv_meas_info *record)
{
    return modem_hydra_nr5g_srv_meas_info_get(sub, HYDRA_NR5G_SRV_MEAS_SCC1, record);
}

int32_t modem_hydra_nr5g_srv_meas_info_get_for_scc2(uint32_t sub, modem_hydra_nr5g_srv_meas_info *record)
{
    return modem_hydra_nr5g_srv_meas_info_get(sub, HYDRA_NR5G_SRV_MEAS_SCC2, record);
}

int32_t modem_hydra_nr5g_ll1_fw_rx_control_agc_get(uint32_t sub, modem_hydra_nr5g_ll1_fw_rx_control_agc *record)
{
    return HYDRA_VIEW(TRACES_SUB, sub, HYDRA_NR5G_RX_AGC, g_nr5g_ll1_fw_rx_control_agc_form, record);
}

int32_t modem_hydra_nr5g_ll1_fw_serving_ftl_get(uint32_t sub, modem_hydra_nr5g_ll1_fw_serving_ftl *record)
{
    return HYDRA_VIEW(TRACES_SUB, sub, HYDRA_NR5G_SERVING_SNR, g_nr5g_ll1_fw_serving_ftl_form, record);
}

int32_t modem_hydra_nr5g_ml1_antenna_switch_diversity_get(uint32_t                                       sub,
                                                          modem_hydra_nr5g_ml1_antenna_switch_diversity *record)
{
    return HYDRA_VIEW(TRACES_SUB, sub, HYDRA_NR5G_ANT_SWITCH, g_nr5g_ml1_antenna_switch_diversity_form, record);
}

// ---- WCDMA, GSM, antennas ----

int32_t modem_hydra_wcdma_pn_search_edition2_get(uint32_t sub, modem_hydra_wcdma_pn_search_edition2 *record)
{
    return HYDRA_VIEW(TRACES_SUB, sub, HYDRA_WCDMA_RX_AGC, g_wcdma_pn_search_edition2_form, record);
}

int32_t modem_hydra_gsm_l1_rx_diversity_metrics_get(uint32_t sub, modem_hydra_gsm_l1_rx_diversity_metrics *record)
{
    return HYDRA_VIEW(TRACES_SUB, sub, HYDRA_GSM_RX_DIVERSITY, g_gsm_l1_rx_diversity_metrics_form, record);
}

int32_t modem_hydra_mcs_trm_asdiv_get(uint32_t sub, modem_hydra_mcs_trm_asdiv *record)
{
    return HYDRA_VIEW(TRACES_SUB, sub, HYDRA_ASDIV, g_mcs_trm_asdiv_form, record);
}

// ---- Transmit power ----

int32_t modem_hydra_lte_pusch_power_info_get(uint32_t sub, modem_hydra_lte_pusch_power_info *record)
{
    return HYDRA_VIEW(TRACES_SUB, sub, HYDRA_LTE_PUSCH_POWER, g_lte_pusch_power_info_form, record);
}

int32_t modem_hydra_nr5g_mac_ul_phy_ch_power_info_get(uint32_t sub, modem_hydra_nr5g_mac_ul_phy_ch_power_info *record)
{
    return HYDRA_VIEW(TRACES_SUB, sub, HYDRA_NR5G_UL_POWER, g_nr5g_mac_ul_phy_ch_power_info_form, record);
}

/* The fetch of the system mode and what it says; with the lock held. */
static uint32_t read_rat(const char *name, uint32_t sub)
{
    modem_hydra_sys_mode mode = {};
    if (modem_hydra_data_get(sub, HYDRA_SYS_MODE) != 0) {
        LOG_FROM(name, 1, "modem_hydra_data_get failed");
        return HYDRA_RAT_NONE;
    }
    const hydra_field *const fields = g_sys_mode_form.fields;
    if (!unpack_field(name, &fields[0], &mode) || mode.stack_max == 0) return HYDRA_RAT_NONE;
    return unpack_field(name, &fields[1], &mode) ? mode.rat : HYDRA_RAT_NONE;
}

uint32_t modem_sys_mode_get(uint32_t sub)
{
    LOG(4, "function entry ------------->");
    pthread_mutex_lock(&g_hydra_data_mutex);
    LOG(4, "sub = %d", sub);
    const uint32_t rat = read_rat(__func__, sub);
    pthread_mutex_unlock(&g_hydra_data_mutex);
    LOG(4, "function exit, rat = %d <-------------", rat);
    return rat;
}

/* Cuts off the fraction, toward zero. What doesn't fit becomes the nearest number that does, and what is no number
 * becomes 0, as the target's own instruction has it. */
static int32_t whole_number(float value)
{
    if (value != value) return 0;
    if (value >= 2147483648.0f) return INT32_MAX;
    if (value <= -2147483648.0f) return INT32_MIN;
    return static_cast<int32_t>(value);
}

int32_t modem_tx_power_get_by_sub(uint32_t sub)
{
    const uint32_t rat = modem_sys_mode_get(sub);
    LOG(4, "sub = %d, rat = %d", sub, rat);
    int32_t tx_power = HYDRA_TX_POWER_NONE;
    if (rat == HYDRA_RAT_NR5G) {
        modem_hydra_nr5g_mac_ul_phy_ch_power_info info = {};
        if (modem_hydra_nr5g_mac_ul_phy_ch_power_info_get(sub, &info) == 1) {
            tx_power = whole_number(info.tx_power_pusch);
        } else {
            LOG(1, "modem_hydra_nr5g_mac_ul_phy_ch_power_info_get faile");
        }
    } else if (rat == HYDRA_RAT_LTE) {
        modem_hydra_lte_pusch_power_info info = {};
        if (modem_hydra_lte_pusch_power_info_get(sub, &info) == 1) {
            tx_power = info.pusch_tx_power;
        } else {
            LOG(1, "modem_hydra_lte_pusch_power_info_get faile");
        }
    } else {
        LOG(1, "rat(%d) is invalid", rat);
    }
    LOG(4, "function exit, tx_power = %d <-------------", tx_power);
    return tx_power;
}

int32_t modem_tx_power_get_for_dds_sub()
{
    const int32_t dds_sub = velmor_get_default_data_sub();
    const int32_t tx_power = modem_tx_power_get_by_sub(static_cast<uint32_t>(dds_sub));
    LOG(4, "function exit, dds_sub = %d, tx_power = %d <-------------", dds_sub, tx_power);
    return tx_power;
}

int32_t modem_tx_power_get_for_max_sub()
{
    const int32_t tx_power0 = modem_tx_power_get_by_sub(0);
    const int32_t tx_power1 = modem_tx_power_get_by_sub(1);
    int32_t       tx_power = tx_power0;
    if (tx_power0 == HYDRA_TX_POWER_NONE || (tx_power1 > tx_power0 && tx_power1 != HYDRA_TX_POWER_NONE))
        tx_power = tx_power1;
    LOG(4, "function exit, tx_power0 = %d, tx_power1 = %d, tx_power = %d <-------------", tx_power0, tx_power1,
        tx_power);
    return tx_power;
}
