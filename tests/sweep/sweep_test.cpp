// Every command, and everything that can go wrong with it: each of its requests, indications and diag calls fails in each
// way, from the nth on all of them do, and it is killed at any moment. The tables stand beside this file; what must hold
// of every run is below. RBK_SWEEP chooses the part that is done: "all", "3/10", else a tenth that changes by the day.
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <iostream>
#include <locale>
#include <random>
#include <regex>
#include <set>
#include <sstream>
#include <thread>

#include "link/diag_frame.h"
#include "support/wait_until.h"
#include "sweep/lab.h"

namespace rbk::test {
namespace {

std::string variable(const char* name, const std::string& otherwise)
{
    const char* value = std::getenv(name);
    return value == nullptr ? otherwise : value;
}
// Thousands of phones come and go: in memory, where there is such a place.
const bool g_in_memory = ::access("/dev/shm", W_OK) == 0 && ::setenv("TMPDIR", "/dev/shm", 0) == 0;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr double kSlow = 4;
#else
constexpr double kSlow = 1;
#endif
constexpr double kHurried_ms = 250 * kSlow;  // a time-out that is run into
constexpr double kDown_ms = 100 * kSlow;     // one that bounds for how long a service is looked for
constexpr double kSlack_s = 10 * kSlow;      // of a whole run beside its waits
constexpr int kMorePatience = 8;             // of the second try of a hurried run: the machine may have been busy
#ifdef RBK_EMULATED  // a child was seen to hang between fork and exec, as where a fork copies a lock that is held
constexpr std::size_t kThreads = 1;
#else
constexpr std::size_t kThreads = 6;
#endif
constexpr std::size_t kKills = 14;  // of each command: 1,000 in all

// ---- Tables: a row a line, its columns between | ----

Lines split(const std::string& line, char mark)
{
    Lines parts;
    std::istringstream stream(line);
    for (std::string part; std::getline(stream, part, mark);) {
        part.erase(part.find_last_not_of(' ') + 1);
        parts.push_back(part.erase(0, part.find_first_not_of(' ')));
    }
    return parts;
}

std::vector<Lines> read_table(const std::string& name)
{
    std::vector<Lines> rows;
    for (std::string line : lines_of(read_file(data_path("sweep/" + name)))) {
        line = std::regex_replace(line, std::regex("FAILS"), "LOST,*error,call");
        line = std::regex_replace(line, std::regex("LOST"), "*silent,*late,*garbled*,*down,*restart");
        if (!line.empty() && line[0] != '#') rows.push_back(split(line, '|'));
    }
    return rows;
}

bool matches(const std::string& patterns, const std::string& text)
{
    const Lines list = split(patterns, ',');
    return std::ranges::any_of(list, [&](const auto& each) { return fnmatch(each.c_str(), text.c_str(), 0) == 0; });
}

struct Command {
    std::string name;  // the words, and what sets it apart from another command with the same
    Lines words;
    std::set<std::string> notes;
    State properties{{"persist.vendor.radio.adb_log_shell", "11"}};
    bool is(const char* note) const { return notes.contains(note); }
    friend std::ostream& operator<<(std::ostream& out, const Command& command) { return out << command.name; }
};

std::vector<Command> read_commands()
{
    std::vector<Command> commands;
    for (const Lines& row : read_table("commands")) {
        Command command{row[0], split(row[0], ' '), {}};
        for (const std::string& note : row.size() > 1 ? split(row[1], ' ') : Lines{}) {
            const std::size_t equals = note.find('=');
            if (equals == std::string::npos)
                command.notes.insert(note);
            else
                command.properties[note.substr(0, equals)] = note.substr(equals + 1);
            if (note.starts_with("ro.")) command.name += " " + note.substr(equals + 1);
        }
        commands.push_back(std::move(command));
    }
    return commands;
}

// ---- Faults: what a good run shows, each in each way ----

struct Fault {
    std::string where;  // "extended 2 #1": what it hits first; "nothing"
    std::string how;    // "silent", "from silent"
    std::string pace;   // of the table
    std::string rule;   // without a delay
    std::string name() const { return where + " " + how; }
};

std::string service_of(const std::string& what)
{
    return what.substr(0, what.find(' '));
}

bool is_indication(const std::string& what)
{
    return what.find("indication") != std::string::npos;
}

// "extended 2", "pdc 0x0022", "pdc indication 0x0022", "diag", "diag indication".
std::string what_of(const Traced& message)
{
    static const std::map<std::string, std::string> services{{"0xFFE4", "extended"}, {"0x00E4", "vs"},
                                                             {"0x0003", "nas"},      {"0x000B", "uim"},
                                                             {"0x0011", "sar"},      {"0x0024", "pdc"}};
    if (message.service == "diag") return message.to_modem ? "diag" : "diag indication";
    const std::string service = services.at(message.service);
    if (message.kind == "ind") return service + " indication " + message.message;
    const bool is_envelope = service == "extended" && message.message == "0x0002";
    return service + " " + (is_envelope ? message.bytes.substr(7, 1) : message.message);  // an id below 16, in TLV 0x01
}

// The same as the head of a rule.
std::string rule_for(const std::string& what)
{
    const bool is_call = what.starts_with("call ");
    const std::string last = what.substr(what.rfind(' ') + 1);
    std::string rule = "[[fault]]\nservice = '" + (is_call ? "diag" : service_of(what)) + "'\n";
    if (is_call) rule += "call = '" + last + "'\n";
    if (is_indication(what)) rule += "on = 'indication'\n";
    if (last.starts_with("0x")) rule += "message = " + last + "\n";
    if (last.size() == 1) rule += "message = 2\nqmi_id = " + last + "\n";
    return rule;
}

std::string answer_to(const Traced& request, const std::vector<Traced>& trace)
{
    const auto answer = std::ranges::find_if(trace, [&](const Traced& each) {
        return !each.to_modem && each.transaction == request.transaction && each.service == request.service;
    });
    return answer == trace.end() ? "" : answer->bytes;
}

// `calls`: the names of the diag calls, as often as each was made.
std::vector<Fault> faults_of(const std::vector<Traced>& trace, const Lines& calls)
{
    static const std::vector<Lines> ways = read_table("ways");
    std::vector<Fault> faults;
    const auto add = [&](const std::string& what, const Fault& fault, const std::string& answer) {
        for (const Lines& way : ways) {
            if (!matches(way[1], what) || (!fault.how.empty() && matches("soon,garbled cut", way[0]))) continue;
            std::string rule = std::regex_replace(fault.rule + way[3], std::regex("; "), "\n") + "\n";
            rule = std::regex_replace(rule, std::regex("HALF"), answer.substr(0, answer.size() / 4 * 2));
            faults.push_back({fault.where, fault.how + way[0], way[2], rule});
        }
    };
    std::map<std::string, int> seen;
    const auto add_nth = [&](const std::string& what, const std::string& answer) {
        const std::string nth = std::to_string(++seen[what]);
        add(what, {what + " #" + nth, "", "", rule_for(what) + "nth = " + nth + "; "}, answer);
        return what + " #" + nth;
    };
    std::map<std::string, Lines> by_service;  // what a rule for all its requests hits, or for all its indications
    for (const Traced& message : trace) {
        const std::string what = what_of(message);
        if (!message.to_modem && !is_indication(what)) continue;
        if (what.starts_with("nas indication")) continue;  // the command ends before or after it, as it happens
        const std::string where = add_nth(what, answer_to(message, trace));
        by_service[service_of(what) + (is_indication(what) ? " indication" : "")].push_back(where);
    }
    for (const std::string& call : calls) add_nth("call " + call, "");
    for (auto& [service, list] : by_service) {
        const std::string first = list.front();
        if (!is_indication(service)) list.push_back("nothing");  // the last indications may come when nobody is there
        for (std::size_t from = 1; from <= list.size(); ++from) {
            const std::string& where = list[from - 1] == "nothing" ? first : list[from - 1];
            const std::string rule = rule_for(service) + "from = " + std::to_string(from) + "; ";
            add(where.substr(0, where.rfind(' ')), {list[from - 1], "from ", "", rule}, "");
        }
    }
    return faults;
}

// ---- The good run, and what is learnt from it ----

struct Good {
    std::vector<State> states;  // before it, after it, and all between
    Run run;
    Lines ledger;
    std::vector<Fault> faults;
    const State& before() const { return states[0]; }
};

std::string phone()
{
    return read_file(data_path("sweep/phone.toml"));
}

Pace patient(const Command& command)
{
    return {1, command.is("bounded") ? 1 : 100};
}

// Each call of the diag library has a rule that is never reached: at its end the modem tells how often it might have been.
Lines count_calls(const std::string& errors, const Lines& calls)
{
    static const std::regex line("never matched(?: often enough: (\\d+) of)?");
    Lines made;
    auto match = std::sregex_iterator(errors.begin(), errors.end(), line);
    for (const std::string& call : calls) {
        if (match == std::sregex_iterator()) break;
        made.insert(made.end(), (*match)[1].matched ? std::stoul((*match)[1]) : 0, call);
        ++match;
    }
    return made;
}

Good learn(const Command& command)
{
    const Lines calls(link::kDiagCallNames.begin(), link::kDiagCallNames.end());
    std::string counting;
    for (const std::string& call : calls)
        counting += rule_for("call " + call) + "nth = 999999\naction = 'error'\ncode = 1\n";
    Good good;
    Phone learnt(phone() + counting, command.properties);
    if (command.is("esim")) learnt.run({"5", "10", "1", "1"}, {});
    good.states.push_back(learnt.state());
    good.run = learnt.run(command.words, patient(command));
    good.states.push_back(good.run.state);
    EXPECT_EQ(learnt.end(), 0);
    good.ledger = learnt.ledger();
    if (command.is("esim")) good.ledger.erase(good.ledger.begin());
    good.faults = faults_of(good.run.trace, count_calls(learnt.errors(), calls));
    int requests = 0;
    for (const Fault& fault : good.faults) {  // what is stored when it has come as far as each of its requests
        if (!command.is("steps") || fault.how != "silent" || is_indication(fault.where)) continue;
        ++requests;
        Phone stopped(phone() + fault.rule, command.properties);
        stopped.restore(good.before());
        const auto is_there = [&] {
            const auto sent = stopped.trace();
            return std::ranges::count_if(sent, [](const Traced& each) { return each.to_modem; }) >= requests;
        };
        good.states.push_back(
            stopped.run(command.words, patient(command), SIGKILL, [&] { wait_until(is_there); }).state);
    }
    return good;
}

// ---- What must hold ----

std::string failures_in(const Run& run)
{
    Lines lines = run.log;
    std::erase_if(lines, [](const std::string& line) { return !line.starts_with("3 "); });
    return joined(lines);
}

// Of every run, whatever happened to it. No machine is too slow for this.
void judge_end(const Run& run, Lines& wrong)
{
    if (run.status != 0)
        wrong.push_back(run.status == 128 + SIGKILL ? "hangs" : "ends with " + std::to_string(run.status));
    if (!run.err.empty()) wrong.push_back("says on standard error " + run.err);
}

void judge_like_good(const Command& command, const Run& run, const Good& good, const std::string& who, Lines& wrong)
{
    if (command.is("detached")) return;
    if (run.out != good.run.out) wrong.push_back(who + "prints " + run.out + "in the place of " + good.run.out);
    if (failures_in(run) != failures_in(good.run)) wrong.push_back(who + "reports " + failures_in(run));
}

// Each value is whole: one that it has in a state of the good run. `kept` names those that may differ.
void judge_values(const State& state, const Good& good, const Lines& kept, Lines& wrong)
{
    for (const auto& [name, content] : state) {
        const bool is_open = std::ranges::find(kept, "stored " + name) != kept.end();
        if (is_open || name.find("/.new.") != std::string::npos) continue;
        const auto has_it = [&](const State& each) { return each.contains(name) && each.at(name) == content; };
        if (std::ranges::none_of(good.states, has_it)) wrong.push_back("stores " + name + ": " + content);
    }
    for (const auto& [name, content] : good.before()) {
        const bool is_always = std::ranges::all_of(good.states, [&](const State& each) { return each.contains(name); });
        if (is_always && !state.contains(name)) wrong.push_back("has lost " + name);
    }
}

// What the words table has for this fault: what is kept, "ledger ..." and "stored ...", or else what is said.
Lines words_for(const Command& command, const Fault& fault, bool kept)
{
    static const std::vector<Lines> table = read_table("words");
    Lines words;
    for (const Lines& row : table) {
        const bool is_for = matches(row[0], command.name) && matches(row[1], fault.where) && matches(row[2], fault.how);
        if (is_for && matches("ledger *,stored *", row[3]) == kept) words.push_back(row[3]);
    }
    return words;
}

// "this or that", of what is said.
bool is_seen(const std::string& word, const Run& run, const Good& good)
{
    const std::size_t other = word.find(" or ");
    if (other != std::string::npos)
        return is_seen(word.substr(0, other), run, good) || is_seen(word.substr(other + 4), run, good);
    const std::string text = word.substr(word.find(' ') + 1);
    if (word == "good") return run.out == good.run.out;
    if (word.starts_with("out ")) return run.out.find(text) != std::string::npos;
    return std::ranges::any_of(
        run.log, [&](const std::string& line) { return line[0] == word[0] && line.find(text) != std::string::npos; });
}

// What the clients of a faulty run and a good one leave behind.
void judge_ledger(const Lines& ledger, const Run& run, const Good& good, const Lines& kept, Lines& wrong)
{
    const auto feature = run.state.find("modem/vs/feature_2");
    const bool is_on = feature != run.state.end() && feature->second[0] != 0;
    std::string expected =
        std::regex_replace(joined(good.ledger), std::regex("stats=."), is_on ? "stats=1" : "stats=0");
    for (const std::string& word : kept) {
        if (!word.starts_with("ledger ")) continue;
        expected = std::regex_replace(expected, std::regex(word.substr(7, word.find('=') - 6) + "."), word.substr(7));
    }
    expected += joined(good.ledger);
    if (!std::regex_match(joined(ledger), std::regex(expected)))
        wrong.push_back("leaves\n" + joined(ledger) + "in the place of\n" + expected);
}

// ---- One fault ----

// How long somebody waits for an answer or an indication, in ms.
double bound_of(const std::string& where)
{
    static const std::map<std::string, double> bounds{{"extended", 3000}, {"uim", 3000},     {"pdc", 10000},
                                                      {"nas", 10000},     {"sar", 30000},    {"vs", 30000},
                                                      {"diag", 10000},    {"nothing", 10000}};
    return where.starts_with("pdc indication") ? 5000 : bounds.at(service_of(where));
}

struct Verdict {
    Lines wrong;
    bool is_certain = false;
};

Verdict try_fault(const Command& command, const Good& good, const Fault& fault, int patience)
{
    Pace pace = patient(command);
    std::string scenario = phone();
    std::string rule = fault.rule;
    if (fault.pace != "patient") {
        const double wanted = patience * (fault.rule.find("'down'") != std::string::npos ? kDown_ms : kHurried_ms);
        const double factor = wanted / bound_of(fault.where);
        pace = {factor, std::max(static_cast<int>(command.is("bounded") ? 1 / factor : 100 / patience), 1)};
        if (fault.pace == "down") scenario.replace(scenario.find("restart_ms = 1 "), 15, "restart_ms = 60000 ");
        if (std::isdigit(fault.pace[0]) != 0)
            rule += "ms = " + std::to_string(static_cast<int>(std::stod(fault.pace) * wanted)) + "\n";
    }
    const Lines said = words_for(command, fault, false);
    const Lines kept = words_for(command, fault, true);

    Verdict verdict;
    Lines& wrong = verdict.wrong;
    Phone phone(scenario + rule, command.properties);
    phone.restore(good.before());
    const Run run = phone.run(command.words, pace);
    judge_end(run, wrong);
    verdict.is_certain = !wrong.empty();
    double due_s = kSlack_s + run.waits_s / pace.waits;
    for (const Traced& message : run.trace)
        due_s += message.to_modem ? bound_of(what_of(message)) * pace.timeouts / 1000 : 0;
    for (const std::string& line : run.log)  // who polls looks for the service each time
        due_s += line.find("qmi_client_init UIM instance failed") != std::string::npos ? 4 * pace.timeouts : 0;
    if (run.took > std::chrono::duration<double>(due_s))
        wrong.push_back("takes longer than " + std::to_string(due_s) + " s");
    if (said.empty()) judge_like_good(command, run, good, "", wrong);
    for (const std::string& word : said) {
        if (!is_seen(word, run, good)) wrong.push_back("doesn't say '" + word + "' but\n" + run.out + joined(run.log));
    }
    judge_values(run.state, good, kept, wrong);
    if (!command.is("steps") && !command.is("detached") && run.state != good.before() && run.state != good.run.state)
        wrong.push_back("stores a part");

    if (!command.is("detached")) wait_until([&] { return phone.ledger().size() == good.ledger.size(); });
    phone.restore(good.before());
    Lines ledger;
    std::string errors;
    const auto end = [&] {
        const int status = phone.end();
        errors += phone.errors();
        if (status != 0) wrong.push_back("rbk-modem ends with " + std::to_string(status) + ": " + phone.errors());
        verdict.is_certain |= status != 0;
        std::ranges::copy(phone.ledger(), std::back_inserter(ledger));
    };
    const bool comes_back =
        fault.rule.find("nth") != std::string::npos && fault.rule.find("'down'") == std::string::npos;
    if (!comes_back || command.is("restarts")) {
        end();
        phone.start(rbk::test::phone());
    }
    const Run again = phone.run(command.words, patient(command));
    end();
    const std::string who = "the good run after it ";
    judge_like_good(command, again, good, who, wrong);
    if (command.is("detached")) return verdict;
    if (again.state != good.run.state) wrong.push_back(who + "stores something else");
    judge_ledger(ledger, run, good, kept, wrong);
    const bool fired = errors.find("never matched") == std::string::npos;
    if (fired != (fault.where != "nothing"))
        wrong.push_back(fired ? "more is asked than in the good run" : "the rule never matches");
    return verdict;
}

// ---- Kills ----

// All on one phone: it lives through them.
Lines try_kills(const Command& command, const Good& good, std::size_t count, unsigned long seed)
{
    Lines wrong;
    std::mt19937 random(seed);
    Phone phone(rbk::test::phone(), command.properties);
    for (std::size_t i = 0; i < count; ++i) {
        phone.restore(good.before());
        const auto moment = good.run.took * std::uniform_real_distribution(0.0, 1.2)(random);
        phone.run(command.words, patient(command), random() % 2 == 0 ? SIGKILL : SIGTERM,
                  [&] { std::this_thread::sleep_for(moment); });
        // Whoever is served now finds the modem behind all that the killed one had sent, and behind a restart.
        wait_until([&] { return phone.run({"4", "1", "0", "10"}, {}).trace.size() == 2; });
        judge_values(phone.state(), good, {}, wrong);
        phone.restore(good.before());
        const Run again = phone.run(command.words, patient(command));
        judge_end(again, wrong);
        judge_like_good(command, again, good, "the good run after it ", wrong);
        if (!wrong.empty()) return wrong;
    }
    if (const int status = phone.end(); status != 0) wrong.push_back("rbk-modem ends with " + std::to_string(status));
    for (const std::string& line : phone.ledger()) {
        if (!line.starts_with("channels=")) wrong.push_back("the ledger says " + line);
    }
    if (phone.ledger().size() < count * (1 + good.ledger.size())) wrong.push_back("clients are missing in the ledger");
    return wrong;
}

// ---- The tests ----

std::string case_name(const Command& command)
{
    return std::regex_replace(command.name, std::regex("[^A-Za-z0-9]"), "_");
}

class Sweep : public testing::TestWithParam<Command> {};

TEST_P(Sweep, HoldsWhateverFails)
{
    const Command& command = GetParam();
    Good good = learn(command);
    Lines wrong;
    judge_end(good.run, wrong);
    ASSERT_EQ(wrong, Lines{});
    const std::string left = std::regex_replace(joined(good.ledger), std::regex("stats=1"), "stats=0");
    ASSERT_TRUE(command.is("detached") || !std::regex_search(left, std::regex("=[1-9]"))) << left;

    const auto today = static_cast<unsigned>(std::time(nullptr) / 86400);
    const std::string only = variable("RBK_SWEEP_ONLY", "");  // a fault's name
    std::string part = variable("RBK_SWEEP", std::to_string(today % 10) + "/10");
    if (part == "all" || !only.empty()) part = "0/1";
    const std::size_t parts = std::stoul(part.substr(part.find('/') + 1));
    std::vector<Fault> chosen;
    std::shuffle(good.faults.begin(), good.faults.end(),
                 std::mt19937(1));  // alike each day: a part has some of everything
    for (std::size_t i = std::stoul(part); i < good.faults.size(); i += parts) {
        if (only.empty() || good.faults[i].name() == only) chosen.push_back(good.faults[i]);
    }
    const std::string this_case = bin_path("sweep_test") + " --gtest_filter='*/" + case_name(command) + "'";
    std::atomic<std::size_t> next = 0;
    std::atomic<int> repeated = 0;
    const auto work = [&] {
        for (std::size_t i; (i = next++) < chosen.size();) {
            Verdict verdict = try_fault(command, good, chosen[i], 1);
            if (!verdict.wrong.empty() && !verdict.is_certain && chosen[i].pace != "patient") {
                ++repeated;
                verdict = try_fault(command, good, chosen[i], kMorePatience);
            }
            if (verdict.wrong.empty()) continue;
            ADD_FAILURE() << "rbk " << command.name << " with\n"
                          << chosen[i].rule << joined(verdict.wrong) << "Again alone: RBK_SWEEP_ONLY='"
                          << chosen[i].name() << "' " << this_case;
        }
    };
    // The first regex with a letter fills a cache of the library, without a lock.
    for (int i = 1; i < 256; ++i) std::use_facet<std::ctype<char>>(std::locale()).narrow(static_cast<char>(i), '\0');
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < std::min(kThreads, chosen.size()); ++i) threads.emplace_back(work);
    for (std::thread& thread : threads) thread.join();

    const std::size_t kills = only.empty() ? (kKills + parts - 1) / parts : 0;
    const unsigned long seed = std::stoul(variable("RBK_SWEEP_SEED", std::to_string(today)));
    EXPECT_EQ(joined(try_kills(command, good, kills, seed)), "")
        << "rbk " << command.name << "\nAgain: RBK_SWEEP=" << part << " RBK_SWEEP_SEED=" << seed << " " << this_case;
    std::cout << "sweep: " << chosen.size() << " of " << good.faults.size() << " faults, " << repeated
              << " tried twice, " << kills << " kills, part " << part << ", seed " << seed << ": rbk " << command.name
              << "\n";
}

INSTANTIATE_TEST_SUITE_P(Rbk, Sweep, testing::ValuesIn(read_commands()),
                         [](const auto& each) { return case_name(each.param); });

}  // namespace
}  // namespace rbk::test
