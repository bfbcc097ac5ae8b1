/* NV and EFS access. An operation checks its arguments under its lock, fills one record, sends it (a file: as often as
 * there are chunks) and judges what comes back; every way ends at the one unlock. Checks and exchanges stand once and
 * report under the name of the operation that they serve. */
#include "velmor_extend_nvefs.h"

#include <pthread.h>
#include <string.h>

#include "velmor_extend_api.h"
#include "velmor_extend_cmn.h"
#include "velmor_extend_nvefs_records.h"
#include "velmor_utils_cmn.h"

constexpr uint32_t EFS_CHUNK = 414;           // bytes of a written chunk, though the record has room for 424
constexpr uint32_t EFS_CHUNK_COUNT = 300;     // chunks of one transfer
constexpr uint32_t EFS_READ_ENOUGH = 102409;  // a read ends once it has more bytes than this
constexpr uint16_t EFS_NEW_INSTANCE = 255;    // in the first chunk: the modem names the open file in its answer

/* Held over a whole operation; each before the extended client's mutex, never both. */
static pthread_mutex_t g_nv_mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_mutex_t g_efs_mutex = PTHREAD_MUTEX_INITIALIZER;

// ---- Checks ----

static int32_t check_sub(const char *name, uint32_t sub_id)
{
    if (sub_id <= 1) return 0;
    LOG_FROM(name, 4, "sub invalid");
    return NVEFS_BAD_SUB;
}

static int32_t check_nv(const char *name, uint32_t sub_id, uint32_t nv_id)
{
    const int32_t result = check_sub(name, sub_id);
    if (result != 0 || nv_id <= NV_ID_MAX) return result;
    LOG_FROM(name, 4, "nv_id is out range(%d)", NV_ID_MAX);
    return NVEFS_BAD_NV_ID;
}

static int32_t check_efs(const char *name, uint32_t sub_id, const char *efs_path, uint32_t path_len, uint32_t path_max)
{
    const int32_t result = check_sub(name, sub_id);
    if (result != 0) return result;
    if (efs_path == nullptr) {
        LOG_FROM(name, 4, "efs_path is null");
        return NVEFS_NO_PATH;
    }
    if (path_len == 0 || path_len > path_max) {
        LOG_FROM(name, 4, "len invalid");
        return NVEFS_BAD_PATH_LEN;
    }
    return 0;
}

static int32_t check_target(const char *name, const void *buf, const uint32_t *p_buf_len)
{
    if (buf == nullptr) {
        LOG_FROM(name, 4, "buf is null");
        return NVEFS_NO_BUFFER;
    }
    if (p_buf_len == nullptr) {
        LOG_FROM(name, 4, "p_buf_len is null");
        return NVEFS_BAD_LEN;
    }
    LOG_FROM(name, 4, "buf_len: %d", *p_buf_len);
    if (*p_buf_len == 0) {
        LOG_FROM(name, 4, "buf_len is invalid");
        return NVEFS_BAD_LEN;
    }
    return 0;
}

static int32_t check_source(const char *name, const void *buf, uint32_t buf_len, uint32_t buf_max)
{
    if (buf == nullptr) {
        LOG_FROM(name, 4, "buf is null");
        return NVEFS_NO_BUFFER;
    }
    if (buf_len == 0 || buf_len > buf_max) {
        LOG_FROM(name, 4, "buf_len is invalid");
        return NVEFS_BAD_LEN;
    }
    return 0;
}

// ---- Records ----

static void fill_nv(nvefs_req *req, nvefs_op op, uint32_t sub_id, uint32_t nv_id)
{
    req->op = op;
    req->sub_id = static_cast<uint8_t>(sub_id);
    req->nv_id = static_cast<uint16_t>(nv_id);
}

static void fill_efs(const char *name, nvefs_req *req, nvefs_op op, uint32_t sub_id, const char *efs_path,
                     uint32_t path_len)
{
    char path[EFS_PATH_READ_MAX + 1] = {};
    memcpy(path, efs_path, path_len);
    path[EFS_PATH_READ_MAX - 1] = '\0';  // meant: a path of 100 bytes goes out without its last one, as 100 bytes
    LOG_FROM(name, 4, "path_value: %s", path);

    req->op = op;
    req->sub_id = static_cast<uint8_t>(sub_id);
    req->path_len = static_cast<uint8_t>(path_len);
    memcpy(req->path, path, path_len);
}

/* Copies data of an answer, of which the record holds 424 bytes at most, whatever length it claims: the rest is 0. */
static void copy_answer(void *buf, const nvefs_rsp *rsp, uint32_t len)
{
    const uint32_t held = len < NVEFS_DATA_MAX ? len : NVEFS_DATA_MAX;
    memcpy(buf, rsp->data, held);
    memset(static_cast<uint8_t *>(buf) + held, 0, len - held);
}

// ---- Exchanges ----

/* One envelope. The record is zeroed once an operation: what a later chunk's answer leaves out, and all of it where the
 * send fails, reads as the chunk before it had it. */
static int32_t nvefs_send(const nvefs_req *req, nvefs_rsp *rsp)
{
    uint32_t rsp_len = sizeof(*rsp);
    return velmor_qmi_result_map(velmor_extend_qmi_send_sync(REQUEST_ID_EFS, req, sizeof(*req), rsp, &rsp_len));
}

/* An envelope whose `result` has to be 0. `complaint` tells of a send that failed. */
static int32_t nvefs_exchange(const char *name, const nvefs_req *req, nvefs_rsp *rsp, const char *complaint)
{
    const int32_t result = nvefs_send(req, rsp);
    LOG_FROM(name, 4, "result = %d, rsp.result = %d", result, rsp->result);
    if (result != 0) {
        LOG_FROM(name, 4, "%s", complaint);
        return result;
    }
    if (rsp->result != 0) LOG_FROM(name, 4, "qmi response fail");
    return rsp->result;
}

static const char SEND_FAIL[] = "velmor_extend_qmi_send_sync fail";
static const char SEND_FAIL_ABORT[] = "velmor_extend_qmi_send_sync fail, ABORT";

/* Chunks of a file into `buf`, until it ends or is full. */
static int32_t efs_read_chunks(const char *name, nvefs_req *req, uint8_t *buf, uint32_t *p_buf_len)
{
    const uint32_t buf_len = *p_buf_len;
    uint64_t       data_len_recv = 0;  // wide: a chunk's length is foreign
    nvefs_rsp      rsp = {};

    for (uint32_t read_count = 0; read_count < EFS_CHUNK_COUNT; ++read_count) {
        req->data_len_cur = static_cast<uint32_t>(data_len_recv);
        const int32_t result = nvefs_exchange(name, req, &rsp, SEND_FAIL_ABORT);
        if (result != 0) return result;

        data_len_recv += rsp.data_len_send;
        LOG_FROM(
            name, 4, "data_len_all = %d, data_len_send = %d, data_len_recv = %d, read_count = %d, data_len_cur = %d",
            rsp.data_len_all, rsp.data_len_send, static_cast<uint32_t>(data_len_recv), read_count, req->data_len_cur);
        if (rsp.data_len_send == 0) {
            LOG_FROM(name, 4, "abort, data_len_send <= 0");
            return NVEFS_BAD_LEN;
        }
        if (data_len_recv >= buf_len) {
            *p_buf_len = buf_len;
            if (buf_len > req->data_len_cur) {
                copy_answer(buf + req->data_len_cur, &rsp, buf_len - req->data_len_cur);
                LOG_FROM(name, 4, "abort, buf_len <= data_len_recv");
            } else {  // not met: what came before was less than the buffer, else the read had ended
                LOG_FROM(name, 4, "errro, abort, buf_len <= req.data_len_cur");
            }
            return 0;
        }
        *p_buf_len = static_cast<uint32_t>(data_len_recv);
        copy_answer(buf + req->data_len_cur, &rsp, rsp.data_len_send);
        if (rsp.data_len_all <= data_len_recv || data_len_recv > EFS_READ_ENOUGH) return 0;
    }
    return 0;
}

/* `buf` in chunks. The modem names the file that it has opened in its first answer; every further chunk says so. */
static int32_t efs_write_chunks(const char *name, nvefs_req *req, const uint8_t *buf, uint32_t buf_len)
{
    uint32_t  data_len_sent = 0;
    nvefs_rsp rsp = {};

    req->nv_id = EFS_NEW_INSTANCE;
    req->data_len_all = buf_len;
    for (uint32_t send_count = 0; send_count < EFS_CHUNK_COUNT && data_len_sent < buf_len; ++send_count) {
        req->data_len_cur = data_len_sent;
        const uint32_t left = buf_len - data_len_sent;
        LOG_FROM(name, 4, "left_num(%d)", left);
        req->data_len_send = left < EFS_CHUNK ? left : EFS_CHUNK;
        LOG_FROM(name, 4, "send_num(%d)", req->data_len_send);
        memcpy(req->data, buf + data_len_sent, req->data_len_send);

        const int32_t result = nvefs_send(req, &rsp);
        LOG_FROM(name, 4, "result = %d, rsp.result[>=0 is instance id] = %d", result, rsp.result);
        if (result != 0) {
            LOG_FROM(name, 4, "%s", SEND_FAIL);
            return result;
        }
        if (rsp.result < 0) {
            LOG_FROM(name, 4, "qmi response fail");
            return rsp.result;
        }
        data_len_sent += req->data_len_send;
        req->nv_id = static_cast<uint16_t>(rsp.result);
        LOG_FROM(name, 4,
                 "data_len_all = %d, data_len_send = %d, data_len_recv = %d, send_count = %d, data_len_cur = %d",
                 req->data_len_all, req->data_len_send, data_len_sent, send_count, req->data_len_cur);
    }
    return 0;
}

// ---- NV items ----

int32_t velmor_nv_read(uint32_t sub_id, uint32_t nv_id, void *buf, uint32_t *p_buf_len)
{
    nvefs_req req = {};
    nvefs_rsp rsp = {};

    LOG(4, "function entry ------------->");
    LOG(4, "velmor_nv_read, sub_id %d, nv_id: %d", sub_id, nv_id);
    pthread_mutex_lock(&g_nv_mutex);
    int32_t result = 0;
    if (sub_id == 2 && nv_id == 550) {
        LOG(4, "sub cust case for tt");
    } else {
        result = check_nv(__func__, sub_id, nv_id);
    }
    if (result == 0) result = check_target(__func__, buf, p_buf_len);
    if (result == 0) {
        fill_nv(&req, NV_READ, sub_id, nv_id);
        result = nvefs_exchange(__func__, &req, &rsp, SEND_FAIL);
    }
    if (result == 0) {
        LOG(4, "rsp.data_len_all = %d", rsp.data_len_all);
        if (rsp.data_len_all == 0) {
            LOG(4, "rsp.data_len_all is invalid");
            result = NVEFS_BAD_LEN;
        } else {
            if (rsp.data_len_all < *p_buf_len) *p_buf_len = rsp.data_len_all;
            copy_answer(buf, &rsp, *p_buf_len);
        }
    }
    pthread_mutex_unlock(&g_nv_mutex);
    LOG(4, "function exit <-------------");
    return result;
}

int32_t velmor_nv_write_ex(uint32_t sub_id, uint32_t nv_id, const void *buf, uint32_t buf_len)
{
    nvefs_req req = {};
    nvefs_rsp rsp = {};

    LOG(4, "function entry ------------->");
    LOG(4, "velmor_nv_write, sub_id %d, nv_id: %d, buf_len: %d", sub_id, nv_id, buf_len);
    pthread_mutex_lock(&g_nv_mutex);
    int32_t result = check_nv(__func__, sub_id, nv_id);
    if (result == 0) result = check_source(__func__, buf, buf_len, NVEFS_DATA_MAX);
    if (result == 0) {
        fill_nv(&req, NV_WRITE, sub_id, nv_id);
        req.data_len_all = buf_len;
        memcpy(req.data, buf, buf_len);
        result = nvefs_exchange(__func__, &req, &rsp, SEND_FAIL);
    }
    pthread_mutex_unlock(&g_nv_mutex);
    LOG(4, "function exit <-------------");
    return result;
}

int32_t velmor_nv_delete(uint32_t sub_id, uint32_t nv_id)
{
    nvefs_req req = {};
    nvefs_rsp rsp = {};

    LOG(4, "function entry ------------->");
    LOG(4, "velmor_nv_delete, sub_id %d, nv_id: %d", sub_id, nv_id);
    pthread_mutex_lock(&g_nv_mutex);
    int32_t result = check_nv(__func__, sub_id, nv_id);
    if (result == 0) {
        fill_nv(&req, NV_DELETE, sub_id, nv_id);
        result = nvefs_exchange(__func__, &req, &rsp, SEND_FAIL);
    }
    pthread_mutex_unlock(&g_nv_mutex);
    LOG(4, "function exit <-------------");
    return result;
}

int32_t velmor_extend_nv_read_item(uint32_t nv_id, uint32_t sub_id, void *buf, uint32_t *p_buf_len)
{
    nv_legacy_req req = {};
    nv_legacy_rsp rsp = {};

    LOG(4, "function entry ------------->");
    int32_t result = VELMOR_ERR_BAD_ARGUMENT;
    if (buf != nullptr && p_buf_len != nullptr) {
        req.op = 1;
        req.nv_id = nv_id;
        req.sub_id = sub_id;
        uint32_t rsp_len = sizeof(rsp);
        result = velmor_extend_qmi_send_sync(REQUEST_ID_NV_LEGACY, &req, sizeof(req), &rsp, &rsp_len);
        if (result == 0) result = rsp.result;
        if (result != 0) {
            *p_buf_len = 0;
        } else {
            if (*p_buf_len < rsp.data_len) result = NVEFS_ITEM_CUT;
            if (*p_buf_len > rsp.data_len) *p_buf_len = rsp.data_len;
            if (*p_buf_len > NV_LEGACY_DATA_MAX) *p_buf_len = NV_LEGACY_DATA_MAX;
            memcpy(buf, rsp.data, *p_buf_len);
        }
    }
    LOG(4, "function exit <-------------");
    return result;
}

int32_t velmor_nvefs_sync()
{
    common_rsp rsp = {};

    LOG(4, "function entry ------------->");
    const int32_t ret_sync = velmor_send_common_qmi_msg(COMMON_TYPE_NV_SYNC, 0, nullptr, &rsp);
    LOG(4, "velmor_send_common_qmi_msg, ret_sync: %d, rsp.result: %d", ret_sync, rsp.result);
    LOG(4, "function exit <-------------");
    return ret_sync | rsp.result;
}

// ---- EFS files ----

int32_t velmor_efs_read(uint32_t sub_id, const char *efs_path, uint32_t path_len, void *buf, uint32_t *p_buf_len)
{
    nvefs_req req = {};

    LOG(4, "function entry ------------->");
    LOG(4, "velmor_efs_read, sub_id %d, path_len: %d", sub_id, path_len);
    pthread_mutex_lock(&g_efs_mutex);
    int32_t result = check_efs(__func__, sub_id, efs_path, path_len, EFS_PATH_READ_MAX);
    if (result == 0) result = check_target(__func__, buf, p_buf_len);
    if (result == 0) {
        fill_efs(__func__, &req, EFS_READ, sub_id, efs_path, path_len);
        result = efs_read_chunks(__func__, &req, static_cast<uint8_t *>(buf), p_buf_len);
    }
    pthread_mutex_unlock(&g_efs_mutex);
    LOG(4, "function exit <-------------");
    return result;
}

int32_t velmor_efs_write(uint32_t sub_id, const char *efs_path, uint32_t path_len, const void *buf, uint32_t buf_len)
{
    nvefs_req req = {};

    LOG(4, "function entry ------------->");
    LOG(4, "velmor_efs_write, sub_id %d, path_len: %d, buf_len: %d", sub_id, path_len, buf_len);
    pthread_mutex_lock(&g_efs_mutex);
    int32_t result = check_efs(__func__, sub_id, efs_path, path_len, EFS_PATH_CHANGE_MAX);
    if (result == 0) result = check_source(__func__, buf, buf_len, EFS_WRITE_MAX);
    if (result == 0) {
        fill_efs(__func__, &req, EFS_WRITE, sub_id, efs_path, path_len);
        result = efs_write_chunks(__func__, &req, static_cast<const uint8_t *>(buf), buf_len);
    }
    pthread_mutex_unlock(&g_efs_mutex);
    LOG(4, "function exit <-------------");
    return result;
}

int32_t velmor_efs_delete(uint32_t sub_id, const char *efs_path, uint32_t path_len)
{
    nvefs_req req = {};
    nvefs_rsp rsp = {};

    LOG(4, "function entry ------------->");
    LOG(4, "velmor_efs_delete, sub_id %d, path_len: %d", sub_id, path_len);
    pthread_mutex_lock(&g_efs_mutex);
    int32_t result = check_efs(__func__, sub_id, efs_path, path_len, EFS_PATH_CHANGE_MAX);
    if (result == 0) {
        fill_efs(__func__, &req, EFS_DELETE, sub_id, efs_path, path_len);
        result = nvefs_exchange(__func__, &req, &rsp, SEND_FAIL);
    }
    pthread_mutex_unlock(&g_efs_mutex);
    LOG(4, "function exit <-------------");
    return result;
}
