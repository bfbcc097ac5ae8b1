#include "trace/fields.h"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "platform/linux/idl_codec.h"
#include "simulator/base/printable.h"
#include "trace/contents.h"
#include "trace/names.h"
#include "velmor_extend_v01.h"
#include "vs_v01.h"

namespace rbk::trace {
namespace {

// ---- One value after the other, by the rows of a table ----

// A stretch of a message, read from its front.
class Cursor {
 public:
    Cursor(ByteView all, std::size_t offset, std::size_t size) : all_(all), at_(offset), end_(offset + size) {}

    std::size_t offset() const { return at_; }
    std::size_t left() const { return end_ - at_; }

    // As many of the bytes as there are.
    ByteView take(std::size_t size)
    {
        const ByteView taken = all_.subspan(at_, std::min(size, left()));
        at_ += taken.size();
        return taken;
    }

 private:
    ByteView all_;
    std::size_t at_;
    std::size_t end_;
};

std::uint64_t number_of(ByteView bytes)
{
    return peek_le<std::uint64_t>(bytes, 0);
}

std::string number_text(std::string_view name, ByteView bytes)
{
    const std::uint64_t number = number_of(bytes);
    const std::string_view meaning = value_name(name, number);
    char text[24];
    const bool is_version = name.ends_with("version") || name.starts_with("index_");
    std::snprintf(text, sizeof text, is_version ? "0x%lX" : "%lu", number);
    return meaning.empty() ? text : std::string(meaning) + " (" + text + ")";
}

class Reader {
 public:
    Reader(std::uint32_t service, ByteView bytes) : service_(service), bytes_(bytes) {}

    // Takes a row's value off the cursor. Where it is cut short, `cut_short` says so from then on, and what is there stands
    // in the field.
    Field take(const idl_field& row, Cursor& cursor);

    bool cut_short = false;

 private:
    std::size_t take_count(const idl_field& row, Cursor& cursor);
    void take_numbers(const idl_field& row, std::size_t count, Cursor& cursor, Field& field);
    void take_records(const idl_field& row, std::size_t count, Cursor& cursor, Field& field);

    std::uint32_t service_;
    ByteView bytes_;
};

std::size_t Reader::take_count(const idl_field& row, Cursor& cursor)
{
    const ByteView bytes = cursor.take(row.count_width);
    cut_short = cut_short || bytes.size() < row.count_width;
    return number_of(bytes);
}

Field Reader::take(const idl_field& row, Cursor& cursor)
{
    Field field{row.name, {}, {}, is_private_field(service_, row.name), cursor.offset(), 0};
    std::size_t count = row.limit;
    if (row.form == IDL_COUNTED || (row.form == IDL_CHARACTERS && row.tlv == IN_RECORD)) {
        count = take_count(row, cursor);
        field.offset = cursor.offset();  // of the value itself
    } else if (row.form == IDL_CHARACTERS) {
        count = cursor.left();
    } else if (row.form == IDL_RESERVED_BYTES) {
        count = 0;
    }
    if (!cut_short && (row.form == IDL_COUNTED || row.form == IDL_CHARACTERS) && count > row.limit)
        field.note = "the client keeps " + std::to_string(row.limit) + " of " + std::to_string(count);
    if (idl_is_record(row))
        take_records(row, count, cursor, field);
    else
        take_numbers(row, count, cursor, field);
    field.size = cursor.offset() - field.offset;
    if (cut_short && field.note.empty()) field.note = "cut short";
    return field;
}

void Reader::take_numbers(const idl_field& row, std::size_t count, Cursor& cursor, Field& field)
{
    const ByteView bytes = cursor.take(count * row.wire_width);
    cut_short = cut_short || bytes.size() < count * row.wire_width;
    const std::string_view name = field.name;
    if (row.form == IDL_CHARACTERS || name == "config_desc") {
        field.value = '"' + sim::printable({reinterpret_cast<const char*>(bytes.data()), bytes.size()}) + '"';
    } else if (row.wire_width == 1 && row.form != IDL_SINGLE) {
        field.value = hex_text(bytes);
    } else if (row.form == IDL_SINGLE) {
        if (!bytes.empty()) field.value = number_text(name, bytes);
    } else {
        field.value = "[";
        for (std::size_t at = 0; at < bytes.size(); at += row.wire_width) {
            if (at > 0) field.value += ", ";
            field.value +=
                number_text(name, bytes.subspan(at, std::min<std::size_t>(row.wire_width, bytes.size() - at)));
        }
        field.value += ']';
    }
}

void Reader::take_records(const idl_field& row, std::size_t count, Cursor& cursor, Field& field)
{
    for (std::size_t i = 0; i < count && !cut_short; ++i) {
        Field element{std::to_string(i), {}, {}, false, cursor.offset(), 0};
        for (std::uint32_t f = 0; f < row.record->field_count && !cut_short; ++f)
            element.parts.push_back(take(row.record->fields[f], cursor));
        element.size = cursor.offset() - element.offset;
        if (row.form == IDL_SINGLE)
            field.parts = std::move(element.parts);
        else
            field.parts.push_back(std::move(element));
    }
}

// ---- A message: its TLVs and their rows ----

Field raw_field(std::string name, std::string note, Cursor rest, bool is_private)
{
    const std::size_t offset = rest.offset();
    const ByteView bytes = rest.take(rest.left());
    return {std::move(name), hex_text(bytes), std::move(note), is_private, offset, bytes.size()};
}

std::string tlv_name(std::uint8_t type)
{
    char text[16];
    std::snprintf(text, sizeof text, "TLV 0x%02X", type);
    return text;
}

const idl_field* find_row(const idl_message* table, std::uint8_t type)
{
    for (std::uint32_t i = 0; table != nullptr && i < table->field_count; ++i) {
        if (table->fields[i].tlv == type && type != IN_RECORD) return &table->fields[i];
    }
    return nullptr;
}

// Reads all TLVs into `fields`. `table` may be null.
void read_tlvs(const TraceLine& line, const idl_message* table, bool may_be_private, std::vector<Field>& fields)
{
    const ByteView bytes(line.bytes);
    std::vector<std::uint8_t> seen;
    for (Cursor cursor(bytes, 0, bytes.size()); cursor.left() > 0;) {
        const std::size_t begin = cursor.offset();
        const ByteView head = cursor.take(3);
        const std::size_t length = head.size() < 3 ? 0 : load_le<std::uint16_t>(&head[1]);
        if (head.size() < 3 || length > cursor.left()) {
            fields.push_back(
                raw_field("rest", "no whole TLV", Cursor(bytes, begin, bytes.size() - begin), may_be_private));
            return;
        }
        Cursor value(bytes, cursor.offset(), length);
        cursor.take(length);
        const std::uint8_t type = head[0];
        const idl_field* row = find_row(table, type);
        const bool again = std::ranges::find(seen, type) != seen.end();
        seen.push_back(type);
        if (row == nullptr || again) {
            const char* note = again              ? "here a second time: the first counts"
                               : table == nullptr ? ""
                                                  : "unknown to the client";
            fields.push_back(raw_field(tlv_name(type), note, value, may_be_private));
            continue;
        }
        Reader reader(line.service, bytes);
        fields.push_back(reader.take(*row, value));
        if (reader.cut_short) fields.back().note = "cut short";
        if (value.left() > 0) {
            fields.push_back(
                raw_field("rest of " + tlv_name(type), "more than the client reads", value, may_be_private));
        }
    }
}

// Why the client refuses a message, as its decoder does: a TLV that is cut short, a mandatory one that isn't there.
std::string refusal(const idl_message& table, const std::vector<Field>& fields)
{
    for (const Field& field : fields) {
        if (field.note == "cut short" || field.note == "no whole TLV") return field.name + ": " + field.note;
    }
    for (std::uint32_t i = 0; i < table.field_count; ++i) {
        const idl_field& row = table.fields[i];
        if (row.optional || row.form == IDL_RESERVED_BYTES) continue;
        const bool is_there = std::ranges::any_of(fields, [&](const Field& field) { return field.name == row.name; });
        if (!is_there) return std::string(row.name) + " (" + tlv_name(row.tlv) + ") is missing";
    }
    return {};
}

// ---- What the fields say ----

Field* find_field(std::vector<Field>& fields, std::string_view name)
{
    const auto found = std::ranges::find(fields, name, &Field::name);
    return found == fields.end() ? nullptr : &*found;
}

std::uint64_t number_in(const TraceLine& line, const Field& field)
{
    return number_of(ByteView(line.bytes).subspan(field.offset, std::min<std::size_t>(field.size, 8)));
}

void say_result(Decoded& decoded, bool failed, std::uint32_t error)
{
    decoded.result = failed ? "failed: " + qmi_error_name(error) : "ok";
    decoded.is_fault = decoded.is_fault || failed;
}

// A published service's result stands in a record of its own, an outcome's in its first field.
void take_result(const TraceLine& line, Decoded& decoded)
{
    if (const Field* resp = find_field(decoded.fields, "resp"); resp != nullptr && resp->parts.size() == 2) {
        const std::uint64_t result = number_in(line, resp->parts[0]);
        const auto error = static_cast<std::uint32_t>(number_in(line, resp->parts[1]));
        say_result(decoded, result != 0, error);
        if (result == 0 && error != 0) decoded.result += " (error " + qmi_error_name(error) + ")";
    } else if (const Field* error = find_field(decoded.fields, "error"); error != nullptr && line.is_indication()) {
        say_result(decoded, number_in(line, *error) != 0, static_cast<std::uint32_t>(number_in(line, *error)));
    } else {
        return;
    }
    std::erase_if(decoded.fields, [&](const Field& field) {
        return field.note.empty() && (field.name == "resp" || (line.is_indication() && field.name == "error"));
    });
}

// ---- Envelopes ----

struct Envelope {
    std::uint32_t qmi_id = 0;
    std::uint64_t data_len = 0;  // as sent
    Piece data;                  // what there is of it
};

std::optional<Envelope> open_envelope(const TraceLine& line, std::vector<Field>& fields)
{
    const Field* id = find_field(fields, "qmi_id");
    const Field* size = find_field(fields, "data_len");
    if (id == nullptr || size == nullptr) return std::nullopt;
    Envelope envelope{static_cast<std::uint32_t>(number_in(line, *id)), number_in(line, *size), {}};
    if (const Field* data = find_field(fields, "data")) {
        const Piece whole{ByteView(line.bytes).subspan(data->offset, data->size), data->offset};
        envelope.data = whole.cut(0, envelope.data_len);
    }
    return envelope;
}

const idl_message* table_of(const TraceLine& line)
{
    const qmi_idl_service_object_type service = service_tables(line.service);
    if (service == nullptr) return nullptr;
    const auto kind = line.is_request() ? REQUEST : line.is_answer() ? RESPONSE : INDICATION;
    return platform::find_message(*service, kind, line.head.message);
}

// What the data of an envelope holds takes the place of its fields; what is wrong with them stays. Where that isn't known to
// be harmless, all of the message is hidden: a length may be wrong, and an IMEI stand anywhere.
void take_envelope(const TraceLine& line, const TraceLine* request, Decoded& decoded)
{
    const std::optional<Envelope> envelope = open_envelope(line, decoded.fields);
    if (!envelope || !is_envelope(line.head.message)) {
        decoded.hidden.push_back({0, line.bytes.size()});
        return;
    }
    Content content;
    if (line.is_answer()) {
        say_result(decoded, envelope->qmi_id != 0, envelope->qmi_id);
        std::optional<Envelope> asking;
        if (request != nullptr) {
            std::vector<Field> fields;
            read_tlvs(*request, table_of(*request), true, fields);
            asking = open_envelope(*request, fields);
        }
        const Asked asked = asking ? Asked{asking->qmi_id, asking->data.bytes} : Asked{};
        content = read_answer(asking ? &asked : nullptr, envelope->data);
        if (envelope->qmi_id != 0) {
            content.result.clear();  // the client doesn't look at the rest
            content.is_fault = false;
        }
        if (envelope->data_len == 0) content.fields.clear();
    } else if (line.is_request()) {
        content = read_request(envelope->qmi_id, envelope->data);
    } else {
        content = read_said(envelope->qmi_id, envelope->data);
    }
    if (content.is_private) decoded.hidden.push_back({0, line.bytes.size()});
    decoded.content = content.name;
    if (!content.result.empty()) decoded.result = content.result;
    decoded.is_fault = decoded.is_fault || content.is_fault;
    if (Field* size = find_field(decoded.fields, "data_len"); envelope->data_len != envelope->data.bytes.size()) {
        size->note = "more than there is";
        size->is_harmless = true;
    }
    std::erase_if(decoded.fields, [](const Field& field) {
        return field.note.empty() && (field.name == "qmi_id" || field.name == "data" || field.name == "data_len");
    });
    decoded.fields.insert(decoded.fields.begin(), content.fields.begin(), content.fields.end());
}

// The values of the statistics stand in tables of id and bytes.
void take_samples(const TraceLine& line, std::vector<Field>& fields)
{
    for (Field& field : fields) {
        for (Field& element : field.parts) {
            Field* id = find_field(element.parts, "id");
            Field* value = find_field(element.parts, "value");
            if (id == nullptr || value == nullptr || id->size < 4) continue;
            const auto parameter = static_cast<std::uint32_t>(number_in(line, *id));
            if (const std::string_view name = sample_name(parameter); !name.empty())
                id->value = std::string(name) + " (" + std::to_string(parameter) + ")";
            if (value->size == 0) continue;
            const ByteView sample = ByteView(line.bytes).subspan(value->offset, value->size);
            value->parts = read_sample(parameter, {sample, value->offset});
            if (!value->parts.empty()) value->value.clear();
        }
    }
}

void collect_hidden(const std::vector<Field>& fields, std::vector<Stretch>& hidden)
{
    for (const Field& field : fields) {
        if (field.is_private) hidden.push_back({field.offset, field.size});
        collect_hidden(field.parts, hidden);
    }
}

// What is read from hidden bytes is hidden itself.
void hide_fields(std::vector<Field>& fields, const std::vector<Stretch>& hidden)
{
    for (Field& field : fields) {
        const bool touches = std::ranges::any_of(hidden, [&](const Stretch& stretch) {
            return field.offset < stretch.offset + stretch.size && stretch.offset < field.offset + field.size;
        });
        if (field.parts.empty() && touches && !field.is_harmless) field.is_private = true;
        hide_fields(field.parts, hidden);
    }
}

void decode_packet(const TraceLine& line, const TraceLine* request, Decoded& decoded)
{
    Content content = read_packet({line.bytes, 0});
    if (content.is_private || (request != nullptr && read_packet({request->bytes, 0}).is_private))
        decoded.hidden.push_back({0, line.bytes.size()});
    decoded.service = "diag";
    decoded.message = line.to_modem ? "request" : "packet";
    decoded.content = std::move(content.name);
    decoded.is_fault = content.is_fault;
    decoded.fields = std::move(content.fields);
}

void decode_message(const TraceLine& line, const TraceLine* request, Decoded& decoded)
{
    decoded.service = service_name(line.service);
    decoded.message = message_name(line.service, line.head.message);
    const idl_message* table = table_of(line);
    read_tlvs(line, table, is_private_service(line.service), decoded.fields);
    if (table == nullptr) {
        const bool is_known = service_tables(line.service) != nullptr;
        decoded.complaint = is_known ? "rbk doesn't know this message" : "rbk doesn't use this service";
        return;
    }
    decoded.complaint = refusal(*table, decoded.fields);
    take_result(line, decoded);
    if (line.service == VS_SERVICE_ID) take_samples(line, decoded.fields);
    if (line.service == EXTEND_SERVICE_ID) take_envelope(line, request, decoded);
    if (!decoded.complaint.empty()) {
        decoded.complaint = (line.is_request() ? "it doesn't decode: " : "the client refuses it: ") + decoded.complaint;
        decoded.is_fault = true;
    }
}

}  // namespace

Decoded decode(const TraceLine& line, const TraceLine* request)
{
    Decoded decoded;
    if (line.is_diag)
        decode_packet(line, request, decoded);
    else
        decode_message(line, request, decoded);
    collect_hidden(decoded.fields, decoded.hidden);
    hide_fields(decoded.fields, decoded.hidden);
    return decoded;
}

std::vector<bool> private_bytes(const TraceLine& line, const Decoded& decoded)
{
    std::vector<bool> hidden(line.bytes.size());
    for (const auto& [offset, size] : decoded.hidden) {
        for (std::size_t i = offset; i < offset + size && i < hidden.size(); ++i) hidden[i] = true;
    }
    return hidden;
}

std::size_t equal_at_front(ByteView bytes)
{
    const auto other = std::ranges::find_if(bytes, [&](std::uint8_t byte) { return byte != bytes.front(); });
    return static_cast<std::size_t>(other - bytes.begin());
}

std::string hex_text(ByteView bytes)
{
    constexpr std::size_t kShortestRun = 4;
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text;
    bool after_run = false;
    while (!bytes.empty()) {
        const std::string digits = {kDigits[bytes[0] >> 4], kDigits[bytes[0] & 0xF]};
        const std::size_t count = equal_at_front(bytes);
        const bool is_run = count >= kShortestRun;
        if (!text.empty() && (is_run || after_run)) text += ' ';
        if (is_run) text += digits + '*' + std::to_string(count);
        for (std::size_t i = 0; i < count && !is_run; ++i) text += digits;
        after_run = is_run;
        bytes = bytes.subspan(count);
    }
    return text;
}

}  // namespace rbk::trace
