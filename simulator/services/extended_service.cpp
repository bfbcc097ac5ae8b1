#include "simulator/services/extended_service.h"

#include <algorithm>

#include "simulator/modem/modem.h"
#include "simulator/services/common_requests.h"
#include "simulator/services/debug_info.h"
#include "simulator/services/nvefs_requests.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kEnvelopeData = 550;  // bytes of TLV 0x10, whatever part of them means something

enum EnvelopeTlv : std::uint8_t { kQmiId = 0x01, kDataLen = 0x02, kDataTlv = 0x10 };

// Request ids of the envelope.
enum RequestId : std::uint32_t { kLegacyNv = 1, kNvEfs = 2, kCommon = 4 };
constexpr std::uint32_t kHighestRequestId = 5;  // 0, 3 and 5 give the request's bytes back

// The bytes of a request's envelope that mean something.
ByteView envelope_data(ByteView tlvs)
{
    const ByteView data = find_tlv(tlvs, kDataTlv).value_or(ByteView{});
    const auto data_len = peek_le<std::uint32_t>(find_tlv(tlvs, kDataLen).value_or(ByteView{}), 0);
    return data.first(std::min<std::size_t>(data.size(), data_len));
}

// An answer's envelope; what it returns is the whole of TLV 0x10, to be filled in.
std::span<std::uint8_t> write_envelope(TlvWriter& answer, std::int32_t first_word, std::size_t data_len)
{
    answer.number(kQmiId, first_word);
    answer.number(kDataLen, static_cast<std::uint32_t>(data_len));
    return answer.zeros(kDataTlv, kEnvelopeData);
}

// The record in the answer to a request id: its bytes, and where its result stands; 0 where it has none.
struct AnswerRecord {
    std::size_t size = 0;
    std::size_t result_at = 0;
};

AnswerRecord answer_record(std::uint32_t request_id)
{
    switch (request_id) {
    case kLegacyNv: return {kLegacyNvAnswerSize, kLegacyNvResultAt};
    case kNvEfs: return {kNvEfsAnswerSize, kNvEfsResultAt};
    case kCommon: return {kCommonAnswerSize, kCommonResultAt};
    default: return {};
    }
}

class ExtendedService final : public Service {
 public:
    ExtendedService(Modem& modem, const DebugInfo& debug_info)
        : Service({"extended", 0xFFE4, ResultForm::own}, modem), nvefs_(modem.store()), debug_info_(debug_info)
    {
    }

 private:
    void handle(Call& call) override { run_message(*this, kMessages, call); }
    void tell_holdings(ClientId client, Holdings& held) const override { nvefs_.tell_holdings(client, held); }
    void client_gone(ClientId client) override { nvefs_.client_gone(client); }

    ByteView fault_subject(ByteView tlvs) const override { return envelope_data(tlvs); }
    std::optional<std::uint32_t> fault_qmi_id(ByteView tlvs) const override;
    void set_result(ByteView request, std::span<std::uint8_t> answer, std::int32_t code) const override;
    void refuse(Call& call, std::int32_t code) override;
    void write_result(std::uint16_t message, std::int32_t error, TlvWriter& answer) const override;

    void envelope(Call& call);
    void echo(Call& call);
    void acknowledge(Call& call);
    bool check_data(Call& call) const;

    static const Message<ExtendedService> kMessages[5];
    NvEfsRequests nvefs_;
    const DebugInfo& debug_info_;
};

constexpr Message<ExtendedService> ExtendedService::kMessages[5] = {
    {2, &ExtendedService::envelope, {{{kQmiId, 4}, {kDataLen, 4}}}},
    {3, &ExtendedService::echo, {{{kQmiId, 4}, {kDataLen, 4}}}},
    {4, &ExtendedService::acknowledge, {{{kQmiId, 4}, {kDataLen, 4}}}},
    {10, &ExtendedService::acknowledge, {{{0x01, 4}, {0x02, 4}, {0x03, 64UL * 24}}}},
    {12, &ExtendedService::acknowledge, {{{0x01, 4}, {0x02, 4}, {0x03, 1}}}},
};

std::optional<std::uint32_t> ExtendedService::fault_qmi_id(ByteView tlvs) const
{
    const std::optional<ByteView> word = find_tlv(tlvs, kQmiId);
    return word && word->size() == 4 ? std::optional(load_le<std::uint32_t>(word->data())) : std::nullopt;
}

void ExtendedService::set_result(ByteView request, std::span<std::uint8_t> answer, std::int32_t code) const
{
    const std::size_t at = answer_record(fault_qmi_id(request).value_or(0)).result_at;
    const std::optional<ByteView> data = find_tlv(answer, kDataTlv);
    if (at == 0 || !data || data->size() != kEnvelopeData) return;
    store_le(&answer[static_cast<std::size_t>(data->data() - answer.data()) + at], code);
}

void ExtendedService::refuse(Call& call, std::int32_t code)
{
    const auto request_id = call.number<std::uint32_t>(kQmiId);
    const AnswerRecord record = answer_record(request_id);
    if (call.message != 2 || record.size == 0) return handle(call);
    const std::span<std::uint8_t> answer = write_envelope(call.answer, 0, record.size);
    if (request_id == kCommon)
        store_le(&answer[0], peek_le<std::uint32_t>(envelope_data(call.tlvs), 0));  // the command
    store_le(&answer[record.result_at], code);
}

// There is no result TLV: an answer's first word is the error. Success is written by the handlers, with the rest.
void ExtendedService::write_result(std::uint16_t message, std::int32_t error, TlvWriter& answer) const
{
    if (error == 0) return;
    if (message == 2 || message == 3) {
        write_envelope(answer, error, 0);
    } else {
        answer.number(0x01, error);
        answer.number(0x02, std::uint32_t{0});
    }
}

bool ExtendedService::check_data(Call& call) const
{
    const ByteView data = call.find(kDataTlv).value_or(ByteView{});
    if (data.size() > kEnvelopeData) {
        call.fail(QmiError::malformed_message);
    } else if (call.number<std::uint32_t>(kDataLen) > kEnvelopeData) {
        call.fail(QmiError::invalid_argument);
    }
    return !call.failed();
}

void ExtendedService::envelope(Call& call)
{
    if (!check_data(call)) return;
    const ByteView request = envelope_data(call.tlvs);
    switch (call.number<std::uint32_t>(kQmiId)) {
    case kLegacyNv: nvefs_.run_legacy_read(request, write_envelope(call.answer, 0, kLegacyNvAnswerSize)); break;
    case kNvEfs: nvefs_.run(call.client, request, write_envelope(call.answer, 0, kNvEfsAnswerSize)); break;
    case kCommon:
        run_common_request(modem(), debug_info_, request,
                           write_envelope(call.answer, 0, kCommonAnswerSize).first(kCommonAnswerSize));
        break;
    default:
        if (call.number<std::uint32_t>(kQmiId) > kHighestRequestId) return call.fail(QmiError::invalid_argument);
        echo(call);
    }
}

void ExtendedService::echo(Call& call)
{
    if (!check_data(call)) return;
    const ByteView request = envelope_data(call.tlvs);
    std::copy(request.begin(), request.end(), write_envelope(call.answer, 0, request.size()).begin());
}

// Two words: success, and the request's first word again.
void ExtendedService::acknowledge(Call& call)
{
    call.answer.number(0x01, std::uint32_t{0});
    call.answer.number(0x02, call.number<std::uint32_t>(0x01));
}

}  // namespace

std::unique_ptr<Service> make_extended_service(Modem& modem, const ServiceSettings* settings)
{
    return std::make_unique<ExtendedService>(modem, *static_cast<const DebugInfo*>(settings));
}

}  // namespace rbk::sim
