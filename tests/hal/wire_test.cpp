// What stands on the wire against what is written of it. tables.txt says in words what each message of the six services
// has; each is also written and read with bytes that all differ, and tells which of its TLVs it can do without. The blocks
// of docs/wire.md are what a run of the command that they name sends and receives.
#include <fstream>
#include <sstream>

#include "hal/exchanges.h"
#include "link/link_socket.h"
#include "platform/include/services/nas_v01.h"
#include "platform/include/services/pdc_v01.h"
#include "platform/include/services/sar_v01.h"
#include "platform/include/services/uim_v01.h"
#include "platform/linux/idl_codec.h"
#include "support/program.h"
#include "velmor_extend_nvefs.h"
#include "velmor_extend_v01.h"
#include "vs_v01.h"

namespace rbk::test {
namespace {

struct ServiceCase {
    const char* name;
    qmi_idl_service_object_type (*object)(std::int32_t version, std::int32_t minor_version, std::int32_t library);
    std::uint32_t id;
    std::int32_t minor_version;
};
const ServiceCase kServices[] = {
    {"nas", nas_get_service_object_internal_v01, 3, 388},
    {"uim", uim_get_service_object_internal_v01, 11, 103},
    {"sar", sar_get_service_object_internal_v01, 17, 15},
    {"pdc", pdc_get_service_object_internal_v01, 36, 16},
    {"vs", vs_get_service_object_internal_v01, 228, 2},
    {"extended", velmor_extend_get_service_object_internal_v01, 0xFFE4, 1},
};

// A message with all that is optional, two elements in what is counted, and bytes that differ.
struct Sample {
    explicit Sample(const idl_message& message) : structure(message.size)
    {
        for (const idl_field& field : std::span(message.fields, message.field_count)) {
            if (field.form == IDL_RESERVED_BYTES) continue;
            if (field.optional) structure[field.flag_offset] = 1;
            const std::size_t head = wire.size();
            wire.insert(wire.end(), {field.tlv, 0, 0});
            words += words.empty() ? " " : ", ";
            words += hex({field.tlv}) + (field.optional ? "? " : " ") + field.name + " " + put(field, 0);
            store_le(&wire[head + 1], static_cast<std::uint16_t>(wire.size() - head - 3));
        }
    }

    // Puts one field into the structure at `base` and on the wire; gives its form in words.
    std::string put(const idl_field& field, std::size_t base)
    {
        const bool text = field.form == IDL_CHARACTERS;
        const bool counted = field.form == IDL_COUNTED;
        if (counted) structure[base + field.count_offset] = 2;
        if (counted || (text && field.tlv == IN_RECORD)) {
            wire.push_back(2);
            wire.resize(wire.size() + field.count_width - 1);
        }
        std::string form;
        std::size_t place = base + field.offset;
        for (std::uint32_t left = text || counted ? 2 : field.limit; left > 0; --left, place += field.memory_width) {
            form = (field.wire_width < field.memory_width ? "e" : "u") + std::to_string(8 * field.wire_width);
            for (std::uint32_t byte = 0; byte < field.wire_width; ++byte)
                wire.push_back(structure[place + byte] = last = static_cast<std::uint8_t>(last % 255 + 1));
            if (field.record == nullptr) continue;
            form.clear();
            for (const idl_field& inner : std::span(field.record->fields, field.record->field_count))
                form += (form.empty() ? "{" : ", ") + std::string(inner.name) + " " + put(inner, place);
            form += "}";
        }
        if (field.form == IDL_SINGLE) return form;
        const std::string count = counted ? "n" + std::to_string(8 * field.count_width) + ":" : "";
        return (text ? "text" : form) + "[" + count + std::to_string(field.limit) + "]";
    }

    Bytes structure;
    Bytes wire;
    std::string words;
    std::uint8_t last = 0;
};

TEST(Tables, EveryFieldStandsInItsPlace)
{
    static const char* const kinds[] = {" request:", " response:", " indication:"};
    std::string found;
    for (const auto& [name, object, id, minor_version] : kServices) {
        const qmi_idl_service_object& service = *object(1, minor_version, 6);
        EXPECT_EQ(service.service_id, id) << name;
        for (const qmi_idl_service_object_type other :
             {object(2, minor_version, 6), object(1, minor_version + 1, 6), object(1, minor_version, 5)})
            EXPECT_EQ(other, nullptr) << name << " of another version";
        for (const idl_message& message : std::span(service.messages, service.message_count)) {
            const Sample sample(message);
            const Bytes number = {static_cast<std::uint8_t>(message.id >> 8), static_cast<std::uint8_t>(message.id)};
            const std::string head = name + (" 0x" + hex(number)) + kinds[message.kind];
            found += head + sample.words + "\n";
            SCOPED_TRACE(head);

            Bytes written(message.stated_longest);
            written.resize(platform::encode(message, sample.structure.data(), written).value_or(0));
            EXPECT_EQ(written, sample.wire);
            Bytes read(message.size, 0xEE);
            EXPECT_TRUE(platform::decode(message, sample.wire, read.data()));
            EXPECT_EQ(read, sample.structure);
            for (std::size_t at = 0; at < sample.wire.size(); at += 3 + load_le<std::uint16_t>(&sample.wire[at + 1])) {
                Bytes without = sample.wire;
                without[at] = 0x77;  // which no message has
                EXPECT_EQ(platform::decode(message, without, read.data()), sample.wire[at] >= 0x10) << at;
            }
        }
    }
    std::string expected;
    for (const std::string& line : lines_of(read_file(data_path("hal/tables.txt"))))
        if (!line.starts_with("#")) expected += line + "\n";
    EXPECT_EQ(found, expected);
}

// ---- docs/wire.md ----

// The bytes of the block that opens with ```name, in hex.
std::string block(const std::string& name)
{
    std::ifstream page(data_path("../docs/wire.md"));
    std::string line, bytes;
    while (std::getline(page, line) && line != "```" + name) {
    }
    while (std::getline(page, line) && line != "```") {
        std::istringstream words(line.substr(0, line.find('|')));
        for (std::string word; words >> word;) {
            std::size_t count = 1;
            if (word == "x" && words >> count) word = bytes.substr(bytes.size() - 2), --count;
            bytes += times(count, word);
        }
    }
    return bytes;
}

std::string packet(const link::ControlPacket& control)
{
    const auto packed = link::pack_control(control);
    return hex({packed.begin(), packed.end()});
}

TEST(WirePage, LookupBlocksAreControlPackets)
{
    EXPECT_EQ(block("lookup"), packet({QRTR_TYPE_NEW_LOOKUP, 0xFFE4, 0, {}}));
    EXPECT_EQ(block("new-server"), packet({QRTR_TYPE_NEW_SERVER, 0xFFE4, 1, {0, 5}}));
    EXPECT_EQ(block("end-of-list"), packet({QRTR_TYPE_NEW_SERVER, 0, 0, {}}));
    EXPECT_EQ(block("address").size(), 2 * link::kAddressSize);
}

class WireRun : public EmbeddedRun {};

TEST_F(WireRun, MessagesAreThoseOfTheCommand)
{
    const std::string said = block("indication").substr(2 * 7);
    scenario("[[indication]]\nservice = 'extended'\nmessage = 3\nafter_ms = 1\nbytes = '" + said + "'\n");
    std::uint32_t len = 9;
    EXPECT_EQ(velmor_nv_read(0, 550, room, &len), 0);
    ASSERT_TRUE(wait_until([this] { return trace().size() == 3; }));
    const std::vector<Traced> messages = trace();
    // Flags, transaction, message, length; TLVs.
    const auto datagram = [&](const std::string& head, std::size_t i) {
        return head + le(messages[i].bytes.size() / 2, 2) + messages[i].bytes;
    };
    EXPECT_EQ(block("request"), datagram("0001000200", 0)) << messages[0].head;
    EXPECT_EQ(block("response"), datagram("0201000200", 1)) << messages[1].head;
    EXPECT_EQ(block("indication"), datagram("0400000300", 2)) << messages[2].head;
}

}  // namespace
}  // namespace rbk::test
