/* What is done with the modem's configurations: refresh and reactivate, the report of a validation, and the test of the
 * engine's wait and notify. */
#ifndef VELMOR_MBN_UTILS_H
#define VELMOR_MBN_UTILS_H

#include <signal.h>
#include <stdint.h>

#include <libxml/tree.h>

#include "pdc_utils.h"

// ---- Refresh and reactivate ----

constexpr uint32_t MBN_SUB_MASK_ALL = 3;  // bit 0: subscription 0, bit 1: subscription 1

/* Opens the PDC client, once: later calls do nothing, unless `force_init` has it closed and opened anew, with the record
 * cleared. Result: 0 when it is open. 100 seconds when the service is absent. One caller at a time, no lock. */
int32_t velmor_mbn_init(uint8_t force_init);

/* Has the modem apply once more the configuration that it has, on the subscriptions of the mask.
 *   sub_mask  1 to MBN_SUB_MASK_ALL
 *   mbn_type  a configuration type, 0 or 1
 * Result: that of the last activation; 0 also for bad arguments, which only the log tells. */
int32_t velmor_refresh_mbn(uint32_t sub_mask, uint32_t mbn_type);
int32_t velmor_refresh_sw_mbn(uint32_t sub_mask);  // of type 1

/* Takes the configuration of each subscription of the mask off the modem and puts the same one back.
 * Result: that of the last step that counts; -1 for bad arguments and when the client can't be opened. */
int32_t velmor_reactivate_mbn(uint32_t sub_mask, uint32_t mbn_type);
int32_t velmor_reactivate_sw_mbn(uint32_t sub_mask);

/* Deactivates the configuration of a subscription, and has the modem write its NV whether that went well or not. */
void velmor_mbn_deactivate_config(uint32_t sub, pdc_config_type_enum_v01 config_type);

// ---- The report of a validation ----
//
// The modem streams it as an XML document. Its frames go to a file, the finished file is parsed on a timer's thread, and
// each item whose difference matters is handed to a listener as a report message: a header, the id, and the values that
// the configuration and the device have.

struct mbn_report_head {  // in the machine's byte order; id, reference and device value follow, without terminators
    int32_t
        result;  // 0 for an entry; in the closing message 0, 2 for a fault of the document, -1 for one of the stream
    int32_t  index;  // of the entry, from 0; -1: the closing message, with all lengths 0
    uint32_t id_len;
    uint32_t ref_len;
    uint32_t dev_len;
};

constexpr int32_t MBN_REPORT_FAULT = 2;
constexpr int32_t MBN_APN_NAME_SIZE = 128;  // bytes, terminator included

/* Listeners, set before a validation starts: for the path of a finished file, on the client library's thread and under the
 * record's mutex; for report messages, on a timer's thread (the closing message of a broken stream: as the other one). */
extern void (*g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb)(const char *path, int32_t path_len);
extern void (*g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb)(const void *message, int32_t message_len);

/* Handler of the frames. */
void qcril_qmi_pdc_validate_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);

/* What a timer calls to have the finished file parsed. */
void qcril_qmi_pdc_parse_diff_result(union sigval value);

/* Walks a report and sends its messages, the closing one in every case. Result: 0, or MBN_REPORT_FAULT. */
int32_t parse_mbn_diff_result(const char *filename);

/* The values of an item, null where there is none; the caller frees them with xmlFree. Result: 0 or MBN_REPORT_FAULT. */
int32_t get_nv_detail(xmlDoc *doc, xmlNode *node, unsigned char **ref_val, unsigned char **dev_val);

/* Whether an item's difference matters. */
bool velmor_need_report(const unsigned char *id, const unsigned char *ref_val, const unsigned char *dev_val);

/* The APN name of a profile's value, into a zeroed room of MBN_APN_NAME_SIZE; empty when there is none. */
void velmor_get_profile_apn_name(const char *ref_val, char *apn_name);

/* 1 when two profiles are the same behind their headers, else 0. */
int32_t velmor_compare_profile_content(const char *ref_val, const char *dev_val);

/* 1 when a value has VoLTE enabled, else 0. */
int32_t velmor_get_volte_enable_value(const char *dev_val);

/* A value's text, decimal numbers each with a blank behind it, to bytes. A number without its blank is dropped, two blanks
 * in a row make a 0.
 *   bytes  receives a block that the caller frees with free
 * Result: bytes there, or -1. */
int32_t velmor_convert_nv_string_to_bytes(const char *string_val, char **bytes);

/* Sends one report message. Without an id, or with neither value, it is the closing one. */
void qcril_qmi_mbn_diff_send_unsol_msg(int32_t result, int32_t index, const unsigned char *id,
                                       const unsigned char *ref_val, const unsigned char *dev_val);

// ---- The test of wait and notify ----

/* A notify that nobody waits for is lost, and a later one frees the waiter: for flag 1. Lasts about 1010 seconds. */
void velmor_pdc_test_wait_notify(int32_t flag);
void velmor_qcril_start_pdc_test_thread(int32_t flag);

/* Its thread, and what its two sides do. */
void *velmor_qcril_pdc_test_thread_proc(void *params);
void  velmor_pdc_test_req(int32_t flag);
void  velmor_pdc_test_rsp(int32_t flag);

#endif
