// Sessions on the wire: sessions/*.t. What the modem answers where no command shows it.
//
//     ## What turns it red           a case: a modem with a state directory of its own
//     [nas]                          its scenario, up to the first step
//     > uim 2F 10: 01                a client sends; wire.h says how messages are written
//     < uim r2F 02: w0               and this is what comes next
//     2> uim 30 01: 02               another client, here the second one
//     2x                             it goes, and the modem has met its end
//     $ rbk-modem; echo $?           a command in the state directory, which succeeds,
//     | --listen is required         and what it prints on either channel
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
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "support/lines.h"
#include "support/program.h"
#include "wire.h"

namespace rbk::sim {
namespace {

using test::replaced;

bool is_step(const std::string& line)
{
    constexpr std::string_view kSigns = "><$|=!~x";
    const std::size_t at = !line.empty() && std::isdigit(line[0]) != 0 ? 1 : 0;
    return line == "---" || (line.size() > at && kSigns.find(line[at]) != std::string_view::npos &&
                             (line.size() == at + 1 || line[at + 1] == ' '));
}

using Line = std::pair<int, std::string>;  // with its number

// The lines of a file, its loops written out.
std::vector<Line> lines_of(const std::string& file)
{
    std::vector<Line> lines;
    std::vector<Line> loop;
    int first = 0;
    int last = -1;  // of a loop that is being read
    int number = 0;
    for (const std::string& text : test::lines_of(read_file(test::data_path(file)))) {
        ++number;
        if (std::sscanf(text.c_str(), "* %d %d", &first, &last) == 2) {
            loop.clear();
        } else if (text == "*") {
            for (; first <= last; ++first)
                for (const auto& [at, line] : loop) lines.emplace_back(at, replaced(line, "%", std::to_string(first)));
        } else {
            (first <= last ? loop : lines).emplace_back(number, text);
        }
    }
    return lines;
}

// What a session expects, in the form in which a client shows it.
std::string expected(const std::string& text)
{
    std::istringstream words(text);
    std::string service;
    std::string what;
    std::string rest;
    words >> service >> what;
    std::getline(words, rest);
    if (what == "packet") return service + " packet " + show_bytes(bytes_of(rest));
    const bool message = what.starts_with('r') || what.starts_with('i');
    return message ? service + " " + what + " " + show_tlvs(tlvs_of(rest)) : text;
}

class SessionTest : public testing::TestWithParam<std::string> {
 protected:
    void step(const std::string& line)
    {
        // Who reads late isn't dropped for it, however slow the machine is.
        if (!modem_) modem_.emplace(scenario_, state(), ClientLimits{.unsent_age = std::chrono::minutes(2)});
        const bool numbered = std::isdigit(line[0]) != 0;
        const char number = numbered ? line[0] : '1';
        const std::string rest = line.substr(std::min<std::size_t>(numbered ? 3 : 2, line.size()));
        const std::size_t blank = std::min(rest.find(' '), rest.size());
        EXPECT_TRUE(line[0] == '|' || std::exchange(printed_, {}).empty()) << "more lines";
        switch (line[numbered ? 1 : 0]) {
        case '>': client(number).send(rest); break;
        case '<': EXPECT_EQ(client(number).next(), expected(rest)); break;
        case 'x':
            clients_.erase(number);
            // By the last answer to somebody else the modem has met the other's end.
            for (int i = 0; i < 3; ++i) client('9').lookup(1);
            break;
        case '$': run(rest); break;
        case '|':
            EXPECT_EQ(printed_.empty() ? "nothing" : printed_.front(), rest);
            if (!printed_.empty()) printed_.erase(printed_.begin());
            break;
        case '=':
            EXPECT_EQ(show_file(rest.substr(0, blank)),
                      rest.ends_with(" none") ? "none" : show_bytes(bytes_of(rest.substr(blank))));
            break;
        case '!': complaints_.push_back(rest); break;
        case '~': timers_ = std::stoul(rest); break;
        default: end();
        }
    }

    void end()
    {
        if (!modem_) return;
        EXPECT_TRUE(std::exchange(printed_, {}).empty()) << "more lines";
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

    std::optional<TempDir> folder_;  // of a case
    std::string scenario_;

 private:
    std::filesystem::path state() const { return folder_->path() / "modem"; }

    WireClient& client(char number)
    {
        if (!clients_.contains(number)) clients_.emplace(number, modem_->connect());
        return clients_.at(number);
    }

    void run(const std::string& command)
    {
        const test::RunOptions options{.variables = {{"RBK_HOME", folder_->path() / "home"},
                                                     {"RBK", test::rbk_path()},
                                                     {"PATH", test::bin_path("") + ":" + ::getenv("PATH")}}};
        const std::string script = "exec 2>&1; cd '" + state().string() + "' || exit; " + command;
        const test::RunResult result = test::run({"/bin/sh", "-c", script}, options);
        EXPECT_EQ(result.status, 0) << result.out;
        printed_ = test::lines_of(result.out);
    }

    std::string show_file(const std::string& name) const
    {
        if (!std::filesystem::exists(state() / name)) return "none";
        const std::string content = read_file(state() / name);
        return show_bytes(Bytes(content.begin(), content.end()));
    }

    std::optional<RunningModem> modem_;  // starts with the first step
    std::map<char, WireClient> clients_;
    std::vector<std::string> printed_;  // by the latest command, and not yet looked at
    std::vector<std::string> complaints_;
    std::size_t timers_ = 0;
};

TEST_P(SessionTest, ComesAsItIsWritten)
{
    const std::string file = "simulator/sessions/" + GetParam() + ".t";
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

std::vector<std::string> session_names()
{
    std::vector<std::string> names;
    for (const auto& file : std::filesystem::directory_iterator(test::data_path("simulator/sessions")))
        names.push_back(file.path().stem());
    return names;
}
INSTANTIATE_TEST_SUITE_P(Wire, SessionTest, testing::ValuesIn(session_names()),
                         [](const auto& name) { return name.param; });

}  // namespace
}  // namespace rbk::sim
