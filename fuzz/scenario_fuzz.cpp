// A scenario file is taken or refused in words; it never does anything else.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>

#include "simulator/scenario.h"
#include "simulator/scenario_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const int file = ::memfd_create("scenario", MFD_CLOEXEC);
    if (::ftruncate(file, 0) != 0 || ::pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) std::abort();
    try {
        static_cast<void>(rbk::sim::read_scenario("/proc/self/fd/" + std::to_string(file)));
    } catch (const rbk::sim::ScenarioError&) {
    }
    return 0;
}
