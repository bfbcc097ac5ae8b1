#include "fuzz/device.h"

#include <pthread.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "cutils/properties.h"
#include "platform/linux/idl_codec.h"
#include "velmor_rbk_groups.h"
#include "velmor_utils_cmn.h"
#include "velmor_utils_timer.h"

namespace rbk::fuzz {
namespace {

constexpr std::int32_t kSteps = 64;  // of one input: indications in one send, packets of one answer

std::uint32_t service_of(qmi_client_handle handle)
{
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(handle));
}

qmi_client_handle handle_of(std::uint32_t service)
{
    return reinterpret_cast<qmi_client_handle>(static_cast<std::uintptr_t>(service));
}

// ---- A structure as the codec leaves it: any value, but flags of 0 or 1, texts that end, and numbers of the wire's width ----

void keep_low(std::uint8_t* number, std::size_t width, std::size_t kept)
{
    if (kept < width) std::memset(number + kept, 0, width - kept);
}

void make_decoded(const idl_field* fields, std::uint32_t count, std::uint8_t* structure)
{
    for (const idl_field* field = fields; field != fields + count; ++field) {
        std::uint8_t* value = structure + field->offset;
        if (field->optional) structure[field->flag_offset] &= 1;
        if (field->form == IDL_COUNTED) keep_low(structure + field->count_offset, 4, field->count_width);
        if (field->form == IDL_CHARACTERS) value[field->limit] = 0;
        if (field->form == IDL_RESERVED_BYTES) std::memset(value, 0, field->limit);
        for (std::uint32_t i = 0; i < field->limit && field->form != IDL_RESERVED_BYTES;
             ++i, value += field->memory_width) {
            if (idl_is_record(*field)) {
                make_decoded(field->record->fields, field->record->field_count, value);
            } else {
                keep_low(value, field->memory_width, field->wire_width);
            }
        }
    }
}

}  // namespace

Device& Device::get()
{
    static Device& device = *new Device;
    return device;
}

void Device::start(Input& input)
{
    if (input_ == nullptr) {
        if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
        std::setvbuf(stdout, nullptr, _IOFBF, 1 << 20);
        velmor_utils_get_pid_number();  // which fills in this program's name; the statistics let in the shell's
        std::strcpy(g_pid_info.p_name, "rbk");
    }
    for (const Timer& timer : timers) velmor_timer_stop(static_cast<std::uint32_t>(timer.value.sival_int));
    timers.clear();
    properties = {{"persist.vendor.radio.adb_log_velmor", "0"}};
    input_ = &input;
    answer_ = nullptr;
    after_send_ = nullptr;
    diag = {};
    velmor_hal_set_shell_print_mask(0xFFFF);
}

void Device::run_timers()
{
    for (std::size_t i = 0; i < timers.size() && i < kSteps; ++i) {
        if (!std::exchange(timers[i].due, false)) continue;
        const Timer timer = timers[i];
        timer.callback(timer.value);
    }
}

// ---- The modem's words ----

void Device::indicate(std::uint32_t service)
{
    const auto found = clients.find(service);
    if (found == clients.end() || found->second.ind_cb == nullptr) return;
    const qmi_idl_service_object& object = *found->second.service;
    const idl_message& message = object.messages[input_->byte() % object.message_count];
    // A block of its own size, as the library's.
    const ByteView tlvs = input_->block();
    Bytes copy(tlvs.begin(), tlvs.end());
    found->second.ind_cb(handle_of(service), message.id, copy.data(), static_cast<std::uint32_t>(copy.size()),
                         found->second.ind_data);
}

void Device::lose(std::uint32_t service)
{
    const auto found = clients.find(service);
    if (found == clients.end() || found->second.error_cb == nullptr) return;
    found->second.error_cb(handle_of(service), -2, found->second.error_data);
}

// One byte tells what comes next: an answer with a structure of the input's bytes, none, or an indication first.
std::int32_t Device::exchange(std::uint32_t service, std::uint32_t message, const void* request, void* response)
{
    const idl_message* asked =
        platform::find_message(*clients[service].service, REQUEST, static_cast<std::uint16_t>(message));
    const idl_message* answered =
        platform::find_message(*clients[service].service, RESPONSE, static_cast<std::uint16_t>(message));
    if (asked == nullptr || answered == nullptr) return -1;
    Bytes structure(answered->size);
    std::int32_t result = -3;
    for (std::int32_t step = 0; step < kSteps; ++step) {
        if (answer_) {
            result = answer_(service, message, request, structure.data());
            break;
        }
        const std::uint8_t word = input_->byte();
        if (word % 8 == 7) {
            indicate(service);
            continue;
        }
        if (word % 8 == 6) {
            result = -1 - word / 8 % 5;
            if (result == -2) lose(service);
            break;
        }
        const ByteView bytes = input_->take(std::min<std::size_t>(input_->number<std::uint16_t>(), structure.size()));
        std::copy(bytes.begin(), bytes.end(), structure.begin());
        result = 0;
        break;
    }
    if (result == 0 && response != nullptr) {
        make_decoded(answered->fields, answered->field_count, structure.data());
        std::memcpy(response, structure.data(), structure.size());
    }
    if (after_send_) after_send_(service, message);
    return result;
}

void Device::diag_packets(const std::function<void(std::uint8_t*, std::int32_t)>& hand_on)
{
    for (std::int32_t step = 0; step < kSteps && !input_->empty(); ++step) {
        const std::uint8_t word = input_->byte();
        // 4096 is a length of its own here: it says that more follows.
        const std::size_t size = word % 4 == 0   ? 4096
                                 : word % 4 == 1 ? input_->number<std::uint16_t>() % 16385
                                                 : word / 8;
        const ByteView bytes = input_->take(std::min<std::size_t>(size, word % 4 == 2 ? size : 8));
        Bytes packet(std::max<std::size_t>(size, 1), 0xAB);
        std::copy(bytes.begin(), bytes.end(), packet.begin());
        if ((word & 4) != 0 && diag.log != nullptr) diag.log(packet.data(), static_cast<std::int32_t>(size));
        if ((word & 4) != 0 && diag.event != nullptr) diag.event(packet.data(), static_cast<std::int32_t>(size));
        hand_on(packet.data(), static_cast<std::int32_t>(size));
        if ((word & 0x80) != 0) return;
    }
}

std::int32_t Device::diag_code(std::int32_t success)
{
    const std::uint8_t word = input_->byte();
    return word < 0xF0 ? success : word;
}

}  // namespace rbk::fuzz

using rbk::fuzz::Device;

// The shell's main has it, and nothing of it is foreign.
void show_help(int) {}

extern "C" {

// ---- The QMI client library ----

int32_t qmi_client_notifier_init(qmi_idl_service_object_type, qmi_client_os_params*, qmi_client_handle* notifier)
{
    *notifier = nullptr;
    return 0;
}

int32_t qmi_client_get_service_list(qmi_idl_service_object_type service, qmi_service_info* table, uint32_t* num_entries,
                                    uint32_t* num_services)
{
    *num_services = 1;
    if (table == nullptr || *num_entries == 0) return 0;
    *num_entries = 1;
    *table = {service->service_id, service->idl_version, 0, 1};
    return 0;
}

int32_t qmi_cci_os_signal_wait(qmi_client_os_params*, uint32_t)
{
    return 0;
}

int32_t qmi_client_init(const qmi_service_info*, qmi_idl_service_object_type service, qmi_client_ind_cb ind_cb,
                        void* cb_data, qmi_client_os_params*, qmi_client_handle* client)
{
    Device::get().clients[service->service_id] = {service, ind_cb, cb_data};
    *client = rbk::fuzz::handle_of(service->service_id);
    return 0;
}

int32_t qmi_client_init_instance(qmi_idl_service_object_type service, uint32_t, qmi_client_ind_cb ind_cb, void* cb_data,
                                 qmi_client_os_params* os_params, uint32_t, qmi_client_handle* client)
{
    return qmi_client_init(nullptr, service, ind_cb, cb_data, os_params, client);
}

int32_t qmi_client_register_error_cb(qmi_client_handle client, qmi_client_error_cb error_cb, void* cb_data)
{
    auto& registered = Device::get().clients[rbk::fuzz::service_of(client)];
    registered.error_cb = error_cb;
    registered.error_data = cb_data;
    return 0;
}

int32_t qmi_client_send_msg_sync(qmi_client_handle client, uint32_t msg_id, const void* request, uint32_t,
                                 void* response, uint32_t, uint32_t)
{
    const auto found = Device::get().clients.find(rbk::fuzz::service_of(client));
    if (found == Device::get().clients.end()) return -1;
    return Device::get().exchange(found->first, msg_id, request, response);
}

int32_t qmi_client_message_decode(qmi_client_handle client, qmi_idl_type_of_message kind, uint32_t msg_id,
                                  const void* raw, uint32_t raw_len, void* structure, uint32_t size)
{
    const auto found = Device::get().clients.find(rbk::fuzz::service_of(client));
    if (found == Device::get().clients.end()) return -1;
    const idl_message* message = rbk::platform::find_message(*found->second.service, kind, msg_id);
    if (message == nullptr || size != message->size) return -1;
    return rbk::platform::decode(*message, {static_cast<const std::uint8_t*>(raw), raw_len}, structure) ? 0 : -1;
}

int32_t qmi_client_release(qmi_client_handle client)
{
    return Device::get().clients.erase(rbk::fuzz::service_of(client)) == 1 ? 0 : -1;
}

// ---- The diag library ----

uint8_t Diag_LSM_Init(uint8_t*)
{
    return Device::get().diag_code(1) == 1;
}

uint8_t Diag_LSM_DeInit()
{
    Device::get().diag = {};
    return 1;
}

int32_t diag_switch_logging(int32_t mode, char*)
{
    Device::get().diag.callback_mode = mode == CALLBACK_MODE;
    return 0;
}

int32_t diag_register_callback(diag_packet_cb callback, void* context_data)
{
    Device::get().diag.packet = callback;
    Device::get().diag.context = context_data;
    return 0;
}

int32_t diag_has_remote_device(uint16_t* remote_mask)
{
    *remote_mask = static_cast<uint16_t>(Device::get().diag_code(3));
    return 0;
}

int32_t diag_register_remote_callback(diag_packet_cb, int32_t, void*)
{
    return 0;
}

int32_t diag_callback_send_data(int32_t, const uint8_t*, int32_t)
{
    Device& device = Device::get();
    const auto hand_on = [&](std::uint8_t* packet, std::int32_t size) {
        if (device.diag.packet != nullptr) device.diag.packet(packet, size, device.diag.context);
    };
    const int32_t code = device.diag_code(0);
    if (code == 0) device.diag_packets(hand_on);
    return code;
}

int32_t diag_register_dci_client(int32_t* client_id, const uint16_t*, int32_t, const int32_t*)
{
    *client_id = 1;
    return Device::get().diag_code(DIAG_DCI_NO_ERROR);
}

int32_t diag_register_dci_signal_data(int32_t, int32_t)
{
    return Device::get().diag_code(DIAG_DCI_NO_ERROR);
}

int32_t diag_get_dci_support_list_proc(int32_t, uint16_t* peripherals)
{
    *peripherals = DIAG_CON_MPSS;
    return Device::get().diag_code(DIAG_DCI_NO_ERROR);
}

int32_t diag_register_dci_stream_proc(int32_t, diag_dci_stream_cb log_callback, diag_dci_stream_cb event_callback)
{
    Device::get().diag.log = log_callback;
    Device::get().diag.event = event_callback;
    return Device::get().diag_code(DIAG_DCI_NO_ERROR);
}

int32_t diag_send_dci_async_req(int32_t, const uint8_t*, int32_t, uint8_t* packet_buf, int32_t packet_size,
                                diag_dci_response_cb callback, void* context_data)
{
    Device& device = Device::get();
    const int32_t code = device.diag_code(DIAG_DCI_NO_ERROR);
    if (code != DIAG_DCI_NO_ERROR) return code;
    device.diag_packets([&](std::uint8_t* packet, std::int32_t size) {
        std::memcpy(packet_buf, packet, static_cast<std::size_t>(std::min(size, packet_size)));
        callback(packet_buf, size, context_data);
    });
    return code;
}

int32_t diag_release_dci_client(int32_t* client_id)
{
    *client_id = 0;
    return DIAG_DCI_NO_ERROR;
}

// ---- Properties ----

int property_get(const char* key, char* value, const char* default_value)
{
    const auto found = Device::get().properties.find(key);
    const std::string text = found != Device::get().properties.end() ? found->second
                             : default_value != nullptr              ? default_value
                                                                     : "";
    return std::snprintf(value, PROPERTY_VALUE_MAX, "%s", text.c_str());
}

int property_set(const char* key, const char* value)
{
    Device::get().properties[key] = value;
    return 0;
}

// ---- Waits, threads and timers: wrapped at link time ----

unsigned __wrap_sleep(unsigned)
{
    return 0;
}

int __wrap_usleep(useconds_t)
{
    return 0;
}

int __real_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*), void* argument);
int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*run)(void*), void* argument)
{
    if (!Device::get().in_use()) return __real_pthread_create(thread, attributes, run, argument);
    *thread = pthread_self();
    run(argument);
    return 0;
}

int __wrap_timer_create(clockid_t, sigevent* event, timer_t* timer)
{
    auto& timers = Device::get().timers;
    timers.push_back({event->sigev_notify_function, event->sigev_value, false});
    *timer = reinterpret_cast<timer_t>(timers.size());
    return 0;
}

// A timer that is due at once has one nanosecond.
int __wrap_timer_settime(timer_t timer, int, const itimerspec* due, itimerspec*)
{
    auto& timers = Device::get().timers;
    const auto number = reinterpret_cast<std::uintptr_t>(timer);
    if (number <= timers.size()) timers[number - 1].due = due->it_value.tv_sec == 0 && due->it_value.tv_nsec == 1;
    return 0;
}

}  // extern "C"
