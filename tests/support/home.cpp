#include "support/home.h"

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "platform/linux/property_store.h"

namespace rbk::test {
namespace {

// What the machine, or an earlier case, has said to the system.
void forget_variables()
{
    std::vector<std::string> names;
    for (char** each = environ; *each != nullptr; ++each) {
        const std::string_view variable = *each;
        const bool is_ours = variable.starts_with("RBK_SWEEP");
        if (variable.starts_with("RBK_") && !is_ours) names.emplace_back(variable.substr(0, variable.find('=')));
    }
    for (const std::string& name : names) unsetenv(name.c_str());
}
const bool forgotten = (forget_variables(), true);  // also for cases without a home

}  // namespace

TempDir::TempDir()
{
    std::string name = std::filesystem::temp_directory_path() / "rbk-test-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) std::abort();
    path_ = name;
}

TempDir::~TempDir()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string read_file(const std::filesystem::path& file)
{
    std::ostringstream content;
    content << std::ifstream(file, std::ios::binary).rdbuf();
    return content.str();
}

void write_file(const std::filesystem::path& file, std::string_view content)
{
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
}

std::vector<std::string> lines_of(std::string_view text)
{
    std::vector<std::string> lines;
    std::istringstream stream{std::string(text)};
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

HomeTest::HomeTest()
{
    forget_variables();
    write_file(home() / "log", "");
    write_file(home() / "calls", "");
    setenv("RBK_HOME", home().c_str(), 1);
    setenv("RBK_LOGCAT", (home() / "log").c_str(), 1);
    setenv("RBK_TEST_CALLS", (home() / "calls").c_str(), 1);
    setenv("RBK_TEST_DIVISOR", "100", 1);
}

void HomeTest::set_property(const std::string& name, const std::string& value) const
{
    ASSERT_EQ(platform::PropertyStore(home() / "properties").set(name, value), "");
}

// Whole lines alone: another thread may be about to write the rest of one.
std::vector<std::string> HomeTest::new_lines(const std::filesystem::path& file, std::size_t& seen)
{
    const std::string text = read_file(file);
    const std::size_t end = text.rfind('\n') + 1;
    const std::string_view fresh = std::string_view(text).substr(seen, end - seen);
    seen = end;
    return lines_of(fresh);
}

}  // namespace rbk::test
