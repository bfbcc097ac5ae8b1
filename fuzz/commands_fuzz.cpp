// A command of the shell and a modem that answers what it likes.
//
// An input is one byte for the command, and what the modem says to each of its requests.
#include <atomic>
#include <cstdlib>
#include <cstring>

#include "fuzz/device.h"
#include "pdc_utils.h"
#include "velmor_extend_api.h"
#include "velmor_extend_uim.h"
#include "velmor_rbk_groups.h"

using namespace rbk;

namespace {

// One of each operation that comes to an end by what the modem says; raw diag requests have a target of their own.
constexpr const char* kCommands[] = {
    "3 0 1 2",
    "3 1",
    "3 2",
    "3 3 1 4 5",
    "3 4",
    "3 5",  //
    "4 1 0 550",
    "4 2 0 550 1 2 3",
    "4 3 0 550",
    "4 4 0 /nv/demo",
    "4 5 1 /nv/demo 1 2 3",
    "4 6 0 /nv",  //
    "5 1",
    "5 2 0",
    "5 3 0 1 1",
    "5 4",
    "5 5",
    "5 6 1 1 2 3",
    "5 7 4",  //
    "5 10 1 1",
    "5 10 2 1",
    "5 10 3 1",
    "5 10 4 1",
    "5 10 5 1",  //
    "6 2 1 2 3",
    "7 1 0",
    "7 1 1",  //
    "9 0 0",
    "9 7 0",
    "9 8 0",
    "9 9 0",
    "9 10 0",
    "9 20 0",
    "9 21 0",
    "9 30 0",
    "9 31 0",
    "9 31 3",  //
    "10 0 3",
    "10 1 3",
    "11 0",
    "11 1",
    "11 4 1",
    "12 0 0",
    "12 1 0",
};

void run(const char* line)
{
    std::string words = std::string("rbk ") + line;
    std::vector<char*> arguments;
    for (char* word = std::strtok(words.data(), " "); word != nullptr; word = std::strtok(nullptr, " ")) {
        arguments.push_back(word);
    }
    const int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    switch (std::atoi(line)) {
    case RBK_GROUP_RF: velmor_test_rf_do(count, arguments.data()); break;
    case RBK_GROUP_NVEFS: velmor_test_nvefs_do(count, arguments.data()); break;
    case RBK_GROUP_CMN: velmor_test_cmn_do(count, arguments.data()); break;
    case RBK_GROUP_SEND_DATA: velmor_test_qmi_send_data_do(count, arguments.data()); break;
    case RBK_GROUP_STATS: velmor_test_modem_stats_do(count, arguments.data()); break;
    case RBK_GROUP_STATS_QMI: velmor_test_qmi_modem_stats_do(count, arguments.data()); break;
    case RBK_GROUP_MBN: velmor_test_mbn_do(count, arguments.data()); break;
    case RBK_GROUP_SMART: velmor_smart_test_do(count, arguments.data()); break;
    default: velmor_test_qmi_do(count, arguments.data()); break;
    }
}

// A requester of the configuration service that no indication has freed would sleep until its timer: nothing comes later.
void free_requester(std::uint32_t service, std::uint32_t message)
{
    struct Request {
        std::uint32_t message;
        int kind;
        const std::atomic<std::int32_t>& done;
    };
    static const Request requests[] = {
        {PDC_GET_SELECTED_CONFIG_V01, PDC_REQ_GET_SEL, g_pdc_info_ex.get_sel.is_get_sel_done},
        {PDC_SET_SELECTED_CONFIG_V01, PDC_REQ_SEL_CONFIG, g_pdc_info_ex.sel_config.is_sel_config_done},
        {PDC_DEACTIVATE_CONFIG_V01, PDC_REQ_DEACT, g_pdc_info_ex.pdc_deact.is_pdc_deact_done},
    };
    if (service != PDC_SERVICE_ID) return;
    g_pdc_info_ex.mutex.lock();
    for (const Request& request : requests)
        if (request.message == message && request.done == 0) pdc_request_deliver(request.kind, PDC_ERROR);
    g_pdc_info_ex.mutex.unlock();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Input input(data, size);
    fuzz::Device& device = fuzz::Device::get();
    device.start(input);
    device.after_each_send(free_requester);
    // Each input meets the clients as a fresh process has them.
    velmor_extend_qmi_client_init();
    uim_qmi_client_recovery();
    device.clients.clear();

    run(kCommands[input.byte() % std::size(kCommands)]);
    device.run_timers();
    return 0;
}
