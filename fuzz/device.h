// A device whose modem is the input: stands in the place of the QMI client library, the diag library and the properties,
// so that what modem/hal makes of foreign answers shows on one thread, at once, and the same each time.
//
// Sleeps return at once, threads run to their end where they are started, and timers when run_timers is called.
#pragma once

#include <signal.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "platform/include/diag_lsm.h"
#include "platform/include/qmi_client.h"

namespace rbk::fuzz {

class Device {
 public:
    // The one of the process. Messages of modem/hal are formatted, for nobody to read.
    static Device& get();

    // A fresh device, which takes its words from `input`. What modem/hal keeps at file scope stays as it is.
    void start(Input& input);
    // Timers that are due at once run now, also those that they start; later ones have been forgotten with start().
    void run_timers();

    // Answers a request in the place of the input; the response is zeroed. Result: that of the send.
    using Answer =
        std::function<std::int32_t(std::uint32_t service, std::uint32_t message, const void* request, void* response)>;
    void answer_with(Answer answer) { answer_ = std::move(answer); }
    // Called before a send returns, where indications have been told already.
    using AfterSend = std::function<void(std::uint32_t service, std::uint32_t message)>;
    void after_each_send(AfterSend hook) { after_send_ = std::move(hook); }

    // The next indication of the input for an open client of the service: a message of its table and raw TLVs.
    void indicate(std::uint32_t service);
    // A client's service has gone.
    void lose(std::uint32_t service);

    // ---- For the libraries below ----

    struct Client {
        qmi_idl_service_object_type service = nullptr;
        qmi_client_ind_cb ind_cb = nullptr;
        void* ind_data = nullptr;
        qmi_client_error_cb error_cb = nullptr;
        void* error_data = nullptr;
    };
    std::map<std::uint32_t, Client> clients;  // by service, which is its handle's number
    std::map<std::string, std::string> properties;

    std::int32_t exchange(std::uint32_t service, std::uint32_t message, const void* request, void* response);
    // Diag packets of the input, until one that says it is the last.
    void diag_packets(const std::function<void(std::uint8_t* packet, std::int32_t size)>& hand_on);
    std::int32_t diag_code(std::int32_t success);

    struct Timer {
        void (*callback)(sigval) = nullptr;
        sigval value{};
        bool due = false;
    };
    std::vector<Timer> timers;
    bool in_use() const { return input_ != nullptr; }
    struct {
        diag_packet_cb packet = nullptr;
        void* context = nullptr;
        diag_dci_stream_cb log = nullptr;
        diag_dci_stream_cb event = nullptr;
        bool callback_mode = false;
    } diag;

 private:
    Input* input_ = nullptr;
    Answer answer_;
    AfterSend after_send_;
};

}  // namespace rbk::fuzz
