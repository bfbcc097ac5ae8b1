#include "simulator/services/sar_service.h"

#include <array>

#include "simulator/modem/modem.h"
#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

constexpr std::uint32_t kHighestDsi = 20;  // 0: none
constexpr std::string_view kDsi = "sar/dsi";

int store_dsi(StateStore& store, std::uint32_t dsi)
{
    std::array<std::uint8_t, 4> bytes{};
    store_le(bytes.data(), dsi);
    return store.write(kDsi, bytes);
}

struct SarSettings final : ServiceSettings {
    std::uint32_t dsi = 0;
    bool fill(StateStore& fresh) const override { return store_dsi(fresh, dsi) == 0; }
};

class SarService final : public Service {
 public:
    explicit SarService(Modem& modem) : Service({"sar", 17, ResultForm::halves}, modem) {}

 private:
    void handle(Call& call) override { run_message(*this, kMessages, call); }
    void set_state(Call& call);
    void get_state(Call& call);

    static const Message<SarService> kMessages[2];
};

constexpr Message<SarService> SarService::kMessages[2] = {
    {0x0001, &SarService::set_state, {{{0x01, 4}}}},
    {0x0002, &SarService::get_state},
};

void SarService::set_state(Call& call)
{
    const auto dsi = call.number<std::uint32_t>(0x01);
    if (dsi > kHighestDsi) return call.fail(QmiError::invalid_argument);
    if (store_dsi(modem().store(), dsi) != 0) call.fail(QmiError::internal);
}

// A modem whose file is gone works without a table.
void SarService::get_state(Call& call)
{
    call.answer.number(0x10, peek_le<std::uint32_t>(modem().store().read(kDsi).bytes, 0));
}

}  // namespace

std::unique_ptr<const ServiceSettings> read_sar_settings(TableReader* file)
{
    auto settings = std::make_unique<SarSettings>();
    const ScenarioNode* node = file == nullptr ? nullptr : file->find("sar");
    if (node == nullptr) return settings;
    TableReader table("[sar]", *node);
    settings->dsi = static_cast<std::uint32_t>(table.number("dsi", 0, kHighestDsi).value_or(0));
    table.finish();
    return settings;
}

std::unique_ptr<Service> make_sar_service(Modem& modem, const ServiceSettings*)
{
    return std::make_unique<SarService>(modem);
}

}  // namespace rbk::sim
