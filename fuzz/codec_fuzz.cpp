// Foreign TLVs for each message of each service's table: they are refused, with the structure as it was, or taken, and
// then what was taken goes out as bytes that come in as the same again.
//
// An input is one byte for the service, one for the row of its table, and the TLVs.
#include <cstdlib>
#include <cstring>

#include "fuzz/input.h"
#include "platform/include/services/nas_v01.h"
#include "platform/include/services/pdc_v01.h"
#include "platform/include/services/sar_v01.h"
#include "platform/include/services/uim_v01.h"
#include "platform/linux/idl_codec.h"
#include "velmor_extend_v01.h"
#include "vs_v01.h"

using namespace rbk;

namespace {

void demand(bool holds)
{
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const qmi_idl_service_object_type services[] = {
        velmor_extend_get_service_object_internal_v01(EXTEND_VERSION, EXTEND_MINOR_VERSION, IDL_LIBRARY_VERSION),
        vs_get_service_object_internal_v01(VS_VERSION, VS_MINOR_VERSION, IDL_LIBRARY_VERSION),
        pdc_get_service_object_internal_v01(PDC_VERSION, PDC_MINOR_VERSION, IDL_LIBRARY_VERSION),
        uim_get_service_object_internal_v01(1, 103, 6),
        nas_get_service_object_internal_v01(1, 388, 6),
        sar_get_service_object_internal_v01(1, 15, 6),
    };
    fuzz::Input input(data, size);
    const qmi_idl_service_object& service = *services[input.byte() % std::size(services)];
    const idl_message& message = service.messages[input.byte() % service.message_count];

    // Of its exact size, so that a byte too far is seen.
    Bytes structure(message.size, 0xA5);
    const Bytes before = structure;
    if (!platform::decode(message, input.rest(), structure.data())) {
        demand(structure == before);
        return 0;
    }
    Bytes out(message.stated_longest);
    const auto length = platform::encode(message, structure.data(), out);
    if (!length) return 0;  // a count above the room was kept as it came, and doesn't go out
    out.resize(*length);

    Bytes again(message.size, 0x5A);
    demand(platform::decode(message, out, again.data()));
    Bytes out_again(message.stated_longest);
    demand(platform::encode(message, again.data(), out_again) == length);
    out_again.resize(*length);
    demand(out_again == out);
    if (out.empty()) return 0;
    Bytes narrow(out.size() - 1);
    demand(!platform::encode(message, structure.data(), narrow));
    return 0;
}
