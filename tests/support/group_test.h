// A command group as people run it: standard output under a mask without traces, and what reached the modem.
#pragma once

#include <string>
#include <vector>

#include "support/embedded_run.h"
#include "support/help_text.h"
#include "support/program.h"

namespace rbk::test {

using Words = std::vector<std::string>;

inline Words with_data(Words words, std::size_t count, const char* word)
{
    words.insert(words.end(), count, word);
    return words;
}

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
    // Bytes of the record in the latest request.
    std::string sent(std::size_t offset, std::size_t size) const
    {
        return requests().empty() ? "" : requests().back().bytes.substr(2 * (17 + offset), 2 * size);
    }
};

}  // namespace rbk::test
