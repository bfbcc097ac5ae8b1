// A property's file holds whatever a person or a killed process left there: it is read as a value that fits, or refused
// in words; and a value that is written comes back as it was.
//
// An input is a row of steps: what is done, the name, the bytes.
#include <cstdlib>
#include <fstream>

#include "fuzz/input.h"
#include "fuzz/scratch.h"
#include "platform/linux/property_store.h"

using namespace rbk;

namespace {

void demand(bool holds)
{
    if (!holds) std::abort();
}

void check_reading(const platform::PropertyStore::Reading& reading)
{
    demand(reading.problem.empty() || !reading.value);
    if (!reading.value) return;
    demand(reading.value->size() <= platform::kPropertyValueMax && reading.value->find('\0') == std::string::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::ScratchFolder folder;
    static const fuzz::MemoryFile boot_id;
    static const std::string names[] = {"persist.radio.ssr_wait_s", "ro.product.name", "debug.device.usb_state"};
    const std::filesystem::path root = folder.path() / "properties";
    const std::filesystem::path kept = root / "kept";
    const platform::PropertyStore store(root, boot_id.path());
    std::filesystem::create_directories(kept);

    for (fuzz::Input input(data, size); !input.empty();) {
        const std::uint8_t step = input.byte();
        const std::string name = (step & 0x40) != 0 ? input.text() : names[(step >> 4) % std::size(names)];
        switch (step % 4) {
        case 0: {  // by hand
            const std::string content = input.text();
            if ((step & 0x40) == 0) std::ofstream(kept / name, std::ios::binary) << content;
            check_reading(store.get(name));
            break;
        }
        case 1: {
            const std::string value = input.text();
            if (!store.set(name, value).empty()) break;
            const auto reading = store.get(name);
            demand(reading.value.has_value());
            check_reading(reading);
            // A line feed at the end may be the file's own, and a zero byte ends a value.
            if (value.find('\0') == std::string::npos && !value.ends_with('\n')) demand(*reading.value == value);
            break;
        }
        case 2:
            if (store.unset(name).empty()) demand(!store.get(name).value);
            break;
        default:
            for (const auto& [listed, value] : store.list().values) {
                demand(store.get(listed).value == value);
                demand(value.size() <= platform::kPropertyValueMax);
            }
            break;
        }
    }
    folder.empty();
    return 0;
}
