// A command group as people run it: standard output under a mask without traces, and what reached the modem.
#pragma once

#include <string>
#include <vector>

#include "support/embedded_run.h"
#include "support/program.h"

namespace rbk::test {

using Words = std::vector<std::string>;

class GroupTest : public EmbeddedRun {
 public:
    GroupTest() { set_property("persist.vendor.radio.adb_log_shell", "11"); }

    // Runs and gives what stands on standard output; the exit status is always 0.
    static std::string shown(const Words& words)
    {
        const RunResult result = run_rbk(words);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return without_line_numbers(result.out);
    }
};

}  // namespace rbk::test
