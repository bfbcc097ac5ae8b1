#include "simulator/scenario/scenario.h"

#include <algorithm>

#include "link/diag_frame.h"
#include "link/qmi_frame.h"
#include "simulator/base/printable.h"
#include "simulator/scenario/built_in_phone.h"
#include "simulator/scenario/scenario_reader.h"
#include "simulator/state/nv_limits.h"

namespace rbk::sim {
namespace {

constexpr std::size_t kLongestScenarioFile = 16UL * 1024 * 1024;  // of EFS: more than a client can write, for its tests

std::string service_names()
{
    std::string names;
    for (const ServiceKind& kind : service_kinds()) names.append(names.empty() ? "" : ", ").append(kind.name);
    return names;
}

// `name` stands at `node`, under `key`.
const std::string& service_name(const std::string& name, const ScenarioNode& node, const std::string& key)
{
    const auto kinds = service_kinds();
    if (std::any_of(kinds.begin(), kinds.end(), [&](const ServiceKind& kind) { return kind.name == name; })) {
        return name;
    }
    node.refuse(key, "one of " + service_names());
}

const std::string& service_name(const ScenarioNode& node, const std::string& key)
{
    return service_name(node.text(key), node, key);
}

// A decimal number that fills `text`, at most `highest`.
std::optional<std::uint32_t> whole_number(std::string_view text, std::uint32_t highest)
{
    std::uint32_t number = 0;
    if (text.empty() || text.size() > 9) return std::nullopt;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        number = number * 10 + static_cast<std::uint32_t>(c - '0');
    }
    return number <= highest ? std::optional(number) : std::nullopt;
}

// ---- One table after the other ----

void read_servers(const ScenarioNode& node, Scenario& scenario)
{
    for (const auto& [name, value] : node.table("servers")) {
        TableReader table("[modem.servers]", value);
        const auto version = table.number("version", 0, 0xFF).value_or(1);
        const auto instance = table.number("instance", 0, 0xFF'FFFF).value_or(0);
        scenario.instances[service_name(name, value, name)] = static_cast<std::uint32_t>(instance << 8 | version);
        table.finish();
    }
}

void read_modem(TableReader& file, Scenario& scenario)
{
    const ScenarioNode* node = file.find("modem");
    if (node == nullptr) return;
    TableReader table("[modem]", *node);
    if (const ScenarioNode* services = table.find("services")) {
        scenario.services.clear();
        for (const ScenarioNode& name : services->list("services")) {
            scenario.services.push_back(service_name(name, "services"));
        }
    }
    if (const auto boot = table.milliseconds("boot_ms")) scenario.boot = *boot;
    if (const auto restart = table.milliseconds("restart_ms")) scenario.restart = *restart;
    if (const ScenarioNode* servers = table.find("servers")) read_servers(*servers, scenario);
    if (const auto ids = table.number("client_ids", 1, kMostClientIds)) {
        scenario.client_ids = static_cast<std::size_t>(*ids);
    }
    table.finish();
}

void read_nv(TableReader& file, Scenario& scenario)
{
    const ScenarioNode* node = file.find("nv");
    if (node == nullptr) return;
    EachOnce<std::pair<std::uint32_t, std::uint32_t>> once;
    for (const auto& [key, value] : node->table("[nv]")) {
        const std::size_t slash = std::min(key.find('/'), key.size());
        const auto sub = whole_number(std::string_view(key).substr(0, slash), 2);
        const auto item =
            slash < key.size() ? whole_number(std::string_view(key).substr(slash + 1), kHighestNvItem) : std::nullopt;
        if (!sub || !item || !nv_exists(*sub, *item)) {
            value.refuse(key, "\"<sub>/<item>\" with sub 0 or 1 (2 for item 550 alone) and item 0 to " +
                                  std::to_string(kHighestNvItem));
        }
        once.add(value, key, {*sub, *item});
        scenario.nv[{*sub, *item}] = value.bytes(key, kLongestNvItem);
    }
}

// Whether a file at `place` would make a folder of another one, or the other way round.
bool crosses(const std::map<EfsPlace, Bytes>& files, EfsPlace place)
{
    const auto next = files.upper_bound(place);  // what lies below a place comes right behind it
    if (next != files.end() && next->first.sub == place.sub && next->first.parts.size() > place.parts.size() &&
        std::equal(place.parts.begin(), place.parts.end(), next->first.parts.begin())) {
        return true;
    }
    while (place.parts.size() > 1) {
        place.parts.pop_back();
        if (files.contains(place)) return true;
    }
    return false;
}

void read_efs(TableReader& file, Scenario& scenario)
{
    const ScenarioNode* node = file.find("efs");
    if (node == nullptr) return;
    EachOnce<EfsPlace> once;
    for (const auto& [key, value] : node->table("[efs]")) {
        const std::size_t colon = std::min(key.find(':'), key.size());
        const auto sub = whole_number(std::string_view(key).substr(0, colon), 1);
        const std::string path = colon < key.size() ? key.substr(colon + 1) : "";
        std::optional<EfsPlace> place;
        if (sub && path.size() <= kLongestEfsPath && path.find('\0') == std::string::npos) {
            place = EfsPlace::parse(*sub, {reinterpret_cast<const std::uint8_t*>(path.data()), path.size()});
        }
        if (!place) {
            value.refuse(key, "\"<sub>:<path>\" with sub 0 or 1 and the path of a file, at most " +
                                  std::to_string(kLongestEfsPath) + " bytes without ..");
        }
        if (crosses(scenario.efs, *place)) {
            value.refuse(key, "the path of a file that neither lies below another one nor holds it");
        }
        once.add(value, key, *place);
        scenario.efs[*place] = value.bytes(key, kLongestScenarioFile);
    }
}

void read_at(TableReader& file, Scenario& scenario)
{
    const ScenarioNode* node = file.find("at");
    if (node == nullptr) return;
    for (const auto& [command, answer] : node->table("[at]")) {
        if (command.empty() || command.size() > kLongestAtCommand ||
            command.find_first_of("\r\n") != std::string::npos) {
            answer.refuse("[at]", "commands of 1 to " + std::to_string(kLongestAtCommand) + " bytes on one line");
        }
        scenario.at[command] = answer.text(command);
    }
}

void read_indication(const ScenarioNode& node, Scenario& scenario)
{
    TableReader table("[[indication]]", node);
    UnaskedIndication indication;
    indication.service = service_name(table.need("service"), "service");
    if (indication.service == "diag") table.refuse("a service of QMI messages; diag has [[diag.stream]]");
    indication.message = static_cast<std::uint16_t>(table.need("message").number("message", 0, 0xFFFF));
    indication.tlvs = table.need("bytes").bytes("bytes", link::kLongestTlvs);
    indication.after = table.milliseconds("after_ms").value_or(indication.after);
    indication.every = table.milliseconds("every_ms");
    if (indication.every && indication.every->count() == 0) table.refuse("every_ms of 1 or more");
    table.finish();
    scenario.indications.push_back(std::move(indication));
}

// ---- Fault rules ----

struct ActionName {
    std::string_view name;
    FaultAction action;
    bool for_requests;
    bool for_indications;
};
constexpr ActionName kActions[] = {
    {"silent", FaultAction::silent, true, true},     {"delay", FaultAction::delay, true, true},
    {"error", FaultAction::error, true, false},      {"result", FaultAction::result, true, false},
    {"refuse", FaultAction::refuse, true, false},    {"raw", FaultAction::raw, true, true},
    {"indicate", FaultAction::indicate, true, true}, {"twice", FaultAction::twice, false, true},
    {"early", FaultAction::early, false, true},      {"down", FaultAction::down, true, true},
    {"pull", FaultAction::pull, true, false},
};

FaultAction read_action(const ScenarioNode& node, bool on_indication)
{
    const std::string& name = node.text("action");
    std::string names;
    for (const ActionName& row : kActions) {
        if (!(on_indication ? row.for_indications : row.for_requests)) continue;
        if (row.name == name) return row.action;
        names.append(names.empty() ? "" : ", ").append(row.name);
    }
    node.refuse("action", "one of " + names);
}

// Of a request, an answer or an indication; of a diag request or packet.
std::size_t longest_bytes(const FaultRule& rule)
{
    return rule.service == "diag" ? link::kLongestDiagBytes : link::kLongestTlvs;
}

void read_fault_matching(TableReader& table, FaultRule& rule)
{
    if (const auto message = table.number("message", 0, 0xFFFF)) {
        if (rule.service == "diag") table.refuse("no message with the service diag, whose requests have no number");
        rule.message = static_cast<std::uint16_t>(*message);
    }
    if (const auto qmi_id = table.number("qmi_id", 0, UINT32_MAX)) {
        if (rule.service != "extended") table.refuse("qmi_id with the service extended alone");
        rule.qmi_id = static_cast<std::uint32_t>(*qmi_id);
    }
    rule.prefix = table.bytes("prefix", longest_bytes(rule)).value_or(Bytes{});
    if (const ScenarioNode* on = table.find("on")) {
        const std::string& what = on->text("on");
        if (what != "request" && what != "indication") on->refuse("on", "request or indication");
        rule.on_indication = what == "indication";
    }
}

void read_fault_call(TableReader& table, FaultRule& rule)
{
    const ScenarioNode* call = table.find("call");
    if (call == nullptr) return;
    rule.call = call->text("call");
    const auto& calls = link::kDiagCallNames;
    if (std::find(calls.begin(), calls.end(), rule.call) == calls.end()) {
        std::string names;
        for (const std::string_view name : calls) names.append(names.empty() ? "" : ", ").append(name);
        call->refuse("call", "one of " + names);
    }
    if (rule.service != "diag") table.refuse("call with the service diag alone");
    if (rule.on_indication || !rule.prefix.empty()) {
        table.refuse("no on or prefix beside call");
    }
}

std::int32_t read_processor(TableReader& table)
{
    return static_cast<std::int32_t>(table.number("processor", 0, kHighestProcessor).value_or(0));
}

// The messages that a rule sends by itself. Behind an answer, those without a number repeat it with other bytes.
void read_following(TableReader& rule_table, FaultRule& rule)
{
    const ScenarioNode* list = rule_table.find("then");
    if (list == nullptr) return;
    const bool diag = rule.service == "diag";
    const bool answered = rule.action == FaultAction::raw;
    for (const ScenarioNode& node : list->list("then")) {
        TableReader table("then", node);
        Following following;
        if (!diag) {
            if (const auto indication = table.number("indication", 0, 0xFFFF)) {
                following.indication = static_cast<std::uint16_t>(*indication);
            } else if (!answered) {
                table.refuse("the key indication, where there is no answer");
            }
        }
        following.bytes = table.need("bytes").bytes("bytes", longest_bytes(rule));
        following.after = table.milliseconds("after_ms").value_or(following.after);
        if (diag) following.processor = read_processor(table);
        if (!diag && answered) following.early = table.flag("early").value_or(false);
        if (following.early && (!following.indication || following.after > rule.delay)) {
            table.refuse("an early indication, at the latest after the rule's ms");
        }
        table.finish();
        rule.then.push_back(std::move(following));
    }
}

void read_fault(const ScenarioNode& node, Scenario& scenario)
{
    TableReader table("[[fault]]", node);
    FaultRule rule;
    rule.where = printable(node.where);
    rule.service = service_name(table.need("service"), "service");
    read_fault_matching(table, rule);
    read_fault_call(table, rule);

    const auto nth = table.number("nth", 1, INT64_MAX);
    const auto from = table.number("from", 1, INT64_MAX);
    if (nth && from) table.refuse("nth or from, not both");
    if (nth) rule.first = rule.last = static_cast<std::uint64_t>(*nth);
    if (from) rule.first = static_cast<std::uint64_t>(*from);

    const ScenarioNode& action = table.need("action");
    rule.action = read_action(action, rule.on_indication);
    if (!rule.call.empty() && rule.action != FaultAction::error) action.refuse("action", "error beside call");
    const bool of_record = rule.action == FaultAction::result || rule.action == FaultAction::refuse;
    if (of_record && rule.service != "extended") {
        action.refuse("action", action.text("action") + " with the service extended alone");
    }
    if (rule.action == FaultAction::pull && rule.service != "uim") {
        action.refuse("action", "pull with the service uim alone");
    }
    switch (rule.action) {
    case FaultAction::delay: {
        const auto ms = table.milliseconds("ms");
        if (!ms) table.refuse("the key ms");
        rule.delay = *ms;
        break;
    }
    case FaultAction::error: {
        // An error number of QMI has 16 bits; the extended service's first word and diag's codes are whole words.
        const bool word = rule.service == "extended" || rule.service == "diag";
        rule.code = static_cast<std::int32_t>(
            table.need("code").number("code", word ? INT32_MIN : 1, word ? INT32_MAX : 0xFFFF));
        if (rule.service == "extended" && rule.code == 0) table.refuse("a code other than 0, which is success");
        break;
    }
    case FaultAction::result:
    case FaultAction::refuse:
        rule.code = static_cast<std::int32_t>(table.need("code").number("code", INT32_MIN, INT32_MAX));
        break;
    case FaultAction::indicate:
        if (const auto indication = table.number("indication", 0, 0xFFFF)) {
            if (rule.service == "diag")
                table.refuse("no indication with the service diag, whose packets have no number");
            rule.indication = static_cast<std::uint16_t>(*indication);
        }
        rule.also = table.flag("also").value_or(false);
        rule.bytes = table.need("bytes").bytes("bytes", longest_bytes(rule));
        break;
    case FaultAction::raw:
        rule.bytes = table.need("bytes").bytes("bytes", longest_bytes(rule));
        if (rule.on_indication) break;
        rule.delay = table.milliseconds("ms").value_or(rule.delay);
        if (rule.service == "diag") rule.processor = read_processor(table);
        read_following(table, rule);
        break;
    case FaultAction::pull:
        rule.slot = static_cast<std::uint8_t>(table.need("slot").number("slot", 1, kMostSlots));
        break;
    case FaultAction::silent:
        if (!rule.on_indication) read_following(table, rule);
        break;
    case FaultAction::twice:
    case FaultAction::early:
    case FaultAction::down: break;
    }
    table.finish();
    scenario.faults.push_back(std::move(rule));
}

void read_list(TableReader& file, const std::string& key, void (*read)(const ScenarioNode&, Scenario&),
               Scenario& scenario)
{
    const ScenarioNode* list = file.find(key);
    if (list == nullptr) return;
    for (const ScenarioNode& node : list->list("[[" + key + "]]")) read(node, scenario);
}

void read_settings(TableReader* file, Scenario& scenario)
{
    for (const ServiceKind& kind : service_kinds()) {
        if (kind.read != nullptr) {
            scenario.settings.emplace(kind.name, kind.read(file));
        } else if (file != nullptr) {
            for (const std::string_view table : kind.tables) {
                if (!table.empty()) static_cast<void>(file->find(std::string(table)));
            }
        }
    }
}

}  // namespace

Scenario read_scenario(const std::optional<std::filesystem::path>& file)
{
    Scenario scenario;
    for (const ServiceKind& kind : service_kinds()) scenario.services.emplace_back(kind.name);
    add_built_in_phone(scenario);
    if (!file) {
        read_settings(nullptr, scenario);
        return scenario;
    }

    const ScenarioNode root = load_scenario_file(*file);
    TableReader table("the scenario", root);
    read_modem(table, scenario);
    read_nv(table, scenario);
    read_efs(table, scenario);
    read_at(table, scenario);
    read_list(table, "indication", read_indication, scenario);
    read_list(table, "fault", read_fault, scenario);
    read_settings(&table, scenario);
    table.finish();
    return scenario;
}

Scenario empty_scenario()
{
    return {};
}

}  // namespace rbk::sim
