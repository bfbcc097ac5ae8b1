#include "simulator/modem/service.h"

#include "simulator/modem/modem.h"

namespace rbk::sim {

Call::Call(const Service& service, ClientId from, std::uint16_t id, ByteView request, Bytes& bytes)
    : client(from), message(id), tlvs(request), answer(bytes), service_(service), bytes_(bytes)
{
    service_.write_result(message, 0, answer);
}

void Call::fail(QmiError error)
{
    failed_ = true;
    bytes_.clear();
    service_.write_result(message, static_cast<std::int32_t>(error), answer);
}

void Service::set_result(ByteView, std::span<std::uint8_t>, std::int32_t) const {}

void Service::write_result(std::uint16_t, std::int32_t error, TlvWriter& answer) const
{
    const auto halves = static_cast<std::uint16_t>(error);
    if (identity_.result == ResultForm::halves) {
        answer.number(0x02, static_cast<std::uint32_t>(error == 0 ? 0 : 1) | static_cast<std::uint32_t>(halves) << 16);
    } else if (identity_.result == ResultForm::words) {
        answer.number(0x02, static_cast<std::uint64_t>(error == 0 ? 0 : 1) | static_cast<std::uint64_t>(halves) << 32);
    }
}

void Service::after(ClientId client, std::chrono::milliseconds delay, std::function<void()> task, std::size_t size)
{
    modem_.put_off(*this, client, delay, std::move(task), size);
}

bool check_mandatory(Call& call, const std::array<MandatoryTlv, 4>& mandatory)
{
    for (const MandatoryTlv& needed : mandatory) {
        if (needed.type == 0) break;
        const std::optional<ByteView> value = call.find(needed.type);
        if (!value) {
            call.fail(QmiError::missing_argument);
            return false;
        }
        if (needed.size != 0 && value->size() != needed.size) {
            call.fail(QmiError::malformed_message);
            return false;
        }
    }
    return true;
}

}  // namespace rbk::sim
