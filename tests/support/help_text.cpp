#include "support/help_text.h"

#include "support/home.h"
#include "support/program.h"

namespace rbk::test {

std::string help_of(int group)
{
    const std::string all = read_file(data_path("golden/help.txt"));
    if (group == 0) return all;
    const auto head = [&](int number) { return all.find("\n" + std::to_string(number) + ": ") + 1; };
    const std::size_t closing = all.find("=========== above");
    const std::size_t end = group == 12 ? closing : head(group + 1);
    return all.substr(0, head(1)) + all.substr(head(group), end - head(group)) + all.substr(closing);
}

}  // namespace rbk::test
