/* The client of the modem's Persistent Device Configuration service (PDC).
 *
 * Every request is answered twice: by a response that only acknowledges it, and later by an indication with the outcome.
 * The client makes one blocking call of the two. What joins them is one record, g_pdc_info_ex, with a block for each kind
 * of request; a requester sleeps in its block until the indication, or a timer of 5 seconds, has put a result there.
 *
 * The engine serves the radio daemon too: the shell sends four of the eleven kinds of request, the others' requesters are
 * the daemon's. They take the mutex to set handling and holders, send, and wait, with the operations below. */
#ifndef PDC_UTILS_H
#define PDC_UTILS_H

#include <atomic>
#include <condition_variable>

#include <signal.h>
#include <stdint.h>

#include "qmi_client.h"
#include "qti_shared_mutex.h"
#include "services/pdc_v01.h"

/* Results of requests. */
enum : int32_t {
    PDC_SUCCESS = 0,
    PDC_ERROR = -1,              // failure, and the result of a time-out
    PDC_BUSY = -2,               // a request of this type is under way; returned, never stored
    PDC_FRAME_RESET = -3,        // load: the modem wants the frames again
    PDC_INVALID_CONFIG_ID = -4,  // load: refused by the modem; select: longer than PDC_CONFIG_ID_MAX
    PDC_NO_MEMORY = -5,          // load: no room in the modem's EFS
    PDC_NOT_AVAILABLE = -6,      // list: nothing in the modem; get_sel: no active configuration
};

/* Kinds of request: each has a block in the record and a timer slot in it. */
enum : int {
    PDC_REQ_LIST = 1,
    PDC_REQ_LOAD = 2,
    PDC_REQ_INFO = 3,
    PDC_REQ_DEACT = 4,
    PDC_REQ_DEL = 5,
    PDC_REQ_GET_SEL = 6,
    PDC_REQ_SEL_CONFIG = 7,
    PDC_REQ_ACT_CONFIG = 8,
    PDC_REQ_SET_FEATURE = 9,
    PDC_REQ_DEFAULT_INFO = 10,
    PDC_REQ_VALIDATE = 11,
};

// ---- What callers hold ----

struct pdc_config_pdc_info {  // a configuration's id
    uint32_t config_id_len;
    uint8_t  config_id[PDC_CONFIG_ID_MAX];
};

struct pdc_config_list_node {  // a listed configuration; whoever asked for the list frees it
    uint32_t              config_id_len;
    uint8_t               config_id[PDC_CONFIG_ID_MAX];
    pdc_config_list_node *next;
};

struct pdc_config_desc_info {  // what the modem tells of a configuration
    uint8_t  config_desc_valid;
    uint32_t config_desc_len;
    uint8_t  config_desc[PDC_CONFIG_DESC_MAX];  // not terminated
    uint8_t  config_version_valid;
    uint32_t config_version;
    uint8_t  second_version_valid;  // this and the next: of configuration information alone
    uint32_t second_version;
};

// ---- The record ----

/* A block's condition variable. Like the mutex it stays usable at the end of the process, when a requester may still sleep
 * on it or a late timer notify it: its destructor leaves it alone. The C library's would wait for the sleeper, for good. */
union pdc_cond {
    std::condition_variable_any any;

    pdc_cond() : any() {}
    ~pdc_cond() {}
};

/* All state of the engine. Its mutex guards it. The words are atomic for the places that go without: a start of the client
 * clears them all, and a failed get_sel gives its handling flag back.
 *
 * In a block: handling, a request has been accepted and isn't finished; waiting, its requester sleeps on cond; done, an
 * indication or a time-out has put the result there. timer_id is 0 while no timer runs. */
struct pdc_info_s_type {
    qtimutex::QtiSharedMutex mutex;

    struct {
        pdc_cond                             cond;
        std::atomic<int32_t>                 is_pdc_list_handling;
        std::atomic<int32_t>                 is_pdc_list_waiting;
        std::atomic<int32_t>                 is_pdc_list_done;
        std::atomic<int32_t>                 result;
        std::atomic<pdc_config_list_node **> config_list_holder;  // the caller's list head
        std::atomic<uint32_t *>              num_of_configs;      // the caller's count
        std::atomic<uint32_t>                pdc_list_ind_token;  // sent in follow-up requests
        std::atomic<uint32_t>                timer_id;
    } pdc_list;

    struct {
        pdc_cond              cond;
        std::atomic<int32_t>  is_pdc_load_handling;
        std::atomic<int32_t>  is_pdc_load_waiting;
        std::atomic<int32_t>  is_pdc_load_done;
        std::atomic<int32_t>  result;
        std::atomic<uint32_t> received_size;   // bytes, as the modem told them last
        std::atomic<uint32_t> remaining_size;  // bytes
        std::atomic<uint32_t> timer_id;
    } pdc_load;

    struct {
        pdc_cond                            cond;
        std::atomic<int32_t>                is_pdc_info_handling;
        std::atomic<int32_t>                is_pdc_info_waiting;
        std::atomic<int32_t>                is_pdc_info_done;
        std::atomic<int32_t>                result;
        std::atomic<pdc_config_desc_info *> config_info_holder;  // the caller's
        std::atomic<uint32_t>               timer_id;
    } pdc_info;

    struct {
        pdc_cond              cond;
        std::atomic<int32_t>  is_pdc_deact_handling;
        std::atomic<int32_t>  is_pdc_deact_waiting;
        std::atomic<int32_t>  is_pdc_deact_done;
        std::atomic<int32_t>  result;
        std::atomic<uint32_t> timer_id;
    } pdc_deact;

    struct {
        pdc_cond              cond;
        std::atomic<int32_t>  is_pdc_del_handling;
        std::atomic<int32_t>  is_pdc_del_waiting;
        std::atomic<int32_t>  is_pdc_del_done;
        std::atomic<int32_t>  result;
        std::atomic<uint32_t> timer_id;
    } pdc_del;

    struct {
        pdc_cond                           cond;
        std::atomic<int32_t>               is_get_sel_handling;
        std::atomic<int32_t>               is_get_sel_waiting;
        std::atomic<int32_t>               is_get_sel_done;
        std::atomic<int32_t>               result;
        std::atomic<pdc_config_pdc_info *> get_sel_holder;  // the caller's
        std::atomic<uint32_t>              timer_id;
    } get_sel;

    struct {
        pdc_cond              cond;
        std::atomic<int32_t>  is_sel_config_handling;
        std::atomic<int32_t>  is_sel_config_waiting;
        std::atomic<int32_t>  is_sel_config_done;
        std::atomic<int32_t>  result;
        std::atomic<uint32_t> timer_id;
    } sel_config;

    struct {
        pdc_cond              cond;
        std::atomic<int32_t>  is_act_config_handling;
        std::atomic<int32_t>  is_act_config_waiting;
        std::atomic<int32_t>  is_act_config_done;
        std::atomic<int32_t>  result;
        std::atomic<uint32_t> timer_id;
    } act_config;

    struct {
        pdc_cond              cond;
        std::atomic<int32_t>  is_set_feature_handling;
        std::atomic<int32_t>  is_set_feature_waiting;
        std::atomic<int32_t>  is_set_feature_done;
        std::atomic<int32_t>  result;
        std::atomic<uint32_t> timer_id;
    } set_feature;

    struct {
        pdc_cond                            cond;
        std::atomic<int32_t>                is_default_info_handling;
        std::atomic<int32_t>                is_default_info_waiting;
        std::atomic<int32_t>                is_default_info_done;
        std::atomic<int32_t>                result;
        std::atomic<pdc_config_desc_info *> config_info;  // the caller's
        std::atomic<uint32_t>               timer_id;
    } default_info;

    struct {  // nobody sleeps here: frames go to a file
        std::atomic<int32_t>  is_pdc_validate_waiting;
        std::atomic<uint32_t> timer_id;
        std::atomic<int32_t>  dump_fd{-1};                  // -1 when closed
        char                  pdc_validate_dump_path[256];  // untouched until the report has been parsed
    } pdc_validate_config_req;

    struct {
        pdc_cond             cond;
        std::atomic<int32_t> is_pdc_test_handling;  // the three are only printed
        std::atomic<int32_t> is_pdc_test_waiting;
        std::atomic<int32_t> is_pdc_test_done;
    } pdc_test;
};

extern pdc_info_s_type g_pdc_info_ex;  // built before main

// ---- Request timers: 5 seconds for every kind ----

/* Clears flags, results, holders, the list's token and timer slots of all blocks. Takes no lock: what sleeps meanwhile is lost. */
void qmi_pdc_init_pdc_info();

/* Start the timer of a kind of request, in the place of one that runs; stop it. The caller holds the mutex. */
void qmi_pdc_request_timer_start(int req_type);
void qmi_pdc_request_timer_stop(int req_type);

/* What a timer calls: frees every sleeper, whatever kind the timer was started for. */
void qmi_pdc_request_timer_timeout_proc(union sigval value);

/* A timer slot by its kind, 1 to 11, else null; a slot and a kind by a timer's number, among the kinds 1 to 10: null and 1
 * when there is none. The number 0 finds the first idle slot. */
std::atomic<uint32_t> *qmi_pdc_request_timer_get_ptr_by_req_type(int req_type);
std::atomic<uint32_t> *qmi_pdc_request_timer_get_ptr_by_timer_id(uint32_t timer_id);
int                    qmi_pdc_request_timer_get_req_type_by_timer_id(uint32_t timer_id);

// ---- The client ----

/* Opens the service, with 20 attempts 5 seconds apart, and clears the record. Result: 0 or PDC_ERROR. One at a time. */
int32_t pdc_init_ex();

/* Closes it, where it is open. Waits for an indication that is being handled. */
void pdc_clean_ex();

/* Steps of a requester, for the kinds 1 to 10.
 *   begin    PDC_SUCCESS, or PDC_BUSY when a request of the kind is under way
 *   send     one request: 10 seconds for its acknowledgement; what qmi_client_send_msg_sync returns
 *   wait     sleeps until the block has a result, for the time of its timer, and gives the block back: the result.
 *            One wait, whose wake-up nothing checks again
 *   deliver  the other side: stores the result and wakes the requester. The caller holds the mutex */
int32_t pdc_request_begin(int req_type);
int32_t pdc_request_send(uint32_t msg_id, const void *req, uint32_t req_size, pdc_resp_v01 *resp);
int32_t pdc_request_wait(int req_type);
void    pdc_request_deliver(int req_type, int32_t result);

/* Reads the active configuration of a subscription.
 *   info  receives the id. Stays the holder after a failed send, so that a late indication may still write there: it has to
 *         outlive the client
 * Results: those of requests; PDC_NOT_AVAILABLE when none is active. This one and those below: any thread but a callback's. */
int32_t pdc_get_current_config_ex(pdc_config_pdc_info *info, pdc_config_type_enum_v01 config_type, uint32_t sub);

/* Selects a configuration. After too long an id or a failed send the kind stays busy until the client is opened again. */
int32_t pdc_select_config_ex(const pdc_config_pdc_info *info, pdc_config_type_enum_v01 config_type, uint32_t sub);

/* Deactivates the configuration of a subscription, which comes first here. After a failed send the kind stays busy. */
int32_t pdc_deactivate_config_ex(uint32_t sub, pdc_config_type_enum_v01 config_type);

/* Activates what is selected. The types 0 and 1 are done with the acknowledgement, whatever the modem makes of it. The
 * second form: activation type 0, `sub` for subscription and slot. */
int32_t pdc_activate_config_ex(pdc_config_type_enum_v01 config_type, pdc_activation_type_enum_v01 activation_type,
                               uint32_t sub_id, uint32_t slot_id);
int32_t pdc_activate_config_ex2(pdc_config_type_enum_v01 config_type, uint32_t sub);

// ---- Indications ----

/* What the client library calls on its thread with each indication. */
void qmi_pdc_unsol_ind_cb_ex(qmi_client_handle client, uint32_t msg_id, void *ind_buf, uint32_t ind_buf_len,
                             void *ind_cb_data);

/* False while persist.radio.all_pdc_no_rsp_count is 1 or more: the modem then counts as silent. */
bool velmor_mbn_debug_all_pdc_no_rsp_count_check();

/* Handlers: an indication's structure, null for none, and its bytes. */
void qmi_pdc_get_selected_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);
void qmi_pdc_select_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);
void qmi_pdc_list_configs_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);
void qmi_pdc_delete_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);
void qmi_pdc_load_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);
void qmi_pdc_activate_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);
void qmi_pdc_get_config_info_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);
void velmor_mbn_get_default_config_info_ind_hdlr(void *ind_data_ptr, uint32_t ind_data_len);
void qmi_pdc_deactivate_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);
void qmi_pdc_set_feature_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len);

/* What a timer calls to ask for the next chunk of a list. */
void qmi_pdc_list_configs_follow_up_request_ex(union sigval value);

#endif
