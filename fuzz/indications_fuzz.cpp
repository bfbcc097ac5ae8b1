// What the modem says unasked, to each client that listens, with the requesters of the configuration service in any state.
//
// An input is a row of steps: one byte for what is waited for, one for the service, and the indication.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include "fuzz/device.h"
#include "pdc_utils.h"
#include "velmor_extend_api.h"
#include "velmor_extend_uim.h"
#include "velmor_mbn_utils.h"
#include "velmor_utils_cmn.h"
#include "vs_client.h"

#include "fuzz/scratch.h"

using namespace rbk;

namespace {

// A listener believes the length that it is given.
void read_all(const void* payload, std::uint32_t size)
{
    const Bytes copy(static_cast<const std::uint8_t*>(payload), static_cast<const std::uint8_t*>(payload) + size);
    static volatile std::size_t read = 0;
    read = read + copy.size();
}

void hear_extended(std::uint32_t, const void* payload, std::uint32_t size)
{
    read_all(payload, size);
}

void hear_vs(std::uint32_t event_id, void* data, std::uint32_t size)
{
    read_all(data, size);
    if (event_id != 3) return;
    const auto& event = *static_cast<const vs_event_3*>(data);
    for (std::uint32_t i = 0; i < event.record_count; ++i) read_all(event.records[i].value, event.records[i].value_len);
    for (std::uint32_t i = 0; i < event.more_record_count; ++i)
        read_all(event.more_records[i].value, event.more_records[i].value_len);
}

void hear_report(const void* message, std::int32_t size)
{
    read_all(message, static_cast<std::uint32_t>(size));
}

void hear_dumped(const char* path, std::int32_t size)
{
    read_all(path, static_cast<std::uint32_t>(size));
}

// What requesters hold while they wait. Blocks of the heap, so that a byte too far is seen.
struct Holders {
    std::uint32_t config_count = 0;
    pdc_config_list_node* list = nullptr;
    std::unique_ptr<pdc_config_pdc_info> selected = std::make_unique<pdc_config_pdc_info>();
    std::unique_ptr<pdc_config_desc_info> info = std::make_unique<pdc_config_desc_info>();
    std::unique_ptr<pdc_config_desc_info> default_info = std::make_unique<pdc_config_desc_info>();

    Holders() = default;
    Holders(const Holders&) = delete;
    Holders& operator=(const Holders&) = delete;
    ~Holders()
    {
        while (list != nullptr) std::free(std::exchange(list, list->next));
    }

    void wait_for(std::uint8_t kinds)
    {
        auto& record = g_pdc_info_ex;
        const auto when = [kinds](int bit, auto* holder) { return (kinds >> bit & 1) != 0 ? holder : nullptr; };
        record.pdc_list.is_pdc_list_handling = kinds & 1;
        record.pdc_list.num_of_configs = when(1, &config_count);
        record.pdc_list.config_list_holder = when(2, &list);
        record.get_sel.get_sel_holder = when(3, selected.get());
        record.pdc_info.config_info_holder = when(4, info.get());
        record.default_info.config_info = when(5, default_info.get());
        record.pdc_validate_config_req.is_pdc_validate_waiting = kinds >> 6 & 1;
        if ((kinds >> 6 & 1) != 0 && record.pdc_validate_config_req.dump_fd < 0)
            record.pdc_validate_config_req.dump_fd = ::memfd_create("report", MFD_CLOEXEC);
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static constexpr std::uint8_t kNoBytes[3] = {};
    fuzz::Device& device = fuzz::Device::get();
    device.clients.clear();
    fuzz::Input nothing(kNoBytes, sizeof kNoBytes);
    device.start(nothing);

    // The four clients that have a callback of their own, each opened as its users do.
    std::uint32_t length = 0;
    velmor_extend_qmi_client_init();
    std::fill(std::begin(g_extend_ind_handlers), std::end(g_extend_ind_handlers), hear_extended);
    g_extend_ind_handlers[1] = nullptr;
    g_extend_stat_handler = g_extend_ind13_handler = hear_extended;
    velmor_extend_qmi_send_sync(0, kNoBytes, 0, &length, &length);
    vs_init();
    vs_client_init(hear_vs);
    pdc_init_ex();
    uim_qmi_client_recovery();
    init_uim_qmi_client();
    g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb = hear_report;
    g_velmor_hal_send_broadcast_for_pdc_validate_dumped_cb = hear_dumped;
    std::strcpy(g_pdc_info_ex.pdc_validate_config_req.pdc_validate_dump_path, "/dev/null");

    static constexpr std::uint32_t kServices[] = {EXTEND_SERVICE_ID, VS_SERVICE_ID, PDC_SERVICE_ID, 11};
    fuzz::Input input(data, size);
    device.start(input);
    Holders holders;
    while (!input.empty()) {
        holders.wait_for(input.byte());
        const std::uint8_t step = input.byte();
        const std::uint32_t service = kServices[step % std::size(kServices)];
        if (step >= 0xF0) {
            device.lose(service);
        } else {
            device.indicate(service);
        }
        device.run_timers();
    }
    if (g_pdc_info_ex.pdc_validate_config_req.dump_fd >= 0) ::close(g_pdc_info_ex.pdc_validate_config_req.dump_fd);
    qmi_pdc_init_pdc_info();
    return 0;
}
