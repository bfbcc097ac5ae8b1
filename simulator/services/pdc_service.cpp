#include "simulator/services/pdc_service.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "simulator/modem/modem.h"
#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kLongestId = 124;
constexpr std::size_t kLongestDescription = 255;
constexpr std::size_t kChunk = 25;     // configurations in one indication
constexpr std::size_t kFrame = 32768;  // bytes of a report in one indication
constexpr std::uint32_t kLastFrame = 0xFFFFFFFF;
constexpr std::uint32_t kEfsRoom = 16 * 1024 * 1024;        // bytes: a larger configuration has no room
constexpr std::size_t kLongestReport = 64UL * 1024 * 1024;  // bytes
constexpr std::size_t kConfigs = 256;                       // one more has no room either
constexpr std::size_t kLoads = 16;                          // configurations on their way in
constexpr std::size_t kDeactivated = 16;                    // remembered; the oldest is forgotten first
constexpr std::chrono::milliseconds kFramePace{1};          // between frames, for the client to read them

constexpr std::uint32_t kPlatform = 0;  // types of configurations
constexpr std::uint32_t kSoftware = 1;

constexpr std::uint16_t kValidate = 0x002C;
constexpr std::uint16_t kRefresh = 0x002F;  // indication of an event
enum class RefreshEvent : std::uint32_t { start, complete };

// TLVs. The first stands in every message, token and error in every indication.
enum : std::uint8_t { kFirst = 0x01, kError = 0x01, kToken = 0x10, kWatchRefresh = 0x11 };

struct Config {
    Bytes id;
    std::uint32_t type = kSoftware;
    std::string description;
    std::uint32_t version = 0;
    std::uint32_t size = 0;
};

// What a subscription runs, and what it will run once that is activated. Nothing: no configuration.
struct Selection {
    std::optional<Bytes> active;
    std::optional<Bytes> pending;
};

constexpr std::string_view kActive = "/active";
constexpr std::string_view kPending = "/pending";

// Where a selection is stored: by subscription, and for the platform's configuration once for all.
std::string place(std::uint32_t type, std::uint32_t sub)
{
    return type == kPlatform ? "pdc/platform" : "pdc/sub" + std::to_string(sub);
}

// ---- Scenario ----

// What the built-in phone has stored.
std::vector<Config> built_in_configs()
{
    return {
        {{0x6A, 0x1F, 0x03, 0x52, 0x90, 0x4E, 0xC7, 0x18, 0x2B, 0x33,
          0x75, 0x8D, 0xA0, 0x09, 0xE4, 0x5C, 0x61, 0xD2, 0xF7, 0x10},
         kSoftware,
         "Net One",
         0x05010203,
         4711},
        {{0x2C, 0x90, 0x5B, 0xE1, 0x77, 0x08, 0x4A, 0x63, 0x1D, 0xF5,
          0xB9, 0x26, 0x3E, 0xC4, 0x80, 0x57, 0x9A, 0x0B, 0x6D, 0x20},
         kSoftware,
         "Net Two",
         0x05020304,
         5120},
        {{0xD4, 0x3B, 0x86, 0x0F, 0x59, 0xA2, 0xE8, 0x71, 0xC6, 0x14,
          0x9D, 0x4F, 0x02, 0xB7, 0x38, 0xEA, 0x65, 0x93, 0x1C, 0x30},
         kSoftware,
         "Open market",
         0x05000001,
         3072},
        {{0x81, 0x5E, 0xA9, 0x24, 0xF0, 0x7D, 0x36, 0xCB, 0x42, 0x9F,
          0x0A, 0xD5, 0x68, 0x13, 0xBE, 0x74, 0xE3, 0x2A, 0x57, 0x40},
         kPlatform,
         "Platform",
         0x01000000,
         2048},
    };
}

struct PdcSettings final : ServiceSettings {
    std::chrono::milliseconds indication{20};
    std::chrono::milliseconds settle{0};  // of a switch, behind its outcome
    Bytes report = {'<', 'N', 'v', 'D', 'a', 't', 'a', '/', '>', '\n'};
    std::vector<Config> configs = built_in_configs();
    Selection subs[2] = {{configs[0].id, std::nullopt}, {configs[1].id, std::nullopt}};

    bool fill(StateStore& fresh) const override
    {
        for (std::uint32_t sub = 0; sub < 2; ++sub) {
            const std::string at = place(kSoftware, sub);
            if (subs[sub].active && fresh.write(at + std::string(kActive), *subs[sub].active) != 0) return false;
            if (subs[sub].pending && fresh.write(at + std::string(kPending), *subs[sub].pending) != 0) return false;
        }
        return true;
    }
};

Config read_config(const ScenarioNode& node)
{
    TableReader table("[[pdc.config]]", node);
    Config config;
    config.id = table.need("id").bytes("id", kLongestId);
    if (config.id.empty()) table.refuse("an id of 1 byte or more");
    const auto word = [&](const char* key, std::uint32_t otherwise) {
        return static_cast<std::uint32_t>(table.number(key, 0, UINT32_MAX).value_or(otherwise));
    };
    config.type = word("type", config.type);
    config.version = word("version", config.version);
    config.size = word("size", config.size);
    config.description = table.text("description").value_or("");
    if (config.description.size() > kLongestDescription) {
        table.refuse("a description of at most " + std::to_string(kLongestDescription) + " bytes");
    }
    table.finish();
    return config;
}

// ---- The service ----

// A configuration as a request names it: type, and an id that a byte counts. `rest` is what stands behind them.
struct Named {
    std::uint32_t type = 0;
    Bytes id;
    ByteView rest;
};

std::optional<Named> read_named(ByteView value)
{
    if (value.size() < 5 || value[4] > kLongestId || value.size() - 5 < value[4]) return std::nullopt;
    const ByteView id = value.subspan(5, value[4]);
    return Named{load_le<std::uint32_t>(value.data()), Bytes(id.begin(), id.end()), value.subspan(5 + id.size())};
}

// A TLV of a count and the bytes that it counts.
template <typename Count>
void write_counted(TlvWriter& writer, std::uint8_t type, ByteView bytes)
{
    const std::span<std::uint8_t> value = writer.zeros(type, sizeof(Count) + bytes.size());
    store_le(value.data(), static_cast<Count>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), value.begin() + sizeof(Count));
}

class PdcService final : public Service {
 public:
    PdcService(Modem& modem, const PdcSettings& settings)
        : Service({"pdc", 36, ResultForm::halves}, modem), settings_(settings), configs_(settings.configs)
    {
    }

 private:
    void handle(Call& call) override { run_message(*this, kMessages, call); }
    void tell_holdings(ClientId client, Holdings& held) const override;
    void client_gone(ClientId client) override
    {
        listings_.erase(client);
        watching_.erase(client);
        std::erase_if(loads_, [client](const Load& load) { return load.client == client; });
    }

    void watch(Call& call);
    void get_selected(Call& call);
    void set_selected(Call& call);
    void list(Call& call);
    void remove(Call& call);
    void load(Call& call);
    void activate(Call& call);
    void tell_info(Call& call);
    void tell_default(Call& call);
    void deactivate(Call& call);
    void validate(Call& call);
    void set_feature(Call& call) { outcome(call, QmiError::none); }

    // The outcome of a request is an indication of its number, whose TLVs `more` adds to error and token.
    void outcome(Call& call, QmiError error) { call.indicate(call.message, begin(call, error), settings_.indication); }
    template <typename More>
    void outcome(Call& call, QmiError error, More more)
    {
        Bytes tlvs = begin(call, error);
        TlvWriter writer(tlvs);
        more(writer);
        call.indicate(call.message, std::move(tlvs), settings_.indication);
    }
    static Bytes begin(const Call& call, QmiError error);

    // What a subscription runs has changed, or it couldn't be: the outcome, and in between a refresh that watchers hear of.
    void refreshed(Call& call, const std::string& at, bool written);
    bool settles(const std::string& at) const;
    void tell_watchers(RefreshEvent event, std::chrono::milliseconds delay);

    // How far a client has been told the list; of one type, or of all.
    struct Listing {
        std::optional<std::uint32_t> type;
        std::size_t next = 0;
    };

    // Where the request's selection is stored; nothing, and the call fails, when it can't be.
    std::optional<std::string> find_place(Call& call, std::uint32_t type, std::uint8_t sub_tlv) const;
    std::optional<Named> find_named(Call& call) const;
    Config* find_config(const Named& named);
    std::optional<Bytes> stored(const std::string& at, std::string_view what);
    bool is_known(const Named& named, const std::string& at);
    bool is_in_use(const Config& config);
    void erase(std::size_t index);
    bool has_more(const Listing& listing) const;
    std::size_t frame_count() const
    {
        return std::max<std::size_t>((settings_.report.size() + kFrame - 1) / kFrame, 1);
    }
    Bytes frame(const Bytes& head, std::size_t index) const;
    void stream(ClientId client, const Bytes& head, std::size_t index);

    static const Message<PdcService> kMessages[12];

    struct Load {
        ClientId client = 0;
        Config config;
        std::uint32_t received = 0;
    };

    const PdcSettings& settings_;
    std::vector<Config> configs_;  // what loads and deletions make of the settings' lasts until the modem goes down
    std::vector<std::pair<std::uint32_t, Bytes>> deactivated_;     // stays selectable, whether it is in the list or not
    std::map<std::string, EventLoop::Clock::time_point> settled_;  // by place: when its latest switch is over
    std::map<ClientId, Listing> listings_;
    std::set<ClientId> watching_;  // that want to hear of refreshes
    std::vector<Load> loads_;      // unfinished ones
};

constexpr Message<PdcService> PdcService::kMessages[12] = {
    {0x0020, &PdcService::watch},
    {0x0022, &PdcService::get_selected, {{{kFirst, 4}}}},
    {0x0023, &PdcService::set_selected, {{{kFirst, 0}}}},
    {0x0024, &PdcService::list},
    {0x0025, &PdcService::remove, {{{kFirst, 4}}}},
    {0x0026, &PdcService::load, {{{kFirst, 0}}}},
    {0x0027, &PdcService::activate, {{{kFirst, 4}}}},
    {0x0028, &PdcService::tell_info, {{{kFirst, 0}}}},
    {0x002A, &PdcService::tell_default, {{{kFirst, 4}}}},
    {0x002B, &PdcService::deactivate, {{{kFirst, 4}}}},
    {kValidate, &PdcService::validate, {{{kFirst, 0}}}},
    {0x002E, &PdcService::set_feature, {{{kFirst, 4}}}},
};

Bytes PdcService::begin(const Call& call, QmiError error)
{
    Bytes tlvs;
    TlvWriter writer(tlvs);
    writer.number(kError, static_cast<std::uint16_t>(error));
    if (call.find(kToken)) writer.number(kToken, call.number<std::uint32_t>(kToken));
    return tlvs;
}

std::optional<std::string> PdcService::find_place(Call& call, std::uint32_t type, std::uint8_t sub_tlv) const
{
    const auto sub = call.number<std::uint32_t>(sub_tlv);
    if (type <= kSoftware && sub <= 1) return place(type, sub);
    call.fail(QmiError::invalid_argument);
    return std::nullopt;
}

std::optional<Named> PdcService::find_named(Call& call) const
{
    std::optional<Named> named = read_named(*call.find(kFirst));
    if (!named) call.fail(QmiError::malformed_message);
    return named;
}

Config* PdcService::find_config(const Named& named)
{
    const auto found = std::find_if(configs_.begin(), configs_.end(), [&](const Config& config) {
        return config.type == named.type && config.id == named.id;
    });
    return found == configs_.end() ? nullptr : &*found;
}

std::optional<Bytes> PdcService::stored(const std::string& at, std::string_view what)
{
    StoredValue value = modem().store().read(at + std::string(what));
    // Whoever puts a longer one there has put no id.
    if (value.error != 0 || value.bytes.size() > kLongestId) return std::nullopt;
    return std::move(value.bytes);
}

// ---- What a subscription runs ----

void PdcService::watch(Call& call)
{
    if (!call.find(kWatchRefresh)) return;
    if (call.number<std::uint8_t>(kWatchRefresh) != 0)
        watching_.insert(call.client);
    else
        watching_.erase(call.client);
}

void PdcService::get_selected(Call& call)
{
    const auto at = find_place(call, call.number<std::uint32_t>(kFirst), 0x11);
    if (!at) return;
    outcome(call, QmiError::none, [&](TlvWriter& writer) {
        if (const auto id = stored(*at, kActive)) write_counted<std::uint8_t>(writer, 0x11, *id);
        if (const auto id = stored(*at, kPending)) write_counted<std::uint8_t>(writer, 0x12, *id);
    });
}

bool PdcService::is_known(const Named& named, const std::string& at)
{
    return find_config(named) != nullptr || stored(at, kActive) == named.id || stored(at, kPending) == named.id ||
           std::find(deactivated_.begin(), deactivated_.end(), std::pair(named.type, named.id)) != deactivated_.end();
}

void PdcService::set_selected(Call& call)
{
    const auto named = find_named(call);
    if (!named) return;
    const auto at = find_place(call, named->type, 0x11);
    if (!at) return;
    if (!is_known(*named, *at)) return outcome(call, QmiError::no_such_id);
    if (settles(*at)) return outcome(call, QmiError::not_in_this_state);
    const bool written = modem().store().write(*at + std::string(kPending), named->id) == 0;
    outcome(call, written ? QmiError::none : QmiError::internal);
}

// What is pending comes into force; without it, what is active is applied once more.
void PdcService::activate(Call& call)
{
    const auto at = find_place(call, call.number<std::uint32_t>(kFirst), 0x12);
    if (!at) return;
    const auto pending = stored(*at, kPending);
    if (settles(*at) || (!pending && !stored(*at, kActive))) return outcome(call, QmiError::not_in_this_state);
    if (!pending) return refreshed(call, *at, true);
    StateStore& store = modem().store();
    // In this order: after a kill between the two the same activation is done once more.
    refreshed(call, *at,
              store.write(*at + std::string(kActive), *pending) == 0 && store.remove(*at + std::string(kPending)) == 0);
}

void PdcService::deactivate(Call& call)
{
    const auto type = call.number<std::uint32_t>(kFirst);
    const auto at = find_place(call, type, 0x11);
    if (!at) return;
    if (settles(*at)) return outcome(call, QmiError::not_in_this_state);
    const auto active = stored(*at, kActive);
    if (!active) return outcome(call, QmiError::no_effect);
    const std::pair gone(type, *active);
    std::erase(deactivated_, gone);
    if (deactivated_.size() == kDeactivated) deactivated_.erase(deactivated_.begin());
    deactivated_.push_back(gone);
    refreshed(call, *at, modem().store().remove(*at + std::string(kActive)) == 0);
}

// Whether a switch that was told as done is still under way there.
bool PdcService::settles(const std::string& at) const
{
    const auto settled = settled_.find(at);
    return settled != settled_.end() && EventLoop::Clock::now() < settled->second;
}

void PdcService::refreshed(Call& call, const std::string& at, bool written)
{
    if (written) {
        if (settings_.settle.count() > 0)
            settled_[at] = EventLoop::Clock::now() + settings_.indication + settings_.settle;
        tell_watchers(RefreshEvent::start, {});
        tell_watchers(RefreshEvent::complete, settings_.indication);
    }
    outcome(call, written ? QmiError::none : QmiError::internal);
}

void PdcService::tell_watchers(RefreshEvent event, std::chrono::milliseconds delay)
{
    Bytes tlvs;
    TlvWriter(tlvs).number(kFirst, static_cast<std::uint32_t>(event));
    for (const ClientId watcher : watching_)
        after(watcher, delay, [this, watcher, tlvs] { modem().indicate(*this, watcher, kRefresh, tlvs); });
}

// ---- What is stored in the modem ----

// The list goes out in chunks; a request with the flag 0x12 asks for the one behind the last.
void PdcService::list(Call& call)
{
    Listing& listing = listings_[call.client];
    if (call.number<std::uint8_t>(0x12) == 0) listing = {};
    listing.type.reset();
    if (call.find(0x11)) listing.type = call.number<std::uint32_t>(0x11);

    Bytes entries(1);
    while (listing.next < configs_.size() && entries[0] < kChunk) {
        const Config& config = configs_[listing.next++];
        if (listing.type && config.type != *listing.type) continue;
        append_le(entries, config.type);
        append_le(entries, static_cast<std::uint8_t>(config.id.size()));
        entries.insert(entries.end(), config.id.begin(), config.id.end());
        ++entries[0];
    }
    const bool more = has_more(listing);
    outcome(call, QmiError::none, [&](TlvWriter& writer) {
        writer.bytes(0x11, entries);
        writer.number(0x12, static_cast<std::uint8_t>(more));
    });
}

bool PdcService::has_more(const Listing& listing) const
{
    return std::any_of(configs_.begin() + static_cast<std::ptrdiff_t>(listing.next), configs_.end(),
                       [&](const Config& config) { return !listing.type || config.type == *listing.type; });
}

void PdcService::tell_holdings(ClientId client, Holdings& held) const
{
    const auto listing = listings_.find(client);
    if (listing != listings_.end() && has_more(listing->second)) ++held.pdc_lists;
    held.pdc_loads += static_cast<std::size_t>(
        std::ranges::count_if(loads_, [client](const Load& load) { return load.client == client; }));
}

bool PdcService::is_in_use(const Config& config)
{
    return stored(place(config.type, 0), kActive) == config.id || stored(place(config.type, 1), kActive) == config.id;
}

void PdcService::erase(std::size_t index)
{
    configs_.erase(configs_.begin() + static_cast<std::ptrdiff_t>(index));
    for (auto& [client, listing] : listings_) {
        if (index < listing.next) --listing.next;  // who is told the list in chunks misses none
    }
}

// One configuration, or without an id all of its type that nothing runs.
void PdcService::remove(Call& call)
{
    Named named{call.number<std::uint32_t>(kFirst), {}, {}};
    const std::optional<ByteView> id = call.find(0x11);
    if (id && (id->empty() || id->size() - 1 != (*id)[0])) return call.fail(QmiError::malformed_message);
    if (!id) {
        for (std::size_t i = configs_.size(); i-- > 0;) {
            if (configs_[i].type == named.type && !is_in_use(configs_[i])) erase(i);
        }
        return outcome(call, QmiError::none);
    }
    named.id.assign(id->begin() + 1, id->end());
    const Config* config = find_config(named);
    if (config == nullptr) return outcome(call, QmiError::no_such_id);
    if (is_in_use(*config)) return outcome(call, QmiError::not_in_this_state);
    erase(static_cast<std::size_t>(config - configs_.data()));
    outcome(call, QmiError::none);
}

// A configuration comes in frames. Of its content the modem keeps nothing but the count.
void PdcService::load(Call& call)
{
    const auto named = find_named(call);
    if (!named) return;
    if (named->rest.size() < 6 || named->rest.size() - 6 != load_le<std::uint16_t>(&named->rest[4]) ||
        named->id.empty()) {
        return call.fail(QmiError::malformed_message);
    }
    const auto total = load_le<std::uint32_t>(named->rest.data());
    const auto frame = static_cast<std::uint32_t>(named->rest.size() - 6);
    if (find_config(*named) != nullptr) return outcome(call, QmiError::invalid_identifier);

    auto load = std::find_if(loads_.begin(), loads_.end(), [&](const Load& under_way) {
        return under_way.client == call.client && under_way.config.type == named->type &&
               under_way.config.id == named->id;
    });
    if (load == loads_.end()) {
        if (total > kEfsRoom || loads_.size() == kLoads || configs_.size() + loads_.size() >= kConfigs) {
            return outcome(call, QmiError::no_memory);
        }
        load = loads_.insert(load, Load{call.client, {named->id, named->type, "", 0, total}});
    }
    if (total != load->config.size || frame > total - load->received) {
        loads_.erase(load);
        return outcome(call, QmiError::none, [](TlvWriter& writer) { writer.number(0x13, std::uint8_t{1}); });
    }
    load->received += frame;
    const std::uint32_t received = load->received;
    if (received == total) {
        configs_.push_back(std::move(load->config));
        loads_.erase(load);
    }
    outcome(call, QmiError::none, [&](TlvWriter& writer) {
        writer.number(0x11, received);
        writer.number(0x12, total - received);
    });
}

ByteView description_of(const Config& config)
{
    return {reinterpret_cast<const std::uint8_t*>(config.description.data()), config.description.size()};
}

void PdcService::tell_info(Call& call)
{
    const auto named = find_named(call);
    if (!named) return;
    const Config* config = find_config(*named);
    if (config == nullptr) return outcome(call, QmiError::no_such_id);
    outcome(call, QmiError::none, [&](TlvWriter& writer) {
        writer.number(0x11, config->size);
        write_counted<std::uint8_t>(writer, 0x12, description_of(*config));
        writer.number(0x13, config->version);
    });
}

// The first of its type is what the modem falls back to.
void PdcService::tell_default(Call& call)
{
    const auto type = call.number<std::uint32_t>(kFirst);
    const auto config =
        std::find_if(configs_.begin(), configs_.end(), [&](const Config& each) { return each.type == type; });
    if (config == configs_.end()) return outcome(call, QmiError::no_such_id);
    outcome(call, QmiError::none, [&](TlvWriter& writer) {
        writer.number(0x11, config->version);
        writer.number(0x12, config->size);
        write_counted<std::uint8_t>(writer, 0x13, description_of(*config));
    });
}

// ---- The report of a validation ----

void PdcService::validate(Call& call)
{
    const auto named = find_named(call);
    if (!named) return;
    if (find_config(*named) == nullptr) return outcome(call, QmiError::no_such_id);
    const Bytes head = begin(call, QmiError::none);
    call.indicate(kValidate, frame(head, 0), settings_.indication);
    if (frame_count() == 1) return;
    call.go_on([this, client = call.client, head] { stream(client, head, 1); }, settings_.indication + kFramePace);
}

// `head` is what each indication begins with. The last frame is known by its index.
Bytes PdcService::frame(const Bytes& head, std::size_t index) const
{
    const ByteView rest = ByteView(settings_.report).subspan(index * kFrame);
    Bytes tlvs = head;
    TlvWriter writer(tlvs);
    writer.number(0x11, index + 1 == frame_count() ? kLastFrame : static_cast<std::uint32_t>(index));
    write_counted<std::uint16_t>(writer, 0x12, rest.first(std::min(kFrame, rest.size())));
    return tlvs;
}

// One frame after the other.
void PdcService::stream(ClientId client, const Bytes& head, std::size_t index)
{
    modem().indicate(*this, client, kValidate, frame(head, index));
    if (index + 1 == frame_count()) return;
    after(client, kFramePace, [this, client, head, index] { stream(client, head, index + 1); });
}

}  // namespace

std::unique_ptr<const ServiceSettings> read_pdc_settings(TableReader* file)
{
    auto settings = std::make_unique<PdcSettings>();
    const ScenarioNode* node = file == nullptr ? nullptr : file->find("pdc");
    if (node == nullptr) return settings;
    TableReader table("[pdc]", *node);
    settings->indication = table.milliseconds("indication_ms").value_or(settings->indication);
    settings->settle = table.milliseconds("settle_ms").value_or(settings->settle);
    if (const ScenarioNode* report = table.find("report")) settings->report = report->file("report", kLongestReport);
    if (const ScenarioNode* configs = table.find("config")) {
        settings->configs.clear();
        std::set<std::pair<std::uint32_t, Bytes>> ids;
        for (const ScenarioNode& config : configs->list("[[pdc.config]]")) {
            Config read = read_config(config);
            if (!ids.emplace(read.type, read.id).second) config.refuse("[[pdc.config]]", "each id of a type once");
            settings->configs.push_back(std::move(read));
        }
    }
    for (std::uint32_t sub = 0; sub < 2; ++sub) {
        const std::string key = "sub" + std::to_string(sub);
        const ScenarioNode* selection = table.find(key);
        if (selection == nullptr) continue;
        TableReader reader("[pdc." + key + "]", *selection);
        settings->subs[sub] = {reader.bytes("active", kLongestId), reader.bytes("pending", kLongestId)};
        reader.finish();
    }
    table.finish();
    return settings;
}

std::unique_ptr<Service> make_pdc_service(Modem& modem, const ServiceSettings* settings)
{
    return std::make_unique<PdcService>(modem, *static_cast<const PdcSettings*>(settings));
}

}  // namespace rbk::sim
