// A foreign trace: as text, or as messages that get past the reader of lines. What is said of a message is one line without
// control characters, its fields lie within its bytes, and the client's own decoder refuses what is said to be refused. A
// page has no more elements of script and style than its own, and the scenario of a run is one that the modem takes.
//
// An input is one byte for the kind. Text follows as it is; of each message a byte for its direction and kind, one for the
// service, one for the row of its table, one for the transaction, and a block of TLVs.
#include <cstdlib>

#include "fuzz/input.h"
#include "fuzz/scratch.h"
#include "platform/linux/idl_codec.h"
#include "simulator/scenario/scenario.h"
#include "trace/again.h"
#include "trace/fields.h"
#include "trace/lines.h"
#include "trace/names.h"
#include "trace/page.h"
#include "trace/talk.h"

using namespace rbk;
using namespace rbk::trace;

namespace {

void demand(bool holds)
{
    if (!holds) std::abort();
}

std::size_t count(std::string_view what, std::string_view text)
{
    std::size_t found = 0;
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string_view::npos; ++at) ++found;
    return found;
}

void demand_within(const std::vector<Field>& fields, std::size_t size)
{
    for (const Field& field : fields) {
        demand(field.offset + field.size <= size);
        demand_within(field.parts, size);
    }
}

const idl_message* table_of(const TraceLine& line)
{
    const qmi_idl_service_object_type service = line.is_diag ? nullptr : service_tables(line.service);
    if (service == nullptr) return nullptr;
    const auto kind = line.is_request() ? REQUEST : line.is_answer() ? RESPONSE : INDICATION;
    return platform::find_message(*service, kind, line.head.message);
}

void judge(const Message& message, const Decoded& decoded)
{
    const TraceLine& line = message.line;
    demand_within(decoded.fields, line.bytes.size());
    demand(private_bytes(line, decoded).size() == line.bytes.size());
    for (const bool show_private : {false, true}) {
        for (const char c : line_of(message, decoded, 0, true, show_private))
            demand(static_cast<unsigned char>(c) >= 0x20 && c != 0x7F);
    }
    const idl_message* table = table_of(line);
    if (table == nullptr) return;
    Bytes structure(table->size);
    const bool is_refused =
        decoded.complaint.starts_with(line.is_request() ? "it doesn't decode" : "the client refuses it");
    demand(platform::decode(*table, line.bytes, structure.data()) != is_refused);
}

void add_text(ByteView bytes, Talk& talk)
{
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    for (std::uint64_t number = 1; !text.empty(); ++number) {
        const std::string_view words = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(words.size() + 1, text.size()));
        auto line = parse_line(words, number);
        if (auto* good = std::get_if<TraceLine>(&line)) talk.add(std::move(*good));
    }
}

void add_messages(fuzz::Input input, Talk& talk)
{
    constexpr std::uint32_t kServices[] = {0xFFE4, 0xE4, 36, 11, 3, 17, 0x42};
    while (!input.empty()) {
        TraceLine line;
        const std::uint8_t kind = input.byte();
        line.number = talk.messages().size() + 1;
        line.time_us = static_cast<std::int64_t>(line.number) * (kind & 0xF0) * 10'000;
        line.is_diag = kind % 4 == 3;
        line.head.kind = static_cast<link::QmiKind>(kind % 3 * 2);
        line.to_modem = line.is_diag ? (kind & 4) != 0 : line.head.kind == link::QmiKind::request;
        line.service = kServices[input.byte() % std::size(kServices)];
        const std::uint8_t row = input.byte();
        const qmi_idl_service_object_type service = service_tables(line.service);
        line.head.message = service == nullptr ? row : service->messages[row % service->message_count].id;
        line.head.transaction = input.byte();
        const ByteView bytes = input.block();
        line.bytes.assign(bytes.begin(), bytes.end());
        talk.add(std::move(line));
        if ((kind & 8) != 0) talk.give_up_at(talk.messages().back().line.time_us);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::Input input(data, size);
    Talk talk;
    if (input.byte() % 2 == 0)
        add_text(input.rest(), talk);
    else
        add_messages(input, talk);
    talk.end();
    for (const std::size_t each : talk.take_unanswered()) {
        const Mark mark = talk.messages().at(each).mark;
        demand(mark == Mark::unanswered || mark == Mark::late);
    }
    std::vector<PageMessage> shown;
    for (const Message& message : talk.messages()) {
        const bool has_request = message.partner && !message.line.is_request();
        shown.push_back({shown.size(), {}});
        shown.back().words = decode(message.line, has_request ? &talk.messages().at(*message.partner).line : nullptr);
        judge(message, shown.back().words);
    }
    static const std::size_t own =
        count("<script", page_of("", {}, {}, true)) + count("<style", page_of("", {}, {}, true));
    const std::string page = page_of("trace", talk.messages(), shown, true);
    demand(count("<script", page) + count("<style", page) == own);

    static const fuzz::MemoryFile file;
    for (std::size_t run = 0; run < talk.runs(); ++run) {
        const auto made = scenario_of(talk.messages(), run, "trace");
        const auto* text = std::get_if<std::string>(&made);
        if (text == nullptr) continue;
        file.fill({reinterpret_cast<const std::uint8_t*>(text->data()), text->size()});
        static_cast<void>(sim::read_scenario(file.path()));  // throws where it refuses
    }
    return 0;
}
