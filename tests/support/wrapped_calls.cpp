// Locks, semaphores and the diag library's calls of this process, told with what they were given. Linked with --wrap for
// each.
#include <semaphore.h>
#include <signal.h>

#include "diag_lsm.h"
#include "qti_shared_mutex.h"
#include "support/on_calls.h"

using rbk::test::tell_call;
using std::to_string;

extern "C" {

void __real__ZN8qtimutex14QtiSharedMutex4lockEv(qtimutex::QtiSharedMutex* mutex);
int __real_sem_wait(sem_t* semaphore);
int __real_sem_post(sem_t* semaphore);
uint8_t __real_Diag_LSM_Init(uint8_t* params);
uint8_t __real_Diag_LSM_DeInit();
int32_t __real_diag_switch_logging(int32_t mode, char* proc_type);
int32_t __real_diag_register_dci_client(int32_t* client_id, const uint16_t* peripherals, int32_t processor,
                                        const int32_t* os_params);
int32_t __real_diag_register_dci_signal_data(int32_t client_id, int32_t signal_number);
int32_t __real_diag_release_dci_client(int32_t* client_id);

void __wrap__ZN8qtimutex14QtiSharedMutex4lockEv(qtimutex::QtiSharedMutex* mutex)
{
    tell_call("lock", mutex);
    __real__ZN8qtimutex14QtiSharedMutex4lockEv(mutex);
}

int __wrap_sem_wait(sem_t* semaphore)
{
    const int result = __real_sem_wait(semaphore);
    tell_call("sem_wait");
    return result;
}

int __wrap_sem_post(sem_t* semaphore)
{
    const int result = __real_sem_post(semaphore);
    tell_call("sem_post");
    return result;
}

uint8_t __wrap_Diag_LSM_Init(uint8_t* params)
{
    tell_call("Diag_LSM_Init");
    return __real_Diag_LSM_Init(params);
}

uint8_t __wrap_Diag_LSM_DeInit()
{
    tell_call("Diag_LSM_DeInit");
    return __real_Diag_LSM_DeInit();
}

int32_t __wrap_diag_switch_logging(int32_t mode, char* proc_type)
{
    tell_call("diag_switch_logging " + to_string(mode));
    return __real_diag_switch_logging(mode, proc_type);
}

int32_t __wrap_diag_register_dci_client(int32_t* client_id, const uint16_t* peripherals, int32_t processor,
                                        const int32_t* os_params)
{
    tell_call("diag_register_dci_client " + to_string(*peripherals) + " " + to_string(processor) + " " +
              to_string(*os_params));
    return __real_diag_register_dci_client(client_id, peripherals, processor, os_params);
}

int32_t __wrap_diag_register_dci_signal_data(int32_t client_id, int32_t signal_number)
{
    tell_call("diag_register_dci_signal_data SIGRTMIN+" + to_string(signal_number - SIGRTMIN));
    return __real_diag_register_dci_signal_data(client_id, signal_number);
}

int32_t __wrap_diag_release_dci_client(int32_t* client_id)
{
    tell_call("diag_release_dci_client");
    return __real_diag_release_dci_client(client_id);
}

}  // extern "C"
