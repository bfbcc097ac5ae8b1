// The report of a validation: whatever document the modem streams, its messages are whole and the last one closes it.
//
// An input is a document, or behind a zero byte the items to make one of: an id by number or by name, and the values as
// bytes.
#include <libxml/xmlerror.h>

#include <cstdlib>
#include <cstring>

#include "fuzz/device.h"
#include "fuzz/scratch.h"
#include "velmor_mbn_utils.h"

using namespace rbk;

namespace {

bool g_closed;

void demand(bool holds)
{
    if (!holds) std::abort();
}

void hear(const void* message, std::int32_t size)
{
    mbn_report_head head;
    std::memcpy(&head, message, sizeof head);
    demand(!g_closed && static_cast<std::uint32_t>(size) == sizeof head + head.id_len + head.ref_len + head.dev_len);
    const auto* texts = static_cast<const std::uint8_t*>(message) + sizeof head;
    const Bytes copy(texts, texts + size - sizeof head);
    g_closed = head.index == -1;
}

void say_nothing(void*, const char*, ...) {}

void say_nothing_either(void*, xmlErrorPtr) {}

std::string value(ByteView bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes) text += std::to_string(byte) + ' ';
    return text;
}

std::string document(fuzz::Input& input)
{
    static const std::string ids[] = {"/Data_Profiles/Profile1", "/nv/item_files/ims/qp_ims_service_enablement_config",
                                      "550"};
    std::string text = "<NvData>";
    while (!input.empty()) {
        const std::uint8_t step = input.byte();
        const std::string element = (step & 1) != 0 ? "NvEfsItemData" : "NvItemData";
        const ByteView reference = input.block();
        text += "<" + element + " id=\"" + ids[(step >> 1) % std::size(ids)] + "\"><NvItemDataREFERENCE><Member>" +
                value(reference) + "</Member></NvItemDataREFERENCE><NvItemDataDEVICE><Member>" +
                value((step & 0x40) != 0 ? reference : input.block()) + "</Member></NvItemDataDEVICE></" + element +
                ">";
    }
    return text + "</NvData>";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile file;
    fuzz::Input input(data, size);
    fuzz::Device::get().start(input);
    xmlSetGenericErrorFunc(nullptr, say_nothing);
    xmlSetStructuredErrorFunc(nullptr, say_nothing_either);
    g_velmor_hal_send_broadcast_for_pdc_configs_validation_cb = hear;
    if (size > 0 && data[0] == 0) {
        input.byte();
        const std::string text = document(input);
        file.fill({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    } else {
        file.fill({data, size});
    }
    g_closed = false;
    parse_mbn_diff_result(file.path().c_str());
    demand(g_closed);
    return 0;
}
