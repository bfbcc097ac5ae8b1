/* The statistics library's client table and requests. Its two mutexes guard the set-up and the freeing; requests read
 * the table without one, since their callers serialise them. */
#include "modem_hydra_api.h"

#include <pthread.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "velmor_utils_cmn.h"

/* What the modem's own errors become; any other is a general failure. */
static const struct {
    uint32_t qmi_error;
    int32_t  result;
} error_results[] = {
    // clang-format off
    { 0, MODEM_API_SUCCESS},        // none
    { 4, MODEM_API_ABORTED},        // aborted
    {17, MODEM_API_BAD_ARGUMENT},   // invalid argument field
    {19, MODEM_API_BAD_ARGUMENT},   // missing argument
    {24, MODEM_API_NOT_SUPPORTED},
    {26, MODEM_API_SUCCESS},        // no effect: nothing to do isn't a failure
    {42, MODEM_API_NOT_SUPPORTED},
    {48, MODEM_API_BAD_ARGUMENT},   // invalid argument
    {49, MODEM_API_BAD_ARGUMENT},
    {52, MODEM_API_NOT_READY},      // device not ready
    {77, MODEM_API_NOT_SUPPORTED},
    {94, MODEM_API_NOT_SUPPORTED},  // not supported
    // clang-format on
};

modem_api_client *g_modem_api_clients[MODEM_API_CLIENTS_MAX];

/* State. */
static int32_t         g_modem_api_init_count;                              // 1 after an init, 0 after a release
static pthread_mutex_t g_modem_api_init_mutex = PTHREAD_MUTEX_INITIALIZER;  // guards the count and the table's clearing
static pthread_mutex_t g_modem_api_client_mutex = PTHREAD_MUTEX_INITIALIZER;  // guards the freeing of a client
static uint8_t         g_white_list_checked;
static uint8_t         g_white_list_failed;

static const char *const white_list[] = {"qcrilNrd", "rbk", "modem_api_test"};

// ---- Who may use it ----

static bool name_is_allowed(const char *name)
{
    for (const char *allowed : white_list)
        if (strcmp(name, allowed) == 0) return true;
    return false;
}

int32_t modem_api_check_white_list()
{
    if (g_white_list_checked != 0) {
        if (g_white_list_failed != 0)
            LOG(4, "check fail, p_id: %d, p_name: %s", velmor_utils_get_pid_number(), velmor_utils_get_pid_name());
    } else {
        if (name_is_allowed(velmor_utils_get_pid_name())) {
            LOG(4, "check pass, p_id: %d, p_name: %s", velmor_utils_get_pid_number(), velmor_utils_get_pid_name());
        } else {
            g_white_list_failed = 1;
            LOG(4, "check fail, p_id: %d, p_name: %s", velmor_utils_get_pid_number(), velmor_utils_get_pid_name());
        }
        g_white_list_checked = 1;
    }
    return g_white_list_failed == 0;
}

// ---- Results ----

int32_t modem_api_map_qmi_error_to_modem_api(int32_t transport_code, const qmi_response_type *response)
{
    switch (transport_code) {
    case -5:
    case -1: return MODEM_API_TRANSPORT;
    case -4: return MODEM_API_FAILURE;
    case -3: return MODEM_API_TIMEOUT;
    case -2:
    case 0: break;
    default: return MODEM_API_FAILURE;
    }

    /* A lost service leaves the response as its caller zeroed it, which reads as success without an answer: whoever
     * needs the answer misses it by itself. */
    if (response->result == 0) return MODEM_API_SUCCESS;
    if (response->result != 1) return MODEM_API_FAILURE;
    for (const auto &row : error_results)
        if (row.qmi_error == response->error) return row.result;
    return MODEM_API_FAILURE;
}

// ---- Set-up ----

int32_t modem_api_init()
{
    if (modem_api_check_white_list() == 0) {
        LOG(1, "check fail, do nothing");
        return MODEM_API_NOT_ALLOWED;
    }
    pthread_mutex_lock(&g_modem_api_init_mutex);
    if (g_modem_api_init_count == 0) {
        pthread_mutex_init(&g_modem_api_client_mutex, nullptr);
        g_modem_api_init_count++;
        memset(g_modem_api_clients, 0, sizeof(g_modem_api_clients));
    }
    pthread_mutex_unlock(&g_modem_api_init_mutex);
    vs_init();  // each time, also when the table was set up before
    return MODEM_API_SUCCESS;
}

/* Clients are forgotten and not freed: their holders free them first. The client mutex is made anew, as the next init
 * does too; nobody may hold it then. */
int32_t modem_api_release()
{
    pthread_mutex_lock(&g_modem_api_init_mutex);
    if (g_modem_api_init_count >= 1) {
        pthread_mutex_init(&g_modem_api_client_mutex, nullptr);
        g_modem_api_init_count--;
        memset(g_modem_api_clients, 0, sizeof(g_modem_api_clients));
    }
    pthread_mutex_unlock(&g_modem_api_init_mutex);
    return MODEM_API_SUCCESS;
}

// ---- Clients ----

/* By id alone there is no upper bound: callers pass what modem_api_init_client gave. */
static bool modem_api_check_client_valid(int32_t client_id)
{
    return client_id >= 0 && g_modem_api_clients[client_id] != nullptr &&
           g_modem_api_clients[client_id]->client_type == VS_CLIENT_TYPE &&
           g_modem_api_clients[client_id]->operational_status == VS_STATUS_READY;
}

/* The first client of the type; null when there is none. */
static const modem_api_client *find_client(uint32_t client_type)
{
    for (const modem_api_client *client : g_modem_api_clients)
        if (client != nullptr && client->client_type == client_type) return client;
    return nullptr;
}

/* The lowest free place of the table; -1 when it is full. */
static int32_t find_free_index()
{
    for (int32_t i = 0; i < MODEM_API_CLIENTS_MAX; ++i)
        if (g_modem_api_clients[i] == nullptr) return i;
    return -1;
}

/* What stands against a new client; 0 when nothing does, and `index` is its place then. */
static int32_t check_new_client(const char *name, uint32_t client_type, int32_t *index)
{
    if (client_type != VS_CLIENT_TYPE) {
        LOG_FROM(name, 1, "modem api client type %d not supported", client_type);
        return MODEM_API_NOT_SUPPORTED;
    }
    const modem_api_client *other = find_client(VS_CLIENT_TYPE);
    if (other != nullptr && other->operational_status == VS_STATUS_READY) {
        LOG_FROM(name, 4, "Already another client init vs client successfully");
        return MODEM_API_OTHER_READY;
    }
    if (other != nullptr) {
        LOG_FROM(name, 4, "Another client init vs client with operational status %d", other->operational_status);
        return MODEM_API_OTHER_PENDING;
    }
    *index = find_free_index();
    if (*index < 0) {
        LOG_FROM(name, 1, "no more client can be added");
        return MODEM_API_TABLE_FULL;
    }
    return MODEM_API_SUCCESS;
}

int32_t modem_api_init_client(uint32_t client_type, vs_event_callback event_cb,
                              modem_api_status_callback operational_status_cb, int32_t *client_id_out)
{
    if (modem_api_check_white_list() == 0) {
        LOG(1, "check fail, do nothing");
        return MODEM_API_NOT_ALLOWED;
    }
    modem_api_client *client = static_cast<modem_api_client *>(malloc(sizeof(modem_api_client)));
    if (client == nullptr) {
        LOG(1, "could not allocate memory");
        return MODEM_API_NO_MEMORY;
    }
    int32_t       index = -1;
    const int32_t refusal = check_new_client(__func__, client_type, &index);
    if (refusal != MODEM_API_SUCCESS) {
        free(client);
        return refusal;
    }

    *client = {VS_CLIENT_TYPE, getpid(), VS_STATUS_RELEASED, {}, event_cb, operational_status_cb};
    g_modem_api_clients[index] = client;  // before the open, which tells it the status
    vs_client_set_operational_status_callback(modem_api_operational_status_cb);
    if (vs_client_init(event_cb) == 0) {
        g_modem_api_clients[index] = nullptr;
        free(client);
        return MODEM_API_FAILURE;
    }
    *client_id_out = index;
    LOG(4, "new client: type %d, id %d", client_type, index);
    return MODEM_API_SUCCESS;
}

int32_t modem_api_free_client(int32_t client_id)
{
    if (client_id < 0) {
        LOG(1, "invalid client_id %d", client_id);
        return MODEM_API_BAD_CLIENT;
    }
    pthread_mutex_lock(&g_modem_api_client_mutex);
    modem_api_client *client = g_modem_api_clients[client_id];
    if (client != nullptr) {
        if (client->client_type == VS_CLIENT_TYPE) vs_client_release();
        free(client);
        g_modem_api_clients[client_id] = nullptr;
    } else {
        LOG(1, "client already freed");
    }
    pthread_mutex_unlock(&g_modem_api_client_mutex);
    return MODEM_API_SUCCESS;
}

void modem_api_operational_status_cb(uint32_t client_type, uint32_t status)
{
    for (int32_t i = 0; i < MODEM_API_CLIENTS_MAX; ++i) {
        modem_api_client *client = g_modem_api_clients[i];
        if (client == nullptr || client->client_type != client_type) continue;
        client->operational_status = status;
        LOG(4, "client type %d, client id %d, operational_status %d", client_type, i, status);
        if (client->operational_status_cb == nullptr) continue;
        if (status == VS_STATUS_READY) client->operational_status_cb(MODEM_API_EVENT_READY, client_type);
        if (status == VS_STATUS_LOST) client->operational_status_cb(MODEM_API_EVENT_LOST, client_type);
    }
}

// ---- Requests ----

int32_t modem_api_set_hydra_feature_status(int32_t client_id, uint32_t feature, uint8_t status, uint8_t has_value,
                                           uint8_t value)
{
    if (!modem_api_check_client_valid(client_id)) {
        LOG(1, "modem_api_check_client_valid fail, do nothing");
        return MODEM_API_BAD_CLIENT;
    }
    const vs_set_feature_status_req request = {feature, status, has_value, value};
    vs_result_rsp                   response = {};
    const int32_t                   sent =
        vs_client_send_msg_sync(VS_MSG_SET_FEATURE_STATUS, &request, sizeof(request), &response, sizeof(response));
    const int32_t result = modem_api_map_qmi_error_to_modem_api(sent, &response.resp);
    LOG(4, "result %d", result);
    return result;
}

static int32_t word_of(const uint8_t *bytes)
{
    int32_t word;
    memcpy(&word, bytes, sizeof(word));
    return word;
}

/* Fills one element of the request and traces it. The subscription is said once, outside of the elements. */
static void put_entry(const char *name, const stats_para_entry *entry, uint32_t index, vs_stats_parameter *parameter)
{
    constexpr int32_t shown_len = 29;  // bytes of the value, behind its first word; also the text's limit

    parameter->id = entry->id;
    parameter->value_len = entry->value_len;
    memcpy(parameter->value, entry->value, sizeof(parameter->value));
    char shown[shown_len + 1] = {};
    velmor_get_hex_str(shown, shown_len, &entry->value[4], shown_len);
    LOG_FROM(name, 4, "ids[%d] = %d, value_len = %d, type = %d, value: %s", index, entry->id, entry->value_len,
             word_of(entry->value), shown);
}

static void take_entry(const vs_stats_parameter *parameter, stats_para_entry *entry)
{
    entry->sub = parameter->sub;
    entry->second_word = parameter->second_word;
    entry->id = parameter->id;
    entry->value_len = parameter->value_len < VS_VALUE_MAX ? parameter->value_len : VS_VALUE_MAX;
    memcpy(entry->value, parameter->value, entry->value_len);
}

int32_t modem_api_get_stats_parameter(int32_t client_id, uint32_t sub, uint32_t slot, stats_para_data *data)
{
    vs_get_stats_parameter_rsp response = {};
    LOG(4, "client_id = %d, sub = %d, slot = %d", client_id, sub, slot);
    if (!modem_api_check_client_valid(client_id)) {
        LOG(1, "modem_api_check_client_valid fail, do nothing");
        return MODEM_API_BAD_CLIENT;
    }
    if (data == nullptr) {
        LOG(4, "stats_para_data is null");
        return MODEM_API_BAD_ARGUMENT;
    }
    if (data->para_num < 1 || data->para_num > STATS_PARA_MAX) {
        LOG(4, "para_num(%d) is invalid", data->para_num);
        return MODEM_API_BAD_ARGUMENT;
    }

    vs_get_stats_parameter_req request = {};
    request.sub = static_cast<uint16_t>(sub);
    request.slot = static_cast<uint16_t>(slot);
    request.parameters_len = data->para_num;
    for (uint32_t i = 0; i < data->para_num; ++i) put_entry(__func__, &data->ids[i], i, &request.parameters[i]);

    const int32_t sent =
        vs_client_send_msg_sync(VS_MSG_GET_STATS_PARAMETER, &request, sizeof(request), &response, sizeof(response));
    const int32_t result = modem_api_map_qmi_error_to_modem_api(sent, &response.resp);
    if (result != MODEM_API_SUCCESS) return result;
    if (response.parameters_valid == 0) return MODEM_API_FAILURE;
    data->para_num = response.parameters_len < STATS_PARA_MAX ? response.parameters_len : STATS_PARA_MAX;
    for (uint32_t i = 0; i < data->para_num; ++i) take_entry(&response.parameters[i], &data->ids[i]);
    return MODEM_API_SUCCESS;
}

// ---- Asynchronous requests: nothing in the system sends one, and the way of their answer stands ready ----

/* A copy of the response's bytes for the callback, which owns it. */
static void tell_bytes(const vs_bytes_512_rsp *response, const modem_api_cookie *cookie)
{
    const uint32_t room = sizeof(response->bytes_3);
    const uint32_t len = response->bytes_3_len < room ? response->bytes_3_len : room;
    void          *block = malloc(len > 0 ? len : 1);
    if (block == nullptr) {
        cookie->callback(nullptr, 0, cookie->user, MODEM_API_NO_MEMORY);
        return;
    }
    memcpy(block, response->bytes_3, len);
    cookie->callback(block, len, cookie->user, MODEM_API_SUCCESS);
}

static void tell_response(uint32_t msg_id, const void *response, uint32_t response_len, const modem_api_cookie *cookie,
                          int32_t transport_error)
{
    if (response == nullptr || response_len == 0) {
        cookie->callback(nullptr, 0, cookie->user, MODEM_API_NO_MEMORY);
        return;
    }
    const int32_t result =
        modem_api_map_qmi_error_to_modem_api(transport_error, static_cast<const qmi_response_type *>(response));
    if (result != MODEM_API_SUCCESS) {
        cookie->callback(nullptr, 0, cookie->user, result);
        return;
    }
    if (msg_id == VS_MSG_BYTES) tell_bytes(static_cast<const vs_bytes_512_rsp *>(response), cookie);
    cookie->callback(nullptr, 0, cookie->user, MODEM_API_FINISHED);
}

void modem_api_process_response(uint32_t msg_id, void *response, uint32_t response_len, void *cookie,
                                int32_t transport_error)
{
    const modem_api_cookie *told = static_cast<const modem_api_cookie *>(cookie);
    if (told != nullptr && told->callback != nullptr)
        tell_response(msg_id, response, response_len, told, transport_error);
    free(response);
    free(cookie);
}
