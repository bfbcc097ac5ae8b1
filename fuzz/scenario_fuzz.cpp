// A scenario file is taken or refused in words; it never does anything else.
#include "fuzz/scratch.h"
#include "simulator/scenario/scenario.h"
#include "simulator/scenario/scenario_reader.h"

using namespace rbk;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::MemoryFile file;
    file.fill({data, size});
    try {
        static_cast<void>(sim::read_scenario(file.path()));
    } catch (const sim::ScenarioError&) {
    }
    return 0;
}
