#include "simulator/scenario/built_in_phone.h"

#include <string_view>

#include "simulator/scenario/scenario.h"

namespace rbk::sim {
namespace {

struct NvRow {
    std::uint32_t sub;
    std::uint32_t item;
    Bytes bytes;
};

// 124 bytes of what the hardware has; the word at byte 16 says that there is an eSIM.
Bytes hardware_record()
{
    Bytes record(124);
    record[0] = 1;
    record[16] = 1;
    return record;
}

EfsPlace place(std::uint32_t sub, std::string_view path)
{
    return *EfsPlace::parse(sub, {reinterpret_cast<const std::uint8_t*>(path.data()), path.size()});
}

Bytes text(std::string_view words)
{
    return {words.begin(), words.end()};
}

}  // namespace

void add_built_in_phone(Scenario& scenario)
{
    // Identities as the network knows them: length, then digits in nibbles, the first one above the type (0xA).
    const NvRow nv[] = {
        {0, 550, {0x08, 0x3A, 0x45, 0x67, 0x89, 0x01, 0x23, 0x45, 0x67}},
        {1, 550, {0x08, 0x3A, 0x45, 0x67, 0x89, 0x01, 0x23, 0x45, 0x75}},
        {2, 550, {0x08, 0x3A, 0x45, 0x67, 0x89, 0x01, 0x23, 0x45, 0x83}},
        {0, 10, {0x00, 0x1E, 0x00}},  // mode preference: automatic
        {1, 10, {0x00, 0x1E, 0x00}},
        {0, 441, {0x80, 0x03}},  // band preference
        {1, 441, {0x80, 0x03}},
        {0, 4398, {0x01}},
        {0, 6853, hardware_record()},
    };
    for (const NvRow& row : nv) scenario.nv[{row.sub, row.item}] = row.bytes;

    scenario.efs = {
        {place(0, "/nv/item_files/modem/mmode/lte_bandpref"), {0xDF, 0x38, 0x0E, 0x00, 0x00, 0x00, 0x00, 0x00}},
        {place(1, "/nv/item_files/modem/mmode/lte_bandpref"), {0xDF, 0x38, 0x0E, 0x00, 0x00, 0x00, 0x00, 0x00}},
        {place(1, "/nv/item_files/modem/nr5g/RRC/cap_control"), {0x01, 0x00, 0x00, 0x00}},
        {place(0, "/policyman/device_config.xml"), text("<device_config subscriptions=\"2\"/>\n")},
    };
    scenario.at = {{"AT", "OK"}, {"ATI", "Simulated modem\nOK"}, {"AT+CFUN?", "+CFUN: 1\nOK"}};
}

}  // namespace rbk::sim
