/* Refresh and reactivate, the report of a validation, and the test of wait and notify. The first run on the caller's
 * thread; frames come on the client library's, reports are parsed on a timer's. */
#include "velmor_mbn_utils.h"

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#include <libxml/parser.h>

#include "velmor_extend_nvefs.h"
#include "velmor_utils_cmn.h"
#include "velmor_utils_timer.h"

// ---- Opening the client, once ----

static int32_t g_velmor_pdc_init_status = -1;  // of the last opening; the first use always opens

int32_t velmor_mbn_init(uint8_t force_init)
{
    LOG(4, "function entry ------------->");
    if (g_velmor_pdc_init_status == 0 && force_init == 0) {
        LOG(4, "pdc init have been done, do nothing");
    } else {
        pdc_clean_ex();
        LOG(4, "start velmor pdc init, g_velmor_pdc_init_status = %d, force_init = %d", g_velmor_pdc_init_status,
            force_init);
        g_velmor_pdc_init_status = pdc_init_ex();
        if (g_velmor_pdc_init_status != 0) {
            LOG(1, "pdc init failed, g_velmor_pdc_init_status = %d", g_velmor_pdc_init_status);
        }
    }
    LOG(4, "function exit <-------------");
    return g_velmor_pdc_init_status;
}

// ---- What both operations ask of their arguments ----

static bool is_mbn_type(uint32_t mbn_type)
{
    return mbn_type == PDC_CONFIG_TYPE_MODEM_PLATFORM_V01 || mbn_type == PDC_CONFIG_TYPE_MODEM_SW_V01;
}

/* Reports under the operation's name. */
static bool check_arguments(const char *name, uint32_t sub_mask, uint32_t mbn_type)
{
    LOG_FROM(name, 4, "mbn_type %d", mbn_type);
    if (!is_mbn_type(mbn_type)) {
        LOG_FROM(name, 1, "config_type is invalid");
        return false;
    }
    LOG_FROM(name, 4, "sub_mask %d", sub_mask);
    if (sub_mask == 0 || sub_mask > MBN_SUB_MASK_ALL) {
        LOG_FROM(name, 1, "sub_mask is out of range");
        return false;
    }
    return true;
}

// ---- Refresh ----

/* Reports under the name of the operation. */
static int32_t refresh_subs(const char *name, uint32_t sub_mask, pdc_config_type_enum_v01 config_type)
{
    int32_t ret = velmor_mbn_init(0);
    if (ret != 0) {
        LOG_FROM(name, 1, "pdc init failed, do nothing");
        return ret;
    }
    for (uint32_t sub = 0; sub <= 1; ++sub) {
        if ((sub_mask & 1U << sub) == 0) continue;
        ret = pdc_activate_config_ex(config_type, PDC_ACTIVATION_REFRESH_V01, sub, sub);
        LOG_FROM(name, 4, "SUB_%d pdc_activate_config_ex ret %d", sub, ret);
    }
    return ret;
}

int32_t velmor_refresh_mbn(uint32_t sub_mask, uint32_t mbn_type)
{
    LOG(4, "function entry ------------->");
    int32_t ret = 0;  // for bad arguments too
    if (check_arguments(__func__, sub_mask, mbn_type))
        ret = refresh_subs(__func__, sub_mask, static_cast<pdc_config_type_enum_v01>(mbn_type));
    LOG(4, "function exit <-------------");
    return ret;
}

int32_t velmor_refresh_sw_mbn(uint32_t sub_mask)
{
    LOG(4, "function entry ------------->");
    const int32_t ret = velmor_refresh_mbn(sub_mask, PDC_CONFIG_TYPE_MODEM_SW_V01);
    LOG(4, "function exit <-------------");
    return ret;
}

// ---- Reactivate ----

void velmor_mbn_deactivate_config(uint32_t sub, pdc_config_type_enum_v01 config_type)
{
    LOG(4, "function entry ------------->");
    if (sub > 1) {
        LOG(4, "sub is invalid, sub: %d", sub);
    } else if (!is_mbn_type(config_type)) {
        LOG(4, "config_type is invalid, config_type: %d", config_type);
    } else {
        const int32_t ret_pdc = pdc_deactivate_config_ex(sub, config_type);
        const int32_t ret_sync = velmor_nvefs_sync();
        LOG(4, "pdc_deactivate_config_ex, ret_pdc: %d, ret_sync: %d, sub: %d, config_type: %d", ret_pdc, ret_sync, sub,
            config_type);
    }
    LOG(4, "function exit <-------------");
}

/* Reports under the name of the operation. */
static int32_t reactivate_subs(const char *name, uint32_t sub_mask, pdc_config_type_enum_v01 config_type)
{
    // Not on the stack: after a failed send an indication that comes late still finds it.
    static pdc_config_pdc_info holder;

    if (velmor_mbn_init(1) != 0) {
        LOG_FROM(name, 1, "pdc init failed, do nothing");
        return PDC_ERROR;
    }
    int32_t ret_val = PDC_ERROR;
    for (uint32_t sub = 0; sub <= 1; ++sub) {
        if ((sub_mask & 1U << sub) == 0) continue;
        holder = {};
        ret_val = pdc_get_current_config_ex(&holder, config_type, sub);
        LOG_FROM(name, 4, "SUB_%d pdc_get_current_config_ex ret_val %d", sub, ret_val);
        if (ret_val != 0) {
            LOG_FROM(name, 1, "SUB_%d pdc_get_current_config_ex fail", sub);
            return ret_val;
        }
        velmor_mbn_deactivate_config(sub, config_type);  // whatever comes of it
        ret_val = pdc_select_config_ex(&holder, config_type, sub);
        LOG_FROM(name, 4, "SUB_%d pdc_select_config_ex ret_val %d", sub, ret_val);
        ret_val = pdc_activate_config_ex2(config_type, sub);
        LOG_FROM(name, 4, "SUB_%d pdc_activate_config_ex ret_val %d", sub, ret_val);
    }
    return ret_val;
}

int32_t velmor_reactivate_mbn(uint32_t sub_mask, uint32_t mbn_type)
{
    LOG(4, "function entry ------------->");
    int32_t ret_val = PDC_ERROR;
    if (check_arguments(__func__, sub_mask, mbn_type))
        ret_val = reactivate_subs(__func__, sub_mask, static_cast<pdc_config_type_enum_v01>(mbn_type));
    LOG(4, "function exit <-------------");
    return ret_val;
}

int32_t velmor_reactivate_sw_mbn(uint32_t sub_mask)
{
    LOG(4, "function entry ------------->");
    const int32_t ret_val = velmor_reactivate_mbn(sub_mask, PDC_CONFIG_TYPE_MODEM_SW_V01);
    LOG(4, "function exit <-------------");
    return ret_val;
}

// ---- Report: its frames go to a file ----

void (*g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb)(const char *path, int32_t path_len);
void (*g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb)(const void *message, int32_t message_len);

static int32_t              pdc_validate_frame_count;  // written so far, on after a time-out; under the record's mutex
static std::atomic<int32_t> pdc_diff_send_count;       // entries handed on since the last closing message

static void stop_validation()
{
    qmi_pdc_request_timer_stop(PDC_REQ_VALIDATE);
    g_pdc_info_ex.pdc_validate_config_req.is_pdc_validate_waiting = 0;
}

static void close_dump()
{
    auto &validate = g_pdc_info_ex.pdc_validate_config_req;
    if (validate.dump_fd >= 0) close(validate.dump_fd);
    validate.dump_fd = -1;
    pdc_validate_frame_count = 0;
}

/* Judges a frame and writes it. Result: whether it stands in the file. Reports under the handler's name. */
static bool take_frame(const char *name, const pdc_validate_config_ind_v01 *valid_ind)
{
    auto &validate = g_pdc_info_ex.pdc_validate_config_req;
    if (valid_ind == nullptr) {
        LOG_FROM(name, 1, "NULL pointer for ind_data_ptr");
        return false;
    }
    if (valid_ind->error != 0) {
        LOG_FROM(name, 1, "Error happen, valid_ind->error = %d", valid_ind->error);
        return false;
    }
    const uint32_t frame_len = valid_ind->result_frame_len;
    if (valid_ind->frame_index_valid == 0 || valid_ind->result_frame_valid == 0 || frame_len > PDC_FRAME_MAX) {
        LOG_FROM(name, 1, "Error, frame_index valid: %d, result_frame valid: %d, frame_len: %d",
                 valid_ind->frame_index_valid, valid_ind->result_frame_valid, frame_len);
        return false;
    }
    LOG_FROM(name, 4, "frame_index valid: %d, frame_index: %d, result_frame valid: %d, frame_len: %d, dump_fd: %d",
             valid_ind->frame_index_valid, valid_ind->frame_index, valid_ind->result_frame_valid, frame_len,
             validate.dump_fd.load());
    if (validate.dump_fd < 0) {
        LOG_FROM(name, 1, "invalid dump file: %s, %s", validate.pdc_validate_dump_path,
                 strerror(errno));  // the opener's, if it is still there
        return false;
    }
    ++pdc_validate_frame_count;
    LOG_FROM(name, 4, "Will save dump file(%d): %s, dump_fd = %d", pdc_validate_frame_count,
             validate.pdc_validate_dump_path, validate.dump_fd.load());
    const ssize_t written = TEMP_FAILURE_RETRY(write(validate.dump_fd, valid_ind->result_frame, frame_len));
    if (written != static_cast<ssize_t>(frame_len)) {
        LOG_FROM(name, 1, "Fail to write the diff result to dump file: %s", validate.pdc_validate_dump_path);
        return false;
    }
    return true;
}

/* The last frame stands in the file. Result: whether somebody wants it. Reports under the handler's name. */
static bool finish_dump(const char *name)
{
    const char   *path = g_pdc_info_ex.pdc_validate_config_req.pdc_validate_dump_path;
    const int32_t path_len = static_cast<int32_t>(strlen(path));
    LOG_FROM(name, 1, "validation result is fully dumped to file");
    stop_validation();
    close_dump();
    LOG_FROM(name, 4, "send_broadcast, payload = %s, payload len = %d", path, path_len);
    if (g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb == nullptr) {
        LOG_FROM(name, 1, "g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb is NULL, send_broadcast failed");
        return false;
    }
    g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb(path, path_len);
    velmor_timer_start(qcril_qmi_pdc_parse_diff_result, 0);  // not on this thread, which other indications wait for
    return true;
}

// Holds the mutex to the end, through the listeners.
void qcril_qmi_pdc_validate_config_ind_hdlr_ex(void *ind_data_ptr, uint32_t ind_data_len)
{
    auto       &validate = g_pdc_info_ex.pdc_validate_config_req;
    const auto *valid_ind = static_cast<const pdc_validate_config_ind_v01 *>(ind_data_ptr);

    g_pdc_info_ex.mutex.lock();
    LOG(4, "ind_data_len = %d", ind_data_len);
    bool succeeded = false;
    if (validate.is_pdc_validate_waiting == 0) {
        LOG(1, "ignore this indication, no pdc_validate_config_req");
        printf("ignore this indication, no pdc_validate_config_req\n");
    } else if (take_frame(__func__, valid_ind)) {
        succeeded = valid_ind->frame_index != PDC_LAST_FRAME || finish_dump(__func__);
    }
    if (!succeeded && validate.is_pdc_validate_waiting != 0) {
        LOG(1, "error, validation abort, dump_fd = %d", validate.dump_fd.load());
        stop_validation();
        qcril_qmi_mbn_diff_send_unsol_msg(PDC_ERROR, -1, nullptr, nullptr, nullptr);
        close_dump();
    }
    g_pdc_info_ex.mutex.unlock();
}

// ---- Report: its messages ----

struct report_text {
    const char *text;
    uint32_t    len;  // bytes
};

static report_text text_or(const unsigned char *value, const char *otherwise)
{
    const char *text = value != nullptr ? reinterpret_cast<const char *>(value) : otherwise;
    return {text, static_cast<uint32_t>(strlen(text))};
}

constexpr uint32_t VALUES_LEN_MAX = 6144;  // bytes of both values together
static const char  TOO_LARGE[] = "value too large, not display";

void qcril_qmi_mbn_diff_send_unsol_msg(int32_t result, int32_t index, const unsigned char *id,
                                       const unsigned char *ref_val, const unsigned char *dev_val)
{
    const bool  is_entry = id != nullptr && (ref_val != nullptr || dev_val != nullptr);
    report_text texts[3] = {{"", 0}, {"", 0}, {"", 0}};
    if (is_entry) {
        texts[0] = text_or(id, "");
        texts[1] = text_or(ref_val, " ");
        texts[2] = text_or(dev_val, " ");
        LOG(4, "entry is valid, the total value len is %d", texts[1].len + texts[2].len);
    } else {
        LOG(1, "entry is not valid");  // each closing message says so
    }
    if (texts[1].len + texts[2].len > VALUES_LEN_MAX) {
        texts[1] = texts[2] = {TOO_LARGE, sizeof(TOO_LARGE) - 1};
        LOG(4, "data is too large from item %s, new lenght is %d", texts[0].text, texts[1].len + texts[2].len);
    }

    const uint32_t message_len =
        static_cast<uint32_t>(sizeof(mbn_report_head)) + texts[0].len + texts[1].len + texts[2].len;
    char *message = static_cast<char *>(qcril_malloc_adv(message_len));
    if (message == nullptr) {
        LOG(1, "Failed to allocate memory");
        return;
    }
    const mbn_report_head head = {result, index, texts[0].len, texts[1].len, texts[2].len};
    memcpy(message, &head, sizeof(head));
    char *to = message + sizeof(head);
    for (const report_text &text : texts) {
        memcpy(to, text.text, text.len);
        to += text.len;
    }
    pdc_diff_send_count = is_entry ? pdc_diff_send_count + 1 : 0;

    // As a text the message ends within its header: one of its numbers has a zero byte.
    LOG(4, "send_broadcast[%d], payload = %s, payload len = %d", pdc_diff_send_count.load(), message, message_len);
    if (g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb == nullptr) {
        LOG(1, "g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb is NULL, send_broadcast failed");
        return;  // the message stays behind; meant so
    }
    g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb(message, static_cast<int32_t>(message_len));
    qcril_free_adv(message, __func__, __LINE__);
}

// ---- Report: values ----

constexpr uint32_t PROFILE_HEAD_SIZE = 32;  // bytes before a profile's records
constexpr uint32_t PROFILE_COUNT_AT = 8;    // 32-bit count of records
constexpr uint16_t PROFILE_APN_NAME = 0x1001;

/* The low byte of a token's number as atoi has it, which itself is called only for what isn't all digits: it would cost
 * more than all the rest of the walk. */
static char token_byte(const char *token, size_t len)
{
    char text[8] = {};
    if (len > sizeof(text) - 1) len = sizeof(text) - 1;  // no byte has more digits
    int32_t number = 0;
    for (size_t i = 0; i < len; ++i) {
        if (token[i] < '0' || token[i] > '9') {
            memcpy(text, token, len);
            return static_cast<char>(atoi(text));
        }
        number = 10 * number + (token[i] - '0');
    }
    return static_cast<char>(number);
}

int32_t velmor_convert_nv_string_to_bytes(const char *string_val, char **bytes)
{
    if (string_val == nullptr) {
        LOG(1, "string_val null");
        return -1;
    }
    const size_t string_len = strlen(string_val);
    char        *converted = static_cast<char *>(calloc(1, string_len));
    if (converted == nullptr) {
        LOG(1, "Failed to allocate the memory: %s", strerror(errno));
        return -1;
    }
    int32_t     return_len = 0;
    const char *token = string_val;
    for (const char *c = string_val; *c != '\0'; ++c) {
        if (*c != ' ') continue;
        converted[return_len++] = token_byte(token, static_cast<size_t>(c - token));
        token = c + 1;
    }
    *bytes = converted;
    LOG(4, "velmor_convert_nv_string_to_bytes return_len: %d", return_len);
    return return_len;
}

void velmor_get_profile_apn_name(const char *ref_val, char *apn_name)
{
    if (ref_val == nullptr) {
        LOG(1, "ref_val null");
        return;
    }
    char         *bytes = nullptr;
    const int32_t converted = velmor_convert_nv_string_to_bytes(ref_val, &bytes);
    if (converted < 0) {
        LOG(1, "velmor_convert_nv_string_to_bytes return -1");
        return;
    }
    const uint32_t len = static_cast<uint32_t>(converted);
    if (len < PROFILE_HEAD_SIZE) {
        LOG(1, "Invalid data len");
        free(bytes);
        return;
    }
    uint32_t count;
    memcpy(&count, bytes + PROFILE_COUNT_AT, sizeof(count));
    uint32_t offset = PROFILE_HEAD_SIZE;
    for (uint32_t i = 0; i < count && offset < len; ++i) {
        uint16_t       record[2] = {};  // type and length; 0 where the value ends within them
        const uint32_t left = len - offset;
        const uint32_t held = left < sizeof(record) ? left : sizeof(record);
        memcpy(record, bytes + offset, held);
        offset += held;
        uint32_t record_len = record[1];
        if (record[0] != PROFILE_APN_NAME) {
            offset += record_len;
            continue;
        }
        if (record_len > len - offset) record_len = len - offset;  // what there is of it
        if (record_len > MBN_APN_NAME_SIZE - 1) record_len = MBN_APN_NAME_SIZE - 1;
        memcpy(apn_name, bytes + offset, record_len);
        LOG(4, "apn_name %s\n", apn_name);
        break;
    }
    free(bytes);
}

/* Whether two converted profiles are the same. What their headers hold doesn't count. Reports under its caller's name. */
static bool profiles_match(const char *name, const char *ref, int32_t ref_len, const char *dev, int32_t dev_len)
{
    constexpr int32_t head_size = PROFILE_HEAD_SIZE;
    if (ref_len < 0 || dev_len < 0) {
        LOG_FROM(name, 1, "velmor_convert_nv_string_to_bytes return -1");
        return false;
    }
    if (ref_len <= head_size || dev_len <= head_size) {
        LOG_FROM(name, 1, "Invalid data len");
        return false;
    }
    return ref_len == dev_len &&
           memcmp(ref + head_size, dev + head_size, static_cast<size_t>(ref_len - head_size)) == 0;
}

int32_t velmor_compare_profile_content(const char *ref_val, const char *dev_val)
{
    if (ref_val == nullptr || dev_val == nullptr) {
        LOG(1, "ref_val null or dev_val null");
        return 0;
    }
    char         *ref = nullptr;
    char         *dev = nullptr;
    const int32_t ref_len = velmor_convert_nv_string_to_bytes(ref_val, &ref);
    const int32_t dev_len = velmor_convert_nv_string_to_bytes(dev_val, &dev);
    const bool    same = profiles_match(__func__, ref, ref_len, dev, dev_len);
    if (same) LOG(4, "velmor_compare_profile_content same");
    free(ref);
    free(dev);
    return same;
}

int32_t velmor_get_volte_enable_value(const char *dev_val)
{
    if (dev_val == nullptr) {
        LOG(1, "dev_val null");
        return 0;
    }
    char         *bytes = nullptr;
    const int32_t len = velmor_convert_nv_string_to_bytes(dev_val, &bytes);
    if (len < 0) {
        LOG(1, "velmor_convert_nv_string_to_bytes return -1");
        return 0;
    }
    const int32_t volte_enable_ret = len >= 2 && bytes[1] == 1;
    LOG(4, "volte_enable_ret %d", volte_enable_ret);
    free(bytes);
    return volte_enable_ret;
}

bool velmor_need_report(const unsigned char *id, const unsigned char *ref_val, const unsigned char *dev_val)
{
    static const char profile_path[] = "/Data_Profiles/Profile";
    static const char ims_service_path[] = "/nv/item_files/ims/qp_ims_service_enablement_config";

    if (id == nullptr) {
        LOG(1, "id or ref_val null");
        return true;
    }
    const char *path = reinterpret_cast<const char *>(id);
    const char *ref = reinterpret_cast<const char *>(ref_val);
    const char *dev = reinterpret_cast<const char *>(dev_val);
    bool        need_report = true;
    if (strncmp(path, profile_path, sizeof(profile_path) - 1) == 0) {
        char apn_name[MBN_APN_NAME_SIZE] = {};
        velmor_get_profile_apn_name(ref, apn_name);
        if (strcasecmp(apn_name, "ims") != 0) {
            LOG(4, "apn_name = %s, will not report", apn_name);
            need_report = false;
        } else if (velmor_compare_profile_content(ref, dev) == 1) {
            LOG(4, "ims profile same, will not report");
            need_report = false;
        }
    }
    if (strcmp(path, ims_service_path) == 0 && velmor_get_volte_enable_value(dev) == 1) {
        LOG(4, "volte_enable = 1, will not report");
        need_report = false;
    }
    return need_report;
}

// ---- Report: the document ----

static const xmlChar *name_of(const char *name)
{
    return reinterpret_cast<const xmlChar *>(name);
}

/* The first of `node` and its later siblings that has this name. */
static xmlNode *find_sibling(xmlNode *node, const char *name)
{
    while (node != nullptr && xmlStrcmp(node->name, name_of(name)) != 0) node = node->next;
    return node;
}

/* The text of the first "Member" in an element; null when it is empty. Result: whether there is one. */
static bool take_member(xmlDoc *doc, const xmlNode *element, unsigned char **value)
{
    const xmlNode *member = find_sibling(element->children, "Member");
    if (member == nullptr) return false;
    *value = xmlNodeListGetString(doc, member->children, 1);
    return true;
}

int32_t get_nv_detail(xmlDoc *doc, xmlNode *node, unsigned char **ref_val, unsigned char **dev_val)
{
    *ref_val = nullptr;
    *dev_val = nullptr;
    const xmlNode *reference = find_sibling(node->children, "NvItemDataREFERENCE");
    if (reference == nullptr) {
        LOG(1, "failed to find NvItemDataREFERENCE");
        return MBN_REPORT_FAULT;
    }
    if (!take_member(doc, reference, ref_val)) {
        LOG(1, "failed to find value");
        return MBN_REPORT_FAULT;
    }
    const xmlNode *device = find_sibling(reference->next, "NvItemDataDEVICE");
    if (device != nullptr && take_member(doc, device, dev_val)) return 0;
    if (device == nullptr) {
        LOG(1, "failed to find NvItemDataDEVICE");
    } else {
        LOG(1, "failed to find value");
    }
    if (*ref_val != nullptr) xmlFree(*ref_val);
    *ref_val = nullptr;
    return MBN_REPORT_FAULT;
}

static const char *shown(const unsigned char *value)
{
    return value != nullptr ? reinterpret_cast<const char *>(value) : "(null)";
}

/* One item of the report. Result: whether the walk can go on. Reports under the walk's name. */
static bool report_item(const char *name, xmlDoc *doc, xmlNode *node, int32_t *index)
{
    unsigned char *id = xmlGetProp(node, name_of("id"));
    if (id == nullptr) return true;
    LOG_FROM(name, 4, "id = %s\n", id);
    unsigned char *ref_val = nullptr;
    unsigned char *dev_val = nullptr;
    const bool     found = get_nv_detail(doc, node, &ref_val, &dev_val) == 0;
    if (found) {
        LOG_FROM(name, 4, "ref_val = %s, dev_val = %s\n", shown(ref_val), shown(dev_val));
        if (velmor_need_report(id, ref_val, dev_val))
            qcril_qmi_mbn_diff_send_unsol_msg(0, (*index)++, id, ref_val, dev_val);
        if (ref_val != nullptr) xmlFree(ref_val);
        if (dev_val != nullptr) xmlFree(dev_val);
    } else {
        LOG_FROM(name, 1, "failed to get NV detail");
    }
    xmlFree(id);
    return found;
}

// ---- Report: its one pass ----
//
// The document is foreign. The library bounds by itself how deep elements nest and how long a piece of text may be, and
// loads nothing from outside. Added here: a type declaration ends the pass, because a few bytes of entities make
// gigabytes; and no more is read of a document that has an error, since the parser tells one for each byte that follows,
// or of a tag with attributes by the thousand, each of which it compares with each, or of a document with different names
// by the ten thousand, whose table gets slower with each. xmlParseFile is the same parser with the same limits, but has no
// place for these, and unpacks a compressed file to whatever that claims to hold.

constexpr int REPORT_ATTRIBUTES_ROOM = 2048;  // of one element, which the parser doubles as they come; namespaces too
constexpr int REPORT_NAMES_MAX = 65536;       // different ones; short texts count as such

struct report_source {
    int            fd;
    xmlParserCtxt *parser;
};

/* The next bytes; none, as at the end of the file, of a document that is given up. */
static int report_read(void *context, char *buffer, int len)
{
    const auto          *source = static_cast<const report_source *>(context);
    const xmlParserCtxt *parser = source->parser;
    if (parser->wellFormed == 0) return 0;
    if (parser->maxatts / 5 > REPORT_ATTRIBUTES_ROOM) return 0;  // five entries each
    if (parser->nsNr / 2 > REPORT_ATTRIBUTES_ROOM) return 0;     // two each
    if (xmlDictSize(parser->dict) > REPORT_NAMES_MAX) return 0;
    return static_cast<int>(TEMP_FAILURE_RETRY(read(source->fd, buffer, static_cast<size_t>(len))));
}

static void report_refuse_declaration(void *context, const xmlChar *, const xmlChar *, const xmlChar *)
{
    auto *parser = static_cast<xmlParserCtxt *>(context);
    xmlStopParser(parser);
    parser->wellFormed = 0;  // which the stop doesn't touch
}

/* In the place of the library's own lines on standard error. */
static void report_ignore_error(void *, xmlError *) {}

/* Result: the document, or null. */
static xmlDoc *report_parse(const char *filename)
{
    report_source source = {open(filename, O_RDONLY | O_CLOEXEC), xmlNewParserCtxt()};
    xmlDoc       *doc = nullptr;
    if (source.fd >= 0 && source.parser != nullptr) {
        source.parser->sax->internalSubset = report_refuse_declaration;
        source.parser->sax->serror = report_ignore_error;
        doc = xmlCtxtReadIO(source.parser, report_read, nullptr, &source, nullptr, nullptr, XML_PARSE_NONET);
    }
    xmlFreeParserCtxt(source.parser);
    if (source.fd >= 0) close(source.fd);
    return doc;
}

// ---- Report: the walk ----

/* Walks the document. Result: whether the walk came to its end. Reports under the operation's name. */
static bool walk_report(const char *name, const char *filename)
{
    xmlDoc *doc = report_parse(filename);
    if (doc == nullptr) {
        LOG_FROM(name, 1, "failed to parse XML file %s", filename);
        return false;
    }
    bool           whole = false;
    const xmlNode *root = xmlDocGetRootElement(doc);
    if (root == nullptr) {
        LOG_FROM(name, 1, "failed to get root element");
    } else if (xmlStrcmp(root->name, name_of("NvData")) != 0) {
        LOG_FROM(name, 1, "document of the wrong type, root node != NvData");
    } else {
        whole = true;
        int32_t index = 0;
        for (xmlNode *node = root->children; whole && node != nullptr; node = node->next) {
            if (xmlStrcmp(node->name, name_of("NvItemData")) == 0 ||
                xmlStrcmp(node->name, name_of("NvEfsItemData")) == 0)
                whole = report_item(name, doc, node, &index);
        }
    }
    xmlFreeDoc(doc);
    return whole;
}

int32_t parse_mbn_diff_result(const char *filename)
{
    const int32_t result = walk_report(__func__, filename) ? 0 : MBN_REPORT_FAULT;
    qcril_qmi_mbn_diff_send_unsol_msg(result, -1, nullptr, nullptr, nullptr);
    return result;
}

void qcril_qmi_pdc_parse_diff_result(union sigval value)
{
    velmor_timer_stop(static_cast<uint32_t>(value.sival_int));
    parse_mbn_diff_result(g_pdc_info_ex.pdc_validate_config_req.pdc_validate_dump_path);
}

// ---- The test of wait and notify ----

constexpr int32_t TEST_FLAG_NOTIFY_WAIT = 1;  // notify, then wait
constexpr int32_t TEST_NOTIFY_AFTER_S = 10;
constexpr int32_t TEST_THREAD_END_S = 3;
constexpr int32_t TEST_END_S = 1000;

struct pdc_test_params {  // the thread's, once it has started
    int32_t flag;
    int32_t reserved;
};
static_assert(sizeof(pdc_test_params) == 8);

/* What both sides tell first, with the mutex held. Reports under their names. */
static void tell_test_state(const char *name, int32_t flag)
{
    LOG_FROM(name, 4, "flag = %d", flag);
    LOG_FROM(name, 4, "pdc_test, is_pdc_test_handling = %d", g_pdc_info_ex.pdc_test.is_pdc_test_handling.load());
    LOG_FROM(name, 4, "pdc_test, is_pdc_test_waiting = %d", g_pdc_info_ex.pdc_test.is_pdc_test_waiting.load());
    LOG_FROM(name, 4, "pdc_test, is_pdc_test_done = %d", g_pdc_info_ex.pdc_test.is_pdc_test_done.load());
}

void velmor_pdc_test_req(int32_t flag)
{
    LOG(4, "function entry ------------->");
    g_pdc_info_ex.mutex.lock();
    tell_test_state(__func__, flag);
    if (flag == TEST_FLAG_NOTIFY_WAIT) {
        LOG(4, "pdc_test, wait ...");
        g_pdc_info_ex.pdc_test.cond.any.wait(g_pdc_info_ex.mutex);
        LOG(4, "pdc_test, wait end");
    }
    g_pdc_info_ex.mutex.unlock();
    LOG(4, "function exit <-------------");
}

void velmor_pdc_test_rsp(int32_t flag)
{
    LOG(4, "function entry ------------->");
    g_pdc_info_ex.mutex.lock();
    tell_test_state(__func__, flag);
    if (flag == TEST_FLAG_NOTIFY_WAIT) {
        LOG(4, "pdc_test, notify_one");
        g_pdc_info_ex.pdc_test.cond.any.notify_one();
    }
    g_pdc_info_ex.mutex.unlock();
    LOG(4, "function exit <-------------");
}

void *velmor_qcril_pdc_test_thread_proc(void *params)
{
    if (params == nullptr) {
        LOG(1, "params_ptr is NULL");
        return nullptr;
    }
    const int32_t flag = static_cast<const pdc_test_params *>(params)->flag;
    LOG(4, "flag = %d", flag);
    if (flag == TEST_FLAG_NOTIFY_WAIT) {
        velmor_pdc_test_rsp(flag);  // nobody waits yet: lost
        velmor_pdc_test_req(flag);
    } else {
        LOG(1, "flag is invalid, do nothing");
    }
    qcril_free_adv(params, __func__, __LINE__);
    velmor_modem_wait_s(TEST_THREAD_END_S);
    return nullptr;
}

void velmor_qcril_start_pdc_test_thread(int32_t flag)
{
    LOG(4, "flag = %d", flag);
    auto *params = static_cast<pdc_test_params *>(qcril_malloc_adv(sizeof(pdc_test_params)));
    if (params == nullptr) {
        LOG(1, "No memory for params_ptr");
    } else {
        params->flag = flag;
        if (velmor_create_pthread("PDC_TEST", velmor_qcril_pdc_test_thread_proc, params) == 0)
            qcril_free_adv(params, __func__, __LINE__);
        velmor_modem_wait_s(TEST_NOTIFY_AFTER_S);
        if (flag == TEST_FLAG_NOTIFY_WAIT) velmor_pdc_test_rsp(flag);
    }
    velmor_modem_wait_s(TEST_END_S);
}

void velmor_pdc_test_wait_notify(int32_t flag)
{
    velmor_qcril_start_pdc_test_thread(flag);
}
