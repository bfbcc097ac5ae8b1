#include "trace/contents.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "modem_hydra_samples.h"
#include "simulator/base/printable.h"
#include "trace/names.h"
#include "velmor_extend_api.h"
#include "velmor_extend_cmn.h"
#include "velmor_extend_nvefs_records.h"

namespace rbk::trace {
namespace {

// A record of the client's, read where it stands. What wasn't sent reads as 0, as it does there.
class Record {
 public:
    explicit Record(Piece piece) : piece_(piece) {}

    template <typename Number>
    Number number(std::size_t offset) const
    {
        return peek_le<Number>(piece_.bytes, offset);
    }

    template <typename Number>
    void add_number(const char* name, std::size_t offset)
    {
        add(name, std::to_string(number<Number>(offset)), piece_.cut(offset, sizeof(Number))).is_harmless = true;
    }
    void add_text(const char* name, std::size_t offset, std::size_t size)
    {
        const Piece text = piece_.cut(offset, size);
        const auto end = std::ranges::find(text.bytes, 0);
        add(name, '"' + sim::printable(std::string(text.bytes.begin(), end)) + '"', text).is_harmless = true;
    }
    void add_bytes(const char* name, std::size_t offset, std::size_t size)
    {
        const Piece bytes = piece_.cut(offset, size);
        if (size > 0) add(name, hex_text(bytes.bytes), bytes);
    }
    // Bytes without the zeros that fill their room.
    void add_filled(const char* name, std::size_t offset, std::size_t size)
    {
        const ByteView bytes = piece_.cut(offset, size).bytes;
        const auto last = std::find_if(bytes.rbegin(), bytes.rend(), [](std::uint8_t byte) { return byte != 0; });
        add_bytes(name, offset, static_cast<std::size_t>(bytes.rend() - last));
    }

    std::vector<Field> take() { return std::move(fields_); }

 private:
    Field& add(const char* name, std::string value, Piece from)
    {
        fields_.push_back({name, std::move(value), {}, false, from.offset, from.bytes.size()});
        return fields_.back();
    }

    Piece piece_;
    std::vector<Field> fields_;
};
#define ADD(record, T, member)    (record).add_number<decltype(T::member)>(#member, offsetof(T, member))
#define NUMBER(record, T, member) (record).number<decltype(T::member)>(offsetof(T, member))

void judge(Content& content, bool is_fault, std::int32_t result)
{
    content.is_fault = is_fault;
    content.result = is_fault ? "failed: " + errno_name(result) : "ok";
}

// ---- NV items and EFS files ----

constexpr std::string_view kNvefsNames[] = {"",         "NV read",   "NV write",  "NV delete",
                                            "EFS read", "EFS write", "EFS delete"};

std::string nvefs_name(std::uint8_t op)
{
    return op > 0 && op < std::size(kNvefsNames) ? std::string(kNvefsNames[op])
                                                 : "NV and EFS operation " + std::to_string(op);
}

// Whether the item or the file that a request is about identifies somebody.
bool is_about_private(ByteView asked)
{
    const auto op = peek_le<std::uint8_t>(asked, offsetof(nvefs_req, op));
    if (op > EFS_DELETE || asked.size() < offsetof(nvefs_req, data)) return true;  // nobody knows
    if (op <= NV_DELETE) return is_private_item(peek_le<std::uint16_t>(asked, offsetof(nvefs_req, nv_id)));
    const auto size = peek_le<std::uint8_t>(asked, offsetof(nvefs_req, path_len));
    const Piece path = Piece{asked, 0}.cut(offsetof(nvefs_req, path), size);
    return is_private_file({reinterpret_cast<const char*>(path.bytes.data()), path.bytes.size()});
}

Content read_nvefs_request(Piece data)
{
    Record record(data);
    const auto op = record.number<std::uint8_t>(offsetof(nvefs_req, op));
    Content content{nvefs_name(op), {}, false, {}, is_about_private(data.bytes)};
    ADD(record, nvefs_req, sub_id);
    if (op <= NV_DELETE) {
        ADD(record, nvefs_req, nv_id);
    } else {
        record.add_text("path", offsetof(nvefs_req, path),
                        std::min<std::size_t>(NUMBER(record, nvefs_req, path_len), sizeof(nvefs_req::path)));
    }
    if (op == NV_WRITE || op == EFS_WRITE) {
        if (op == EFS_WRITE) record.add_number<std::uint16_t>("instance", offsetof(nvefs_req, nv_id));
        ADD(record, nvefs_req, data_len_all);
    }
    if (op == EFS_WRITE) ADD(record, nvefs_req, data_len_send);
    if (op == EFS_READ || op == EFS_WRITE) ADD(record, nvefs_req, data_len_cur);
    if (op == NV_WRITE || op == EFS_WRITE) {
        const std::uint32_t size =
            op == NV_WRITE ? NUMBER(record, nvefs_req, data_len_all) : NUMBER(record, nvefs_req, data_len_send);
        record.add_bytes("data", offsetof(nvefs_req, data), std::min(size, NVEFS_DATA_MAX));
    }
    content.fields = record.take();
    return content;
}

Content read_nvefs_answer(ByteView asked, Piece data)
{
    Record record(data);
    const auto op = peek_le<std::uint8_t>(asked, offsetof(nvefs_req, op));
    Content content{nvefs_name(op), {}, false, {}, is_about_private(asked)};
    const std::int32_t result = NUMBER(record, nvefs_rsp, result);
    judge(content, op == EFS_WRITE ? result < 0 : result != 0, result);
    if (op == EFS_WRITE && result >= 0) record.add_number<std::int32_t>("instance", offsetof(nvefs_rsp, result));
    if (op == NV_READ || op == EFS_READ) ADD(record, nvefs_rsp, data_len_all);
    if (op == EFS_READ) ADD(record, nvefs_rsp, data_len_send);
    if (op == NV_READ || op == EFS_READ) {
        const std::uint32_t size =
            op == NV_READ ? NUMBER(record, nvefs_rsp, data_len_all) : NUMBER(record, nvefs_rsp, data_len_send);
        record.add_bytes("data", offsetof(nvefs_rsp, data), std::min(size, NVEFS_DATA_MAX));
    }
    content.fields = record.take();
    return content;
}

constexpr const char* kLegacyName = "NV read, older way";

// The modem looks at the low half of an item's number.
bool is_legacy_private(ByteView asked)
{
    return asked.size() < offsetof(nv_legacy_req, reserved) || peek_le<std::uint32_t>(asked, 0) != 1 ||
           is_private_item(peek_le<std::uint16_t>(asked, offsetof(nv_legacy_req, nv_id)));
}

Content read_legacy_request(Piece data)
{
    Record record(data);
    ADD(record, nv_legacy_req, nv_id);
    ADD(record, nv_legacy_req, sub_id);
    return {kLegacyName, {}, false, record.take(), is_legacy_private(data.bytes)};
}

Content read_legacy_answer(ByteView asked, Piece data)
{
    Record record(data);
    Content content{kLegacyName, {}, false, {}, is_legacy_private(asked)};
    const std::int32_t result = NUMBER(record, nv_legacy_rsp, result);
    judge(content, result != 0, result);
    ADD(record, nv_legacy_rsp, data_len);
    const std::uint32_t size = NUMBER(record, nv_legacy_rsp, data_len);
    record.add_bytes("data", offsetof(nv_legacy_rsp, data), std::min(size, NV_LEGACY_DATA_MAX));
    content.fields = record.take();
    return content;
}

// ---- Common requests ----

// One that nobody knows may carry anything.
bool is_common_unknown(ByteView asked)
{
    return common_command_name(peek_le<std::uint32_t>(asked, offsetof(common_typed_req, cmd)),
                               peek_le<std::uint32_t>(asked, offsetof(common_typed_req, t)))
        .empty();
}

std::string common_name(ByteView asked)
{
    const auto command = peek_le<std::uint32_t>(asked, offsetof(common_typed_req, cmd));
    const auto type = peek_le<std::uint32_t>(asked, offsetof(common_typed_req, t));
    if (const std::string_view name = common_command_name(command, type); !name.empty()) return std::string(name);
    return command == COMMON_CMD_TYPED ? "common request, type " + std::to_string(type)
                                       : "common request " + std::to_string(command);
}

Content read_common_request(Piece data)
{
    Record record(data);
    if (NUMBER(record, common_typed_req, cmd) == COMMON_CMD_TYPED) {
        ADD(record, common_typed_req, t);
        const std::uint32_t size = NUMBER(record, common_typed_req, l);
        record.add_bytes("v", offsetof(common_typed_req, v), std::min<std::size_t>(size, sizeof(common_typed_req::v)));
    } else {
        ADD(record, common_req, cmd);
        record.add_filled("payload", offsetof(common_req, payload), sizeof(common_req::payload));
    }
    return {common_name(data.bytes), {}, false, record.take(), is_common_unknown(data.bytes)};
}

Content read_common_answer(ByteView asked, Piece data)
{
    Record record(data);
    Content content{common_name(asked), {}, false, {}, is_common_unknown(asked)};
    const std::int32_t result = NUMBER(record, common_rsp, result);
    judge(content, result != 0, result);
    if (peek_le<std::uint32_t>(asked, offsetof(common_typed_req, cmd)) == COMMON_CMD_TYPED) {
        const std::uint32_t size = NUMBER(record, common_typed_rsp, l);
        record.add_bytes("v", offsetof(common_typed_rsp, v), std::min<std::size_t>(size, sizeof(common_typed_rsp::v)));
    } else {
        record.add_filled("payload", offsetof(common_rsp, payload), sizeof(common_rsp::payload));
    }
    content.fields = record.take();
    return content;
}

// ---- Which request id means what ----

struct EnvelopeForm {
    std::uint32_t qmi_id;
    Content (*request)(Piece data);
    Content (*answer)(ByteView asked, Piece data);
};
constexpr EnvelopeForm kEnvelopes[] = {
    {REQUEST_ID_NV_LEGACY, read_legacy_request, read_legacy_answer},
    {REQUEST_ID_EFS, read_nvefs_request, read_nvefs_answer},
    {REQUEST_ID_COMMON, read_common_request, read_common_answer},
};

const EnvelopeForm* find_form(std::uint32_t qmi_id)
{
    const auto found = std::ranges::find(kEnvelopes, qmi_id, &EnvelopeForm::qmi_id);
    return found == std::end(kEnvelopes) ? nullptr : &*found;
}

// Data that nobody has a form for may be anything, an IMEI too.
Content read_unknown(std::string name, Piece data)
{
    Record record(data);
    record.add_bytes("data", 0, data.bytes.size());
    return {std::move(name), {}, false, record.take(), true};
}

// ---- Diag ----

struct PacketName {
    std::uint8_t command;
    std::string_view name;
};
constexpr PacketName kPackets[] = {
    {0x00, "version"},           {0x10, "log"},
    {0x13, "bad command"},       {0x14, "bad parameters"},
    {0x15, "bad length"},        {0x18, "bad mode"},
    {0x26, "NV read"},           {0x27, "NV write"},
    {0x4B, "subsystem"},         {0x60, "event"},
    {0x73, "log masks"},         {0x79, "message"},
    {0x7C, "extended build id"}, {0x80, "subsystem, delayed"},
    {0x82, "event masks"},
};
constexpr std::uint8_t kNvReadPacket = 0x26;
constexpr std::uint8_t kNvWritePacket = 0x27;
constexpr std::size_t kNvPacketData = 3;  // behind command and item

constexpr std::uint8_t kSubsystem = 0x4B;
constexpr std::uint8_t kSubsystemLater = 0x80;
constexpr std::uint8_t kEfsSubsystem = 0x13;
constexpr std::uint8_t kNvSubsystem = 0x30;

bool is_refusal(std::uint8_t command)
{
    return command >= 0x13 && command <= 0x18;
}

// Logs, events and messages tell what the network says of the subscriber; files and items may be his, too.
bool is_packet_private(ByteView packet)
{
    if (packet.empty()) return false;
    switch (packet[0]) {
    case kNvReadPacket:
    case kNvWritePacket: return packet.size() < kNvPacketData || is_private_item(load_le<std::uint16_t>(&packet[1]));
    case kSubsystem:
    case kSubsystemLater: return packet.size() > 1 && (packet[1] == kEfsSubsystem || packet[1] == kNvSubsystem);
    case 0x10:
    case 0x60:
    case 0x79:
    case 0x92:
    case 0x99: return true;
    default: return is_refusal(packet[0]) && is_packet_private(packet.subspan(1));
    }
}

}  // namespace

Piece Piece::cut(std::size_t from, std::size_t size) const
{
    const std::size_t begin = std::min(from, bytes.size());
    return {bytes.subspan(begin, std::min(size, bytes.size() - begin)), offset + begin};
}

Content read_request(std::uint32_t qmi_id, Piece data)
{
    if (const EnvelopeForm* form = find_form(qmi_id)) return form->request(data);
    return read_unknown("request " + std::to_string(qmi_id), data);
}

Content read_said(std::uint32_t qmi_id, Piece data)
{
    return read_unknown("id " + std::to_string(qmi_id), data);
}

Content read_answer(const Asked* asked, Piece data)
{
    if (asked == nullptr) return read_unknown("", data);
    if (const EnvelopeForm* form = find_form(asked->qmi_id)) return form->answer(asked->data, data);
    return read_unknown("request " + std::to_string(asked->qmi_id), data);
}

std::vector<Field> read_sample(std::uint32_t parameter, Piece sample)
{
    const hydra_form* form = modem_hydra_form_of(parameter);
    if (form == nullptr) return {};
    std::vector<Field> fields;
    std::size_t at = 0;
    for (std::uint32_t i = 0; i < form->field_count; ++i) {
        const hydra_field& row = form->fields[i];
        const Piece piece = sample.cut(at, row.size);
        Field field{row.name, {}, {}, false, piece.offset, piece.bytes.size()};
        if (piece.bytes.size() < row.size) {
            field.value = hex_text(piece.bytes);
            field.note = piece.bytes.empty() ? "the sample ends before it" : "the sample ends within it";
            fields.push_back(std::move(field));
            return fields;
        }
        const auto word = peek_le<std::uint32_t>(piece.bytes, 0);
        char text[40];
        if (row.is_real) {
            std::snprintf(text, sizeof text, "%.2f", static_cast<double>(peek_le<float>(piece.bytes, 0)));
            field.value = text;
        } else if (row.is_signed && row.size == 2) {
            field.value = std::to_string(peek_le<std::int16_t>(piece.bytes, 0));
        } else {
            const std::string_view meaning = std::string_view(row.name) == "rat" ? value_name("sample rat", word) : "";
            field.value =
                meaning.empty() ? std::to_string(word) : std::string(meaning) + " (" + std::to_string(word) + ")";
        }
        fields.push_back(std::move(field));
        at += row.size;
    }
    if (at < sample.bytes.size()) {
        const Piece rest = sample.cut(at, sample.bytes.size());
        fields.push_back(
            {"rest", hex_text(rest.bytes), "more than the sample's form has", false, rest.offset, rest.bytes.size()});
    }
    return fields;
}

Content read_packet(Piece packet)
{
    Record record(packet);
    Content content;
    const std::uint8_t command = packet.bytes.empty() ? 0 : packet.bytes[0];
    const auto found = std::ranges::find(kPackets, command, &PacketName::command);
    if (!packet.bytes.empty() && found != std::end(kPackets)) content.name = found->name;
    content.is_fault = !packet.bytes.empty() && is_refusal(command);
    content.is_private = is_packet_private(packet.bytes);
    std::size_t at = 0;
    if (command == kNvReadPacket || command == kNvWritePacket) {
        record.add_number<std::uint16_t>("nv_id", 1);
        at = kNvPacketData;
    }
    record.add_bytes("bytes", at, packet.bytes.size() - std::min(at, packet.bytes.size()));
    content.fields = record.take();
    return content;
}

}  // namespace rbk::trace
