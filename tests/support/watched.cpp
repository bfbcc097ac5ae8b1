#include "support/watched.h"

#include <sstream>

#include "support/home.h"

namespace rbk::test {

std::map<std::string, std::string> watched_in(const std::filesystem::path& home)
{
    return {{"RBK_HOME", home},
            {"RBK_TRACE", home / "trace"},
            {"RBK_LOGCAT", home / "log"},
            {"RBK_TEST_CALLS", home / "calls"},
            {"RBK_TEST_DIVISOR", "100"}};
}

std::vector<Traced> trace_in(const std::filesystem::path& home)
{
    std::vector<Traced> messages;
    for (const std::string& line : lines_of(read_file(home / "trace"))) {
        const std::size_t way = line.find(' ') + 1;
        const std::size_t bytes = line.rfind(' ') + 1;
        Traced& one = messages.emplace_back();
        one = {line[way] == '>', line.substr(way + 2, bytes - way - 3), line.substr(bytes), "diag", "", "", ""};
        if (one.head.starts_with(one.service)) continue;
        std::istringstream(one.head) >> one.service >> one.kind >> one.transaction >> one.message;
        for (std::string* word : {&one.service, &one.message}) word->erase(0, word->find('=') + 1);
    }
    return messages;
}

}  // namespace rbk::test
