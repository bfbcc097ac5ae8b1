// Golden sessions: what a person types, and all that comes of it. A file of sessions (golden/*.t) is a case.
//
//   == words                 a session: a home, a modem and a scenario of its own; the mask of the screen is 11
//   # words                  for the reader
//   | toml                   a line of the scenario, from the session's next command on; 00*8 is eight zeros
//   scenario NAME            one of those that come with the programs, in the place of such lines
//   env NAME=VALUE           for the commands that follow; an empty value takes it away, also what the runner sets
//   $ rbk 3 0 5 -1*50        the shell with shortened waits; "word*50" is fifty words, '...' may hold blanks
//   $ traced rbk 3 1         the same; messages of the log that aren't on the screen stand there too, as level 4
//   $ inside rbk 3 1         as traced, without what every run traces at its start
//   $ inside FILE.cpp rbk 3 1   only what this file traces, as where other threads' traces have no fixed place; or
//                               a few files
//   $ again rbk 4 1 0 550    traced, made a scenario by rbk-trace, and run once more with that in a fresh home with the same
//                            properties, which says the same, has the same messages on its link and ends with the same
//                            status: nothing comes of it. With a built-in phone it has to differ.
//   $ kbr 9 20 0             the shell under another name, whatever it is
//   $ rbk-prop get NAME      the properties
//   $ show modem/nv/0/550    a file of the home in hex, the names in a folder, or "absent"
//   $ text modem/marks/sync  a file of the home that is text, without its times
//   $ put modem/card/1 word  writes such a file; $ remove PATH takes it or a folder away
//   $ sh rbk 5 5 | wc        a line of the system's shell in a folder of the session's own, where RBK_HOME is "state": of
//                            the runner's variables only the scenario's, and only output and status come of it
//
// What came of a command stands below it, in this order:
//   1 velmor_rbk_test_rf.cpp main: text    a message of the screen with its level: 1 failure, 2 step, 8 for the user
//   1 ^ text                 the same file and function as the message above
//   @again 3                 the line above three times more
//   - text                   printed bare, or said by another program; 0x4B*4096 is a word that comes 64 times or more
//   @help 3                  a group's whole help
//   E text                   standard error
//   exit 1                   the status, unless it is 0
//   > 0xFFE4 0x0002 3000 ms 01:04000000 ...    a request: service, message, time-out asked for, TLVs; x30 if it went out
//                                              eight times or more
//   > diag 7C                a request to diag
//   ! sleep 5 x3             waits, timers and commands of the system
//
// UPDATE_GOLDEN=1 in the environment writes the files anew: read what has changed before it is kept.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <regex>

#include "support/embedded_run.h"
#include "support/home.h"
#include "support/lines.h"
#include "support/program.h"

namespace rbk::test {
namespace {

// Bytes as with_runs tells them: "0A 00*3" is "0A 000000".
std::string without_runs(std::string text)
{
    static const std::regex kRun(R"(([0-9A-F]{2})\*(\d+))");
    for (std::smatch run; std::regex_search(text, run, kRun);) {
        std::string bytes;
        for (std::size_t i = std::stoul(run[2]); i > 0; --i) bytes += run[1];
        text.replace(run.position(0), run.length(0), bytes);
    }
    return text;
}

// Words of a line that are printed many times in a row stand there once, with their number.
std::string with_word_runs(const std::string& line)
{
    Lines words(1);
    for (const char character : line) {
        if (character == ' ') words.emplace_back();
        if (character != ' ') words.back() += character;
    }
    std::string text;
    for (const auto& [word, count] : runs_of(words)) {
        const bool is_run = count >= 64;
        for (std::size_t i = is_run ? count : 1; i <= count; ++i) text += " " + word;
        if (is_run) text += "*" + std::to_string(count);
    }
    return text.substr(1);
}

// "01:04000000 10:00*550": the TLVs of a request; bytes that are none stand at the end as they are.
std::string tlvs_of(std::string rest)
{
    std::string text;
    while (rest.size() >= 6) {
        const std::size_t len = std::stoul(rest.substr(4, 2) + rest.substr(2, 2), nullptr, 16);
        if (rest.size() < 6 + 2 * len) break;
        text += " " + rest.substr(0, 2) + ":" + with_runs(rest.substr(6, 2 * len));
        rest.erase(0, 6 + 2 * len);
    }
    return rest.empty() ? text : text + " " + rest;
}

Lines words_of(const std::string& line)
{
    static const std::regex kWord(R"('([^']*)'|(\S+?)\*(\d+)(?=\s|$)|(\S+))");
    Lines words;
    for (std::sregex_iterator each(line.begin(), line.end(), kWord), end; each != end; ++each) {
        const std::smatch& word = *each;
        if (word[1].matched) words.push_back(word[1]);
        if (word[2].matched) words.insert(words.end(), std::stoul(word[3]), word[2]);
        if (word[4].matched) words.push_back(word[4]);
    }
    return words;
}

class Session {
 public:
    Session() { run_rbk_prop({"set", "persist.vendor.radio.adb_log_shell", "11"}, options()); }

    void scenario(const std::string& line) { scenario_ += without_runs(line) + "\n"; }
    void scenario_that_comes(const std::string& name) { scenario_name_ = name; }
    void variable(const std::string& line)
    {
        variables_[line.substr(0, line.find('='))] = line.substr(line.find('=') + 1);
    }

    // Runs one command; what came of it.
    Lines run(const std::string& command)
    {
        if (command.starts_with("sh ")) return in_shell(command.substr(3));
        Lines words = words_of(command);
        if (words.at(0) == "again") return again({words.begin() + 2, words.end()});
        const bool inside = words.at(0) == "inside";
        const bool traced = inside || words[0] == "traced";
        if (traced) words.erase(words.begin());
        Lines traced_files;
        for (; inside && words.at(0).ends_with(".cpp"); words.erase(words.begin())) traced_files.push_back(words[0]);
        const std::string program = words.at(0);
        words.erase(words.begin());
        if (program == "show") return show(words.at(0));
        if (program == "text") return bare(masked(read_file(home_.path() / words.at(0))));
        if (program == "remove") return std::filesystem::remove_all(home_.path() / words.at(0)), Lines{};
        if (program == "put") return write_file(home_.path() / words.at(0), words.at(1)), Lines{};

        for (const char* file : {"log", "trace", "calls"}) write_file(home_.path() / file, "");
        const bool is_shell = program != "rbk-prop";
        RunOptions options = this->options();
        if (is_shell && program != "rbk") options.name = program;
        const RunResult result = is_shell ? run_rbk(words, options) : run_rbk_prop(words, options);
        Lines lines = is_shell ? screen(result.out, traced, inside, traced_files) : bare(result.out);
        append_end(lines, result);
        tell_requests_and_calls(lines);
        for (std::string& line : lines) line = masked(line);
        return lines;
    }

 private:
    RunOptions options() const { return options(home_, name_scenario()); }
    RunOptions options(const TempDir& home, const std::string& scenario) const
    {
        std::map<std::string, std::string> variables = watched_in(home.path());
        variables["RBK_SCENARIO"] = scenario;
        variables["RBK_TEST_SENDS"] = home.path() / "calls";
        for (const auto& [name, value] : variables_) variables[name] = value;
        return {.variables = variables};
    }

    // Its path, or name; empty where the session has none.
    std::string name_scenario() const
    {
        if (scenario_.empty()) return scenario_name_;
        write_file(home_.path() / "scenario.toml", scenario_);
        return home_.path() / "scenario.toml";
    }

    Lines in_shell(const std::string& line) const
    {
        const std::string folder = home_.path() / "folder";
        std::string path = getenv("PATH");
        for (const std::filesystem::path program : {bin_path("rbk-prop"), rbk_path()})  // rbk is the one that is tested
            path.insert(0, program.parent_path().string() + ":");
        const RunResult result =
            test::run({"/bin/sh", "-c", "mkdir -p " + folder + "; cd " + folder + "\n" + line},
                      {{{"PATH", path}, {"RBK_HOME", "state"}, {"RBK_SCENARIO", name_scenario()}, {"LC_ALL", "C"}}});
        Lines lines = bare(result.out);
        append_end(lines, result);
        return lines;
    }

    static void append_end(Lines& lines, const RunResult& result)
    {
        for (const std::string& line : lines_of(result.err)) lines.push_back("E " + line);
        if (result.status != 0) lines.push_back("exit " + std::to_string(result.status));
    }

    // Where the run that a scenario repeats differs from the run that was traced.
    Lines again(const Lines& words) const
    {
        write_file(home_.path() / "trace", "");
        const TempDir before;
        std::filesystem::copy(home_.path() / "properties", before.path(), std::filesystem::copy_options::recursive);
        const Lines traced = ending_of(run_rbk(words, options()), home_);
        const RunResult scenario = test::run({bin_path("rbk-trace"), "--scenario", home_.path() / "trace"});
        Lines lines;
        append_end(lines, scenario);
        if (!lines.empty()) return lines;
        const Lines repeated = elsewhere(words, scenario.out, before);
        const auto [was, is] = std::ranges::mismatch(traced, repeated);
        if (was != traced.end()) lines.push_back("- traced: " + *was);
        if (is != repeated.end()) lines.push_back("- again: " + *is);
        if (lines.empty() && traced == elsewhere(words, "", before))
            lines.push_back("- a built-in phone says the same");
        return lines;
    }

    // The command in a home of its own.
    Lines elsewhere(const Lines& words, const std::string& scenario, const TempDir& properties) const
    {
        const TempDir home;
        write_file(home.path() / "scenario.toml", scenario);
        std::filesystem::copy(properties.path(), home.path() / "properties", std::filesystem::copy_options::recursive);
        return ending_of(run_rbk(words, options(home, home.path() / "scenario.toml")), home);
    }

    // Screen, standard error, status, and the messages on the link: those of each side and service in their order.
    Lines ending_of(const RunResult& result, const TempDir& home) const
    {
        Lines lines = lines_of(result.out);
        append_end(lines, result);
        std::vector<Traced> messages = trace_in(home.path());
        std::ranges::stable_sort(messages, {},
                                 [](const Traced& each) { return std::pair(each.to_modem, each.service); });
        for (const Traced& each : messages) lines.push_back(each.head + " " + with_runs(each.bytes));
        for (std::string& line : lines) line = masked(replaced(line, home.path(), "HOME"));
        return lines;
    }

    std::string masked(std::string line) const
    {
        static const std::pair<std::regex, const char*> kMasks[] = {
            {std::regex("(p_id: |/proc/|pid=)[0-9]+"), "$1N"},
            {std::regex("((?:client|ptr|buf|data|holder)(?: =)? 0x|handle = )(?!0+\\b)-?[0-9a-f]+"), "$1N"},
            {std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ)"), "TIME"},
        };
        for (const auto& [what, word] : kMasks) line = std::regex_replace(line, what, word);
        return replaced(replaced(line, home_.path(), "HOME"), rbk_path(), "RBK");
    }

    // `lines`, and behind them those of a text that was printed bare.
    static Lines bare(const std::string& text, Lines lines = {})
    {
        for (const std::string& line : lines_of(text)) lines.push_back("- " + with_word_runs(line));
        return lines;
    }

    // The screen's messages, each found again in the log, which has the priority; what isn't in the log was printed bare.
    Lines screen(const std::string& out, bool traced, bool inside, const Lines& traced_files) const
    {
        static const std::regex kStart(" (velmor_get_current_pid_info|velmor_modem_check_odm_white_list): ");
        // The head alone: std::regex goes a step deeper with each character of a long message.
        static const std::regex kMessage(R"((\d) (?:\[[^\]]*\])?\[([^\s:]+):\d+\] (\w+): ?)");
        static const std::regex kLineFeed(R"(\\n)");
        Lines lines;
        std::size_t at = 0;
        for (const std::string& entry : lines_of(read_file(home_.path() / "log"))) {
            std::smatch parts;
            if (!std::regex_search(entry, parts, kMessage, std::regex_constants::match_continuous))
                continue;  // of the masks themselves
            const std::string level = parts[1] == "3" ? "1" : "2";
            const std::string body = std::regex_replace(parts.suffix().str(), kLineFeed, "\n");
            const std::string place = parts[2].str() + " " + parts[3].str() + ": " + body;
            const std::string whole =
                "RIL" + entry.substr(entry.find('['), parts.length(0) - entry.find('[')) + body + "\n";
            std::size_t found = next(out, at, whole);
            const bool is_bare = found == std::string::npos;
            if (is_bare) found = next(out, at, body + "\n");
            if (found == std::string::npos || (is_bare && body.empty() && found != at)) {
                const bool is_start = std::regex_search(place, kStart);
                const bool is_wanted = traced_files.empty() || std::ranges::count(traced_files, parts[2].str()) > 0;
                if (traced && !(inside && is_start) && is_wanted) append(lines, "4", place);
                continue;
            }
            lines = bare(out.substr(at, found - at), lines);
            append(lines, is_bare ? "8" : level, is_bare ? body : place);
            at = found + (is_bare ? body.size() + 1 : whole.size());
        }
        lines = bare(out.substr(at), lines);
        return shortened(with_help(lines));
    }

    // Places that stand in the message above already, and lines that are repeated.
    static Lines shortened(const Lines& lines)
    {
        static const std::regex kPlace(R"([124] (\S+ \w+:)(?= |$))");
        Lines shorter;
        std::string place;
        for (const auto& [line, count] : runs_of(lines)) {
            std::smatch parts;
            const bool is_message = std::regex_search(line, parts, kPlace, std::regex_constants::match_continuous);
            const bool is_same = is_message && parts[1] == place;
            shorter.push_back(is_same ? line.substr(0, 2) + "^" + parts.suffix().str() : line);
            if (is_message) place = parts[1];
            if (count > 1) shorter.push_back("@again " + std::to_string(count - 1));
        }
        return shorter;
    }

    // Where `text` stands next at the begin of a line.
    static std::size_t next(const std::string& out, std::size_t at, const std::string& text)
    {
        for (at = out.find(text, at); at != std::string::npos && at != 0 && out[at - 1] != '\n';)
            at = out.find(text, at + 1);
        return at;
    }

    static void append(Lines& lines, const std::string& level, const std::string& text)
    {
        std::string head = level + " ";
        for (const std::string& line : lines_of(text + "\n")) {
            lines.push_back(head + line);
            head = "  ";  // the same message goes on
        }
    }

    static bool is_bare_line(const std::string& line, const std::string& text)
    {
        return (line[0] == '8' || line[0] == ' ') && line.compare(2, std::string::npos, text) == 0;
    }

    // A help that stands there whole becomes one line.
    static Lines with_help(Lines lines)
    {
        for (int group = 0; group <= 12; ++group) {
            const Lines help = lines_of(help_of(group));
            const auto found = std::search(lines.begin(), lines.end(), help.begin(), help.end(), is_bare_line);
            if (found == lines.end()) continue;
            *found = "@help " + std::to_string(group);
            lines.erase(found + 1, found + static_cast<long>(help.size()));
            break;
        }
        return lines;
    }

    void tell_requests_and_calls(Lines& lines) const
    {
        Lines waits;
        std::multimap<std::string, std::string> timeouts;  // message id, milliseconds; in the order of the sends
        for (const std::string& call : lines_of(read_file(home_.path() / "calls"))) {
            const Lines words = words_of(call);
            if (words[0] == "send") timeouts.emplace(words[1], words[2]);
            if (words[0] != "send") waits.push_back(call);
        }
        Lines requests;
        for (const Traced& sent : trace_in(home_.path())) {
            if (!sent.to_modem) continue;
            const auto timeout = timeouts.find(sent.message);
            const std::string within = timeout == timeouts.end() ? "?" : timeout->second;
            if (timeout != timeouts.end()) timeouts.erase(timeout);
            const std::string of_qmi = sent.service + " " + sent.message + " " + within + " ms" + tlvs_of(sent.bytes);
            requests.push_back("> " + (sent.service == "diag" ? "diag " + with_runs(sent.bytes) : of_qmi));
        }
        if (!variables_.contains("RBK_TRACE")) {
            for (const auto& [message, ms] : timeouts) waits.push_back("send " + message + " " + ms);  // never went out
        }
        append_counted(lines, "", requests, 8);
        append_counted(lines, "! ", waits, 2);
    }

    // Each line behind `head`; those that come `many` times or more in a row once, with their number.
    static void append_counted(Lines& lines, const std::string& head, const Lines& more, std::size_t many)
    {
        for (const auto& [line, count] : runs_of(more)) {
            if (count >= many) lines.push_back(head + line + " x" + std::to_string(count));
            if (count < many) lines.insert(lines.end(), count, head + line);
        }
    }

    Lines show(const std::string& path) const
    {
        const std::filesystem::path file = home_.path() / path;
        if (!std::filesystem::exists(file)) return {"- absent"};
        if (!std::filesystem::is_directory(file)) {
            const std::string content = read_file(file);
            return {"- " + with_runs(hex({content.begin(), content.end()}))};
        }
        Lines names;
        for (const auto& each : std::filesystem::directory_iterator(file))
            names.push_back("- " + each.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    TempDir home_;
    std::string scenario_;
    std::string scenario_name_;
    std::map<std::string, std::string> variables_;
};

// The file as it would stand if all that its commands bring were meant.
Lines played(const Lines& file)
{
    Lines lines;
    std::optional<Session> session;
    bool below_command = false;
    for (const std::string& line : file) {
        const bool is_command = line.starts_with("$ ");
        const bool is_ours = line.empty() || is_command || line.starts_with("#") || line.starts_with("== ") ||
                             line.starts_with("| ") || line == "|" || line.starts_with("env ") ||
                             line.starts_with("scenario ");
        if (!is_ours && below_command) continue;  // what is to come of it
        lines.push_back(line);
        below_command = false;
        if (line.starts_with("== ")) session.emplace();
        if (!session) continue;
        if (line.starts_with("|")) session->scenario(line.substr(std::min<std::size_t>(line.size(), 2)));
        if (line.starts_with("scenario ")) session->scenario_that_comes(line.substr(9));
        if (line.starts_with("env ")) session->variable(line.substr(4));
        if (!is_command) continue;
        below_command = true;
        for (const std::string& each : session->run(line.substr(2))) lines.push_back(each);
    }
    return lines;
}

class Golden : public testing::Test {
 public:
    explicit Golden(std::filesystem::path file) : file_(std::move(file)) {}

    void TestBody() override
    {
        const Lines told = lines_of(read_file(file_));
        const Lines came = played(told);
        if (std::getenv("UPDATE_GOLDEN") != nullptr) write_file(file_, joined(came));
        std::string session, command;
        for (std::size_t i = 0; i < std::max(told.size(), came.size()); ++i) {
            const std::string expected = i < told.size() ? told[i] : "(nothing)";
            const std::string seen = i < came.size() ? came[i] : "(nothing)";
            if (expected.starts_with("== ")) session = expected;
            if (expected.starts_with("$ ")) command = expected;
            ASSERT_EQ(seen, expected) << file_.filename() << " line " << i + 1 << "\n" << session << "\n" << command;
        }
    }

 private:
    std::filesystem::path file_;
};

// What comes with the programs says of itself what it is and how it is put in force, without a touch on the reader's own
// phone. Each command of its head is played, and what is promised of it behind the # comes of it.
TEST(Scenarios, AreAllPlayed)
{
    using Played = std::pair<std::string, std::string>;   // a command, and what came of it
    std::map<std::string, std::vector<Played>> sessions;  // by scenario
    for (const auto& each : std::filesystem::directory_iterator(data_path("golden"))) {
        std::string scenario;
        for (const std::string& line : lines_of(read_file(each.path()))) {
            if (line.starts_with("== ")) scenario = "";
            if (line.starts_with("scenario ")) scenario = line.substr(9);
            std::vector<Played>& played = sessions[scenario];
            if (line.starts_with("$ "))
                played.emplace_back(line, "");
            else if (!played.empty() && !line.starts_with("#"))
                played.back().second += line + "\n";
        }
    }
    static const std::regex kCommand(R"(#     (?:\w+=\S+ )*(rbk \S.*?)(?: +# (?:after [\d.]+ s: )?(.*))?)");
    static const std::regex kBetween(", ");
    for (const auto& file : std::filesystem::directory_iterator(data_path("../scenarios"))) {
        const std::string text = read_file(file.path()), name = file.path().stem();
        EXPECT_TRUE(text.starts_with("# ")) << name << ": no summary";
        const std::regex in_force("export RBK_HOME=/tmp/quirk RBK_(SCENARIO=|MODEM=.*\n.*--scenario )" + name + "\\s");
        EXPECT_TRUE(std::regex_search(text, in_force)) << name << ": not put in force";
        std::size_t commands = 0;
        for (const std::string& line : lines_of(text)) {
            std::smatch parts;
            if (!std::regex_match(line, parts, kCommand)) continue;
            ++commands;
            const std::string promises = parts[2];
            std::sregex_token_iterator each(promises.begin(), promises.end(), kBetween, -1);
            for (; each != std::sregex_token_iterator(); ++each) {
                const auto keeps = [&](const Played& played) {
                    return played.first.find(parts[1]) != std::string::npos &&
                           played.second.find(*each) != std::string::npos;
                };
                EXPECT_TRUE(std::ranges::any_of(sessions[name], keeps)) << name << ": " << parts[1] << ": " << *each;
            }
        }
        EXPECT_GT(commands, 0) << name << ": no command";
    }
}

const bool registered = [] {
    for (const auto& each : std::filesystem::directory_iterator(data_path("golden"))) {
        const std::filesystem::path file = each.path();
        if (file.extension() != ".t") continue;
        testing::RegisterTest("Golden", file.stem().c_str(), nullptr, nullptr, file.c_str(), 1,
                              [file]() -> testing::Test* { return new Golden(file); });
    }
    return true;
}();

}  // namespace
}  // namespace rbk::test
