// Sessions on the wire: sessions/*.t. What the modem answers where no command shows it.
//
//     ## What turns it red           a case: a modem with a state directory of its own
//     [nas]                          its scenario, up to the first step
//     > uim 2F 10: 01                a client sends; wire.h says how messages are written
//     < uim r2F 02: w0               and this is what comes next
//     2> uim 30 01: 02               another client, here the second one
//     2x                             it goes, and the modem has met its end
//     $ touch marks                  a command in the state directory
//     = nv/0/550 A1B2                a file there has these bytes; `none`: there is no such file
//     ! STATE/marks: Not a directory     the modem complains, sooner or later
//     ~ 1                            timers that are still to run at the end
//     ---                            the modem ends and another one starts on its state, with the scenario that follows
//     : EID 8904903212345123         from here on the name stands for these bytes, to the end of the file
//     * 0 7                          the lines up to the next * are for each % from 0 to 7
//     # why                          a comment
//
// At the end of each modem nothing is left: no message, no complaint, no timer but those that the session tells.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdlib>

#include "support/program.h"
#include "wire.h"

namespace rbk::sim {
namespace {

constexpr const char* kFiles[] = {"diag", "extended", "faults", "nas_sar_vs", "nvefs", "pdc", "router", "state", "uim"};

std::string replaced(std::string text, const std::string& what, const std::string& with)
{
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

bool is_step(const std::string& line)
{
    constexpr std::string_view kSigns = "><$=!~x";
    const std::size_t at = !line.empty() && std::isdigit(line[0]) != 0 ? 1 : 0;
    return line == "---" || (line.size() > at && kSigns.find(line[at]) != std::string_view::npos &&
                             (line.size() == at + 1 || line[at + 1] == ' '));
}

struct Line {
    std::size_t number;
    std::string text;
};

// The lines of a file, its loops written out.
std::vector<Line> lines_of(const std::string& file)
{
    const std::vector<std::string> texts = test::lines_of(read_file(test::data_path(file)));
    std::vector<Line> lines;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (!texts[i].starts_with("* ")) {
            lines.push_back({i + 1, texts[i]});
            continue;
        }
        std::size_t space = 0;
        const int first = std::stoi(texts[i].substr(2), &space);
        const int last = std::stoi(texts[i].substr(2 + space));
        const auto begin = static_cast<std::ptrdiff_t>(++i);
        while (texts.at(i) != "*") ++i;
        for (int each = first; each <= last; ++each) {
            for (auto number = begin; number < static_cast<std::ptrdiff_t>(i); ++number)
                lines.push_back(
                    {static_cast<std::size_t>(number) + 1, replaced(texts[number], "%", std::to_string(each))});
        }
    }
    return lines;
}

// What a session expects, in the form in which a client shows it.
std::string expected(const std::string& text)
{
    const std::size_t service = text.find(' ');
    const std::size_t message = std::min(text.find(' ', service + 1), text.size());
    if (service == std::string::npos) return text;
    const std::string rest = text.substr(message);
    if (text.substr(service + 1, message - service - 1) == "packet")
        return text.substr(0, message) + " " + show_bytes(bytes_of(rest));
    const char kind = text[service + 1];
    return kind == 'r' || kind == 'i' ? text.substr(0, message) + " " + show_tlvs(tlvs_of(rest)) : text;
}

class SessionTest : public testing::TestWithParam<const char*> {
 protected:
    void step(const std::string& line);
    void end();

    std::optional<TempDir> folder_;
    std::string scenario_;
    std::optional<RunningModem> modem_;  // starts with the first step
    std::map<char, WireClient> clients_;
    std::vector<std::string> complaints_;
    std::size_t timers_ = 0;

 private:
    std::filesystem::path state() const { return folder_->path() / "modem"; }
};

void SessionTest::step(const std::string& line)
{
    if (!modem_) modem_.emplace(scenario_, state());
    const bool numbered = std::isdigit(line[0]) != 0;
    const char number = numbered ? line[0] : '1';
    const std::string rest = line.substr(std::min<std::size_t>(numbered ? 3 : 2, line.size()));
    if (!clients_.contains(number)) clients_.emplace(number, modem_->connect());
    WireClient& client = clients_.at(number);
    switch (line[numbered ? 1 : 0]) {
    case '>': client.send(rest); break;
    case '<': EXPECT_EQ(client.next(), expected(rest)); break;
    case 'x':
        clients_.erase(number);
        // By the last answer to somebody else the modem has met the other's end.
        for (int i = 0; i < 3; ++i) clients_.try_emplace('9', modem_->connect()).first->second.lookup(1);
        break;
    case '$': EXPECT_EQ(std::system(("cd '" + state().string() + "' && " + rest).c_str()), 0); break;
    case '=': {
        const std::size_t name = std::min(rest.find(' '), rest.size());
        const std::filesystem::path file = state() / rest.substr(0, name);
        const bool there = std::filesystem::exists(file);
        const std::string content = read_file(file);
        EXPECT_EQ(there ? show_bytes(Bytes(content.begin(), content.end())) : "none",
                  rest.substr(name) == " none" ? "none" : show_bytes(bytes_of(rest.substr(name))));
        break;
    }
    case '!': complaints_.push_back(rest); break;
    case '~': timers_ = std::stoul(rest); break;
    case '-': end(); break;
    default: FAIL() << "no step";
    }
}

void SessionTest::end()
{
    if (!modem_) return;
    for (auto& [number, client] : clients_) client.lookup(1);  // the modem has handled what was sent
    modem_->stop();
    EXPECT_EQ(modem_->modem().loop().timer_count(), timers_) << "timers";
    for (std::string& line : modem_->complaints) line = replaced(line, state().string(), "STATE");
    EXPECT_EQ(modem_->complaints, complaints_);
    modem_.reset();
    for (auto& [number, client] : clients_) EXPECT_EQ(client.next(), "closed") << "client " << number;
    clients_.clear();
    complaints_.clear();
    scenario_.clear();
    timers_ = 0;
}

TEST_P(SessionTest, ComesAsItIsWritten)
{
    const std::string file = std::string("simulator/sessions/") + GetParam() + ".t";
    std::vector<std::pair<std::string, std::string>> names;
    bool stepping = false;
    for (const auto& [number, text] : lines_of(file)) {
        SCOPED_TRACE(file + ":" + std::to_string(number) + ": " + text);
        std::string line = text;
        for (const auto& [name, bytes] : names) line = replaced(line, name, bytes);
        if (line.starts_with(": ")) {
            const std::size_t end = line.find(' ', 2);
            names.emplace_back(line.substr(2, end - 2), line.substr(end + 1));
        } else if (line.starts_with("## ")) {
            end();
            folder_.emplace();
            stepping = false;
        } else if (is_step(line)) {
            step(line);
            stepping = line != "---";
        } else if (!stepping) {
            scenario_ += line + "\n";
        } else {
            EXPECT_TRUE(line.empty() || line[0] == '#') << "no step";
        }
    }
    end();
}
INSTANTIATE_TEST_SUITE_P(Wire, SessionTest, testing::ValuesIn(kFiles),
                         [](const auto& file) { return std::string(file.param); });

TEST(Sessions, AllOfThemAreRun)
{
    const std::filesystem::directory_iterator files(test::data_path("simulator/sessions"));
    EXPECT_EQ(static_cast<std::size_t>(std::distance(begin(files), end(files))), std::size(kFiles));
}

}  // namespace
}  // namespace rbk::sim
