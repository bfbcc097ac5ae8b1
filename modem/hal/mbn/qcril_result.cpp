/* The outcome of a QMI request in the numbers of the radio interface: tables. */
#include "qcril_result.h"

#include <stdio.h>

#include "velmor_utils_cmn.h"

constexpr int32_t RIL_SUCCESS = 0;
constexpr int32_t RIL_GENERIC_FAILURE = 39;
constexpr int32_t RIL_UNKNOWN_ERROR = 40;  // the service's error stands in no row

constexpr int QMI_SERVICE_GONE = -2;  // a send's result that says nothing about the request: the response decides

constexpr uint32_t QMI_NOT_READY = 52;

// clang-format off

// ---- By the service's error ----

struct error_row {
    uint32_t error;
    int32_t  result;
    uint32_t success_in;  // the context in which this error is none; 0: in no context
};
static constexpr error_row g_error_rows[] = {
    { 0,  0, 0}, { 1, 38, 0}, { 2, 37, 0}, { 4,  7, 0}, {13, 63, 5}, {16, 61, 0}, {17, 44, 0}, {19, 44, 0},
    {23, 64, 0}, {24, 54, 0}, {25,  6, 0}, {26,  0, 0}, {48, 44, 0}, {50, 59, 0}, {51, 42, 0}, {52, 46, 7},
    {53, 60, 0}, {58, 57, 0}, {60, 54, 0}, {70, 54, 0}, {71,  6, 0}, {73, 58, 0}, {74, 61, 8}, {83, 39, 0},
    {90, 46, 0}, {91, 14, 0}, {95, 62, 0}, {97, 65, 0},
};

// ---- By what the answer tells in a context ----

struct context_row {
    uint32_t context;
    uint32_t value;
    int32_t  result;
};
static constexpr context_row g_call_control_rows[] = {
    {1, 0,   20}, {1, 1,   19}, {1, 2,   18}, {1, 3, 1006},
    {2, 0, 1009}, {2, 1, 1010}, {2, 2, 1011}, {2, 3, 1012},
    {3, 0,   24}, {3, 1,   27}, {3, 2,   25}, {3, 3, 1007},
    {4, 0,   21}, {4, 1,   22}, {4, 2,   23}, {4, 3, 1008},
    {6, 1,   71}, {6, 2,   70}, {6, 3,   40},
};
constexpr int32_t CONTEXT_6_OTHERWISE = 2;

static constexpr context_row g_failure_cause_rows[] = {{9, 387, 2}, {9, 388, 2}, {9, 389, 2}};
// clang-format on

constexpr int32_t UNDECIDED = -1;

template <uint32_t count>
static int32_t find_value(const context_row (&rows)[count], uint32_t context, uint32_t value)
{
    for (const context_row &row : rows)
        if (row.context == context && row.value == value) return row.result;
    return UNDECIDED;
}

static int32_t decide_by_context(const qmi_response_type_v01 *response, uint32_t context,
                                 const qmi_ril_err_payload *payload)
{
    if (context == QMI_RIL_ERR_CONTEXT_6 && response != nullptr && response->result == 1 &&
        response->error == QMI_NOT_READY)
        return RIL_SUCCESS;
    if (payload == nullptr) return UNDECIDED;

    switch (context) {
    case QMI_RIL_ERR_CONTEXT_DIAL:
    case QMI_RIL_ERR_CONTEXT_VIDEO_DIAL:
        if (payload->cc_result_type_valid == 0) return UNDECIDED;
        [[fallthrough]];
    case QMI_RIL_ERR_CONTEXT_3:
    case QMI_RIL_ERR_CONTEXT_4: return find_value(g_call_control_rows, context, payload->cc_result_type);
    case QMI_RIL_ERR_CONTEXT_6: {
        const int32_t result = find_value(g_call_control_rows, context, payload->cc_result_type);
        return result == UNDECIDED ? CONTEXT_6_OTHERWISE : result;
    }
    case QMI_RIL_ERR_CONTEXT_MNG_IP:
        if (payload->failure_cause_valid == 0) return UNDECIDED;
        return find_value(g_failure_cause_rows, context, payload->failure_cause);
    default: return UNDECIDED;
    }
}

/* An outcome that no row knows, which the daemon's logger is told. Result: `result`. */
static int32_t tell_unknown(const char *what, int number, int32_t result, int line = __builtin_LINE())
{
    char text[64];
    snprintf(text, sizeof(text), "%s %d, result %d", what, number, result);
    qcril_log_failure(text, __FILE__, line, "qcril_qmi_util_convert_qmi_response_codes_to_ril_result_ex");
    return result;
}

static int32_t decide_by_error(uint32_t error, uint32_t context)
{
    for (const error_row &row : g_error_rows)
        if (row.error == error) return row.success_in != 0 && row.success_in == context ? RIL_SUCCESS : row.result;
    return tell_unknown("QMI error", static_cast<int>(error), RIL_UNKNOWN_ERROR);
}

int32_t qcril_qmi_util_convert_qmi_response_codes_to_ril_result_ex(int                          transport_error,
                                                                   const qmi_response_type_v01 *response,
                                                                   qmi_ril_err_context_e_type   context,
                                                                   const void                  *payload)
{
    if (transport_error != 0 && transport_error != QMI_SERVICE_GONE)
        return tell_unknown("transport error", transport_error, RIL_GENERIC_FAILURE);
    const int32_t decided = decide_by_context(response, context, static_cast<const qmi_ril_err_payload *>(payload));
    if (decided != UNDECIDED) return decided;
    if (response == nullptr || response->result == 0) return RIL_SUCCESS;
    if (response->result != 1)
        return tell_unknown("QMI result", static_cast<int>(response->result), RIL_GENERIC_FAILURE);
    return decide_by_error(response->error, context);
}

int32_t qcril_qmi_util_convert_qmi_response_codes_to_ril_result(int                          transport_error,
                                                                const qmi_response_type_v01 *response)
{
    return qcril_qmi_util_convert_qmi_response_codes_to_ril_result_ex(transport_error, response,
                                                                      QMI_RIL_ERR_CONTEXT_NONE, nullptr);
}
