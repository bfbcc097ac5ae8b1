// The frame that each service of the modem stands in. A service is one file: its state, a table from message to handler,
// and handlers of a few lines, each of which reads the request's TLVs, does its work and writes the answer's. Framing,
// result TLV, fault rules, delays and the sending of indications happen around them, in the modem.
//
//     class SarService final : public Service {
//      public:
//         explicit SarService(Modem& modem) : Service({"sar", 17, ResultForm::halves}, modem) {}
//      private:
//         void handle(Call& call) override;
//         void set_state(Call& call);
//         void get_state(Call& call) { call.answer.number(0x10, state_); }
//         static const Message<SarService> kMessages[];
//         std::uint32_t state_ = 0;
//     };
//     constexpr Message<SarService> SarService::kMessages[] = {
//         {0x0001, &SarService::set_state, {{0x01, 4}}},   // mandatory TLV 0x01, 4 bytes
//         {0x0002, &SarService::get_state},
//     };
//     void SarService::handle(Call& call) { run_message(*this, kMessages, call); }
//     void SarService::set_state(Call& call) { state_ = call.number<std::uint32_t>(0x01); }
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "link/bytes.h"
#include "simulator/base/client_id.h"
#include "simulator/base/ledger.h"
#include "simulator/modem/tlv.h"

namespace rbk::sim {

class Modem;

// Error numbers of QMI answers.
enum class QmiError : std::uint16_t {
    none = 0,
    malformed_message = 1,
    no_memory = 2,
    internal = 3,
    client_ids_exhausted = 5,
    invalid_client_id = 7,
    no_such_id = 16,
    missing_argument = 17,
    not_in_this_state = 25,
    no_effect = 26,
    invalid_service_type = 31,
    invalid_identifier = 41,
    invalid_argument = 48,
    invalid_command = 71,
    not_supported = 94,
};

// How a service's answers carry their result: in TLV 0x02 as two 16-bit or two 32-bit words, or in fields of its own.
enum class ResultForm { halves, words, own };

struct ServiceIdentity {
    std::string_view name;  // as in scenario files
    std::uint32_t id = 0;
    ResultForm result = ResultForm::halves;
};

class Service;

// An indication on its way, `after` from the answer on.
struct Indication {
    std::uint16_t message = 0;
    Bytes tlvs;
    std::chrono::milliseconds after{0};
};

// One request in the hands of its handler. Without a word about failure it is answered with success.
class Call {
 public:
    // `answer` is empty; both it and `tlvs` are the modem's, and good until the handler returns.
    Call(const Service& service, ClientId client, std::uint16_t message, ByteView tlvs, Bytes& answer);

    const ClientId client;
    const std::uint16_t message;
    const ByteView tlvs;  // of the request

    std::optional<ByteView> find(std::uint8_t type) const { return find_tlv(tlvs, type); }
    // A number, 0 where the TLV is missing or short.
    template <typename Number>
    Number number(std::uint8_t type) const
    {
        return peek_le<Number>(find(type).value_or(ByteView{}), 0);
    }

    TlvWriter answer;  // what stands behind the result TLV
    // Answers with this error. What was written before is dropped, what is written afterwards stays.
    void fail(QmiError error);
    bool failed() const { return failed_; }
    // The answer leaves this much later. Everything else is done now.
    void answer_after(std::chrono::milliseconds delay) { delay_ = delay; }
    std::chrono::milliseconds delay() const { return delay_; }

    // Sends an indication to the request's client, behind the answer.
    void indicate(std::uint16_t indication, Bytes bytes, std::chrono::milliseconds after = {})
    {
        indications_.push_back({indication, std::move(bytes), after});
    }
    std::vector<Indication>& indications() { return indications_; }
    // Calls `task`, `after` from the answer on: it sends the indications that follow those above, one after the other.
    void go_on(std::function<void()> task, std::chrono::milliseconds after) { more_ = {std::move(task), after}; }
    struct More {
        std::function<void()> task;  // empty: nothing follows
        std::chrono::milliseconds after{0};
    };
    More& more() { return more_; }

 private:
    const Service& service_;
    Bytes& bytes_;
    bool failed_ = false;
    std::chrono::milliseconds delay_{0};
    std::vector<Indication> indications_;
    More more_;
};

class Service {
 public:
    Service(const ServiceIdentity& identity, Modem& modem) : identity_(identity), modem_(modem) {}
    virtual ~Service() = default;
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    const ServiceIdentity& identity() const { return identity_; }

    virtual void handle(Call& call) = 0;
    // Takes a datagram that is no QMI message: for a service with frames of its own. True when it is done with.
    virtual bool handle_datagram(ClientId client, ByteView bytes)
    {
        static_cast<void>(client);
        static_cast<void>(bytes);
        return false;
    }
    // Adds what it keeps for a client: what client_gone() is going to end.
    virtual void tell_holdings(ClientId client, Holdings& held) const
    {
        static_cast<void>(client);
        static_cast<void>(held);
    }
    // A client has gone; nothing more can be sent to it.
    virtual void client_gone(ClientId client) { static_cast<void>(client); }

    // What a fault rule looks at: the bytes that its prefix is held against, and the request id of an envelope.
    virtual ByteView fault_subject(ByteView tlvs) const { return tlvs; }
    virtual std::optional<std::uint32_t> fault_qmi_id(ByteView tlvs) const
    {
        static_cast<void>(tlvs);
        return std::nullopt;
    }
    // Puts `code` into the result field of an answer's records, where the service has such a field.
    virtual void set_result(ByteView request, std::span<std::uint8_t> answer, std::int32_t code) const;
    // Answers with `code` in that field and does nothing; where the service has no such field, as without this rule.
    virtual void refuse(Call& call, std::int32_t code)
    {
        static_cast<void>(code);
        handle(call);
    }

    // The card leaves the slot's tray, where the service has cards.
    virtual void pull_card(std::uint8_t slot) { static_cast<void>(slot); }

    // An answer's beginning: the result TLV, and the whole of an answer that fails.
    virtual void write_result(std::uint16_t message, std::int32_t error, TlvWriter& answer) const;

    // Calls `task` later on a client's behalf, unless the client or the service has gone by then. `size` bytes are kept for
    // it meanwhile: a client for which too much is put off is dropped.
    void after(ClientId client, std::chrono::milliseconds delay, std::function<void()> task, std::size_t size = 0);
    // Ends with the service: what outlives it holds this to know.
    std::weak_ptr<const void> lifetime() const { return lifetime_; }

 protected:
    Modem& modem() const { return modem_; }

 private:
    ServiceIdentity identity_;
    Modem& modem_;
    std::shared_ptr<const void> lifetime_ = std::make_shared<char>();
};

// A TLV that a request must have, with its exact width in bytes; 0: any.
struct MandatoryTlv {
    std::uint8_t type = 0;
    std::size_t size = 0;
};

template <typename Owner>
struct Message {
    std::uint16_t id;
    void (Owner::*run)(Call& call);
    std::array<MandatoryTlv, 4> mandatory{};
};

// Whether the request has them all; when not, the call fails with what is wrong.
bool check_mandatory(Call& call, const std::array<MandatoryTlv, 4>& mandatory);

template <typename Owner, std::size_t count>
void run_message(Owner& service, const Message<Owner> (&messages)[count], Call& call)
{
    for (const Message<Owner>& message : messages) {
        if (message.id != call.message) continue;
        if (check_mandatory(call, message.mandatory)) (service.*message.run)(call);
        return;
    }
    call.fail(QmiError::invalid_command);
}

}  // namespace rbk::sim
