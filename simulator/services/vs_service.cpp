#include "simulator/services/vs_service.h"

#include <optional>
#include <vector>

#include "simulator/modem/modem.h"
#include "simulator/services/stats_samples.h"

namespace rbk::sim {
namespace {

constexpr std::uint32_t kStatsFeature = 2;
constexpr std::string_view kStatsFeatureState = "vs/feature_2";  // status, whether there was a value, the value

constexpr std::uint16_t kSubscriptions = 2;
constexpr std::size_t kParametersMax = 10;      // of one request
constexpr std::size_t kParameterHeadSize = 10;  // sub, second word, id, count of bytes

struct VsSettings final : ServiceSettings {
    explicit VsSettings(TableReader* file) : samples(read_stats_samples(file)) {}
    StatsSamples samples;
};

// The ids that a request asks for: a count, and that many parameters with their values. Empty when it isn't all there.
std::optional<std::vector<std::uint32_t>> parse_ids(ByteView list)
{
    if (list.empty() || list[0] > kParametersMax) return std::nullopt;
    std::vector<std::uint32_t> ids;
    std::size_t at = 1;
    for (std::size_t i = 0; i < list[0]; ++i) {
        if (list.size() - at < kParameterHeadSize) return std::nullopt;
        ids.push_back(peek_le<std::uint32_t>(list, at + 4));
        const std::size_t value_len = peek_le<std::uint16_t>(list, at + 8);
        at += kParameterHeadSize;
        if (list.size() - at < value_len) return std::nullopt;
        at += value_len;
    }
    return ids;
}

class VsService final : public Service {
 public:
    VsService(Modem& modem, const VsSettings& settings)
        : Service({"vs", 228, ResultForm::words}, modem), samples_(settings.samples)
    {
    }

 private:
    void handle(Call& call) override { run_message(*this, kMessages, call); }
    void tell_holdings(ClientId client, Holdings& held) const override;
    void set_feature(Call& call);
    void get_parameters(Call& call);

    static const Message<VsService> kMessages[2];
    const StatsSamples& samples_;
};

constexpr Message<VsService> VsService::kMessages[2] = {
    {0x0003, &VsService::set_feature, {{{0x01, 4}, {0x02, 1}}}},
    {0x0207, &VsService::get_parameters, {{{0x01, 2}, {0x02, 2}, {0x03, 0}}}},
};

// A feature stays as it was set, also over the modem's end. Samples are there whether it is on or not.
void VsService::set_feature(Call& call)
{
    if (call.number<std::uint32_t>(0x01) != kStatsFeature) return call.fail(QmiError::not_supported);
    const bool has_value = call.find(0x10).has_value();
    const Bytes state{call.number<std::uint8_t>(0x02), static_cast<std::uint8_t>(has_value),
                      call.number<std::uint8_t>(0x10)};
    if (modem().store().read(kStatsFeatureState).bytes == state) return;
    if (modem().store().write(kStatsFeatureState, state) != 0) call.fail(QmiError::internal);
}

void VsService::tell_holdings(ClientId, Holdings& held) const
{
    const StoredValue state = modem().store().read(kStatsFeatureState);
    held.stats = !state.bytes.empty() && state.bytes[0] != 0 ? 1 : 0;
}

// Parameters without a sample are left out of the answer.
void VsService::get_parameters(Call& call)
{
    const auto sub = call.number<std::uint16_t>(0x01);
    const std::optional<std::vector<std::uint32_t>> ids = parse_ids(*call.find(0x03));
    if (!ids) return call.fail(QmiError::malformed_message);
    if (sub >= kSubscriptions) return call.fail(QmiError::invalid_argument);

    Bytes answered{0};
    for (const std::uint32_t id : *ids) {
        const auto sample = samples_.find({sub, id});
        if (sample == samples_.end()) continue;
        ++answered[0];
        append_le(answered, sub);
        append_le(answered, std::uint16_t{0});
        append_le(answered, id);
        append_le(answered, static_cast<std::uint16_t>(sample->second.size()));
        answered.insert(answered.end(), sample->second.begin(), sample->second.end());
    }
    call.answer.bytes(0x10, answered);
}

}  // namespace

std::unique_ptr<const ServiceSettings> read_vs_settings(TableReader* file)
{
    return std::make_unique<VsSettings>(file);
}

std::unique_ptr<Service> make_vs_service(Modem& modem, const ServiceSettings* settings)
{
    return std::make_unique<VsService>(modem, *static_cast<const VsSettings*>(settings));
}

}  // namespace rbk::sim
