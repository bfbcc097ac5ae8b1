/* What the radio interface calls the outcome of a QMI request. */
#ifndef QCRIL_RESULT_H
#define QCRIL_RESULT_H

#include <stdint.h>

#include "qmi_idl.h"

typedef qmi_response_type qmi_response_type_v01;

/* What a request was for, where that changes the meaning of its outcome. */
enum qmi_ril_err_context_e_type : uint32_t {
    QMI_RIL_ERR_CONTEXT_NONE = 0,
    QMI_RIL_ERR_CONTEXT_DIAL = 1,
    QMI_RIL_ERR_CONTEXT_VIDEO_DIAL = 2,
    QMI_RIL_ERR_CONTEXT_3 = 3,  // known by their numbers alone; 3, 4 and 6 look at a call control result
    QMI_RIL_ERR_CONTEXT_4 = 4,
    QMI_RIL_ERR_CONTEXT_5 = 5,
    QMI_RIL_ERR_CONTEXT_6 = 6,
    QMI_RIL_ERR_CONTEXT_7 = 7,
    QMI_RIL_ERR_CONTEXT_8 = 8,
    QMI_RIL_ERR_CONTEXT_MNG_IP = 9,
};

/* What an answer tells beside its result. */
struct qmi_ril_err_payload {
    uint8_t  cc_result_type_valid;
    uint32_t cc_result_type;  // of call control
    uint8_t  failure_cause_valid;
    uint32_t failure_cause;
};

/* Maps a send's outcome to a result of the radio interface.
 *   transport_error  what the send returned
 *   response         the answer's result; null: none, which counts as success
 *   context          changes the meaning of some outcomes
 *   payload          a qmi_ril_err_payload for the contexts 1 to 4, 6 and 9; null: nothing is decided by it
 * Result: 0 for success. An outcome that has no result of its own is told to the radio daemon's logger. Threads: any. */
int32_t qcril_qmi_util_convert_qmi_response_codes_to_ril_result_ex(int                          transport_error,
                                                                   const qmi_response_type_v01 *response,
                                                                   qmi_ril_err_context_e_type   context,
                                                                   const void                  *payload);

/* The same without a context. */
int32_t qcril_qmi_util_convert_qmi_response_codes_to_ril_result(int                          transport_error,
                                                                const qmi_response_type_v01 *response);

#endif
