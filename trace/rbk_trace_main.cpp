// A trace for people: as lines, as a page, or as a scenario that repeats it.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "simulator/base/printable.h"
#include "trace/again.h"
#include "trace/fields.h"
#include "trace/lines.h"
#include "trace/names.h"
#include "trace/page.h"
#include "trace/talk.h"
#include "trace/trace_file.h"

namespace {

using namespace rbk::trace;

struct Arguments {
    std::string file;
    std::vector<std::string> services;
    std::vector<std::string> messages;
    bool html = false;
    bool scenario = false;
    std::size_t run = 0;  // from 1; 0: the only one
    bool errors = false;
    bool show_private = false;
    bool follow = false;
};

void say(const std::string& line)
{
    std::fprintf(stderr, "rbk-trace: %s\n", rbk::sim::printable(line).c_str());
}

// ---- Which messages are asked for ----

// `number` is empty where the thing has none.
bool is_named_by(const std::vector<std::string>& asked, const std::vector<std::string>& names,
                 std::optional<std::uint32_t> number)
{
    return asked.empty() || std::ranges::any_of(asked, [&](const std::string& each) {
               return std::ranges::any_of(names, [&](const std::string& name) { return is_named(each, name, number); });
           });
}

bool is_asked_for(const Arguments& arguments, const Message& message, const Decoded& decoded)
{
    const TraceLine& line = message.line;
    const auto number = [&](std::uint32_t of_qmi) { return line.is_diag ? std::nullopt : std::optional(of_qmi); };
    const std::string both = decoded.message + ": " + decoded.content;  // as lines show it
    return is_named_by(arguments.services, {decoded.service}, number(line.service)) &&
           is_named_by(arguments.messages, {decoded.message, decoded.content, both}, number(line.head.message));
}

// ---- A talk and its words ----

class Reading {
 public:
    explicit Reading(const Arguments& arguments) : arguments_(arguments) {}

    Talk& talk() { return talk_; }
    const Message& message(std::size_t index) const { return talk_.messages()[index]; }

    Decoded decoded(std::size_t index) const
    {
        const Message& each = message(index);
        const bool has_request = each.partner && !each.line.is_request() && !each.is_guess;
        return decode(each.line, has_request ? &message(*each.partner).line : nullptr);
    }

    // All that is asked for. Of messages that belong together all are, where one is faulty.
    std::vector<PageMessage> chosen() const
    {
        std::vector<PageMessage> all;
        std::vector<bool> is_wanted;
        for (std::size_t i = 0; i < talk_.messages().size(); ++i) {
            all.push_back({i, decoded(i)});
            is_wanted.push_back(!arguments_.errors || is_faulty(message(i), all[i].words));
        }
        const std::vector<bool> is_one = is_wanted;
        for (std::size_t i = 0; i < all.size(); ++i) {
            const std::optional<std::size_t> partner = message(i).partner;
            if (!partner) continue;
            if (is_one[i]) is_wanted[*partner] = true;
            if (is_one[*partner]) is_wanted[i] = true;
        }
        std::erase_if(all, [&](const PageMessage& each) {
            return !is_wanted[each.index] || !is_asked_for(arguments_, message(each.index), each.words);
        });
        return all;
    }

    // One that has just come, or has become unanswered; where it is faulty, its other half first.
    void tell(std::size_t index)
    {
        const Decoded words = decoded(index);
        const Message& each = message(index);
        if (!is_asked_for(arguments_, each, words)) return;
        if (arguments_.errors && !is_faulty(each, words)) return;
        if (arguments_.errors && each.partner && told_.insert(*each.partner).second)
            print(*each.partner, decoded(*each.partner));
        if (arguments_.errors) told_.insert(index);
        print(index, words);
    }
    void tell_unanswered()
    {
        for (const std::size_t each : talk_.take_unanswered()) tell(each);
    }

    void print(std::size_t index, const Decoded& words) const
    {
        const std::string text =
            line_of(message(index), words, message(0).line.time_us, talk_.runs() > 1, arguments_.show_private);
        std::puts(text.c_str());
    }

 private:
    const Arguments& arguments_;
    Talk talk_;
    std::set<std::size_t> told_;  // where errors alone are told
};

std::string complaint_of(const TraceFile& file, const std::string& problem)
{
    return file.name() + ":" + std::to_string(file.number()) + ": " + problem;
}

// What is said of a file without a message.
bool refuse(const TraceFile& file, const std::vector<std::string>& complaints)
{
    say(complaints.empty() ? file.name() + ": no trace: it is empty" : complaints.front() + ": no trace");
    return false;
}

// The whole file. False where it has no message, which is said.
bool read_all(TraceFile& file, Talk& talk)
{
    constexpr std::size_t kMostComplaints = 10'000;  // of a file that hasn't shown to be a trace
    std::vector<std::string> complaints;
    while (const std::optional<std::string> text = file.next(false)) {
        auto line = parse_line(*text, file.number());
        if (auto* good = std::get_if<TraceLine>(&line))
            talk.add(std::move(*good));
        else if (complaints.size() < kMostComplaints || !talk.messages().empty())
            complaints.push_back(complaint_of(file, std::get<std::string>(line)));
    }
    talk.end();
    if (talk.messages().empty()) return refuse(file, complaints);
    for (const std::string& complaint : complaints) say(complaint + ": skipped");
    return true;
}

void say_when_none(const Arguments& arguments, const std::vector<PageMessage>& chosen)
{
    if (chosen.empty() && !(arguments.services.empty() && arguments.messages.empty()))
        say("no message is named so" + std::string(arguments.errors ? ", of those that failed" : ""));
}

int print_all(const Arguments& arguments)
{
    TraceFile file(arguments.file);
    Reading reading(arguments);
    if (!read_all(file, reading.talk())) return 1;
    const std::vector<PageMessage> chosen = reading.chosen();
    for (const PageMessage& each : chosen) reading.print(each.index, each.words);
    say_when_none(arguments, chosen);
    return 0;
}

int print_page(const Arguments& arguments)
{
    TraceFile file(arguments.file);
    Reading reading(arguments);
    if (!read_all(file, reading.talk())) return 1;
    const std::vector<PageMessage> shown = reading.chosen();
    say_when_none(arguments, shown);
    const std::string page = page_of(file.name(), reading.talk().messages(), shown, arguments.show_private);
    std::fwrite(page.data(), 1, page.size(), stdout);
    return 0;
}

int print_scenario(const Arguments& arguments)
{
    TraceFile file(arguments.file);
    Talk talk;
    if (!read_all(file, talk)) return 1;
    if ((arguments.run == 0 && talk.runs() > 1) || arguments.run > talk.runs()) {
        const std::string runs = std::to_string(talk.runs());
        say(file.name() + ": " + (talk.runs() == 1 ? "one run" : runs + " runs") +
            " of rbk, of which a scenario repeats one: --run 1" + (talk.runs() == 1 ? "" : " to --run " + runs));
        return 1;
    }
    const auto made = scenario_of(talk.messages(), std::max<std::size_t>(arguments.run, 1) - 1, file.name());
    if (const auto* none = std::get_if<NoScenario>(&made)) {
        say(file.name() + ": no scenario: " + none->why);
        return 1;
    }
    std::fputs(std::get<std::string>(made).c_str(), stdout);
    return 0;
}

// Until the process is ended, or its standard input has ended.
int follow(const Arguments& arguments)
{
    using std::chrono::microseconds, std::chrono::milliseconds;
    const bool from_input = arguments.file == "-";
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // a read may wait for long
    TraceFile file(arguments.file);
    std::optional<Reading> reading(arguments);
    auto came = std::chrono::steady_clock::now();  // the last message
    std::vector<std::string> complaints;
    for (;;) {
        while (const std::optional<std::string> text = file.next(!from_input)) {
            auto line = parse_line(*text, file.number());
            if (const auto* problem = std::get_if<std::string>(&line)) {
                complaints.push_back(complaint_of(file, *problem));
                say(complaints.back() + ": skipped");
                continue;
            }
            const std::size_t index = reading->talk().add(std::get<TraceLine>(std::move(line)));
            came = std::chrono::steady_clock::now();
            reading->tell_unanswered();
            reading->tell(index);
        }
        if (from_input) reading->talk().end();
        if (!reading->talk().messages().empty()) {
            const auto since = std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - came);
            reading->talk().give_up_at(reading->talk().messages().back().line.time_us + since.count());
            reading->tell_unanswered();
        }
        if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) return 1;  // main says so
        if (from_input) return !reading->talk().messages().empty() || refuse(file, complaints) ? 0 : 1;
        if (file.begins_anew()) {
            say(file.name() + ": begun anew");
            reading.emplace(arguments);
        }
        std::this_thread::sleep_for(milliseconds(100));
    }
}

int run(int argc, char** argv)
{
    Arguments arguments;
    CLI::App app("Tells what rbk and the modem said to each other: the file of RBK_TRACE, for people.", "rbk-trace");
    app.add_option("FILE", arguments.file, "trace that RBK_TRACE has rbk write; - is standard input")->required();
    auto* html = app.add_flag("--html", arguments.html, "write it as one page for a browser");
    auto* scenario = app.add_flag("--scenario", arguments.scenario, "write it as a scenario that repeats it");
    auto* run_option =
        app.add_option("--run", arguments.run, "which run of rbk that is, from 1, where there are several");
    auto* follow_flag = app.add_flag("-f,--follow", arguments.follow, "go on as the file grows");
    auto* services = app.add_option("--service", arguments.services, "of this service alone: a name or a number");
    auto* messages = app.add_option("--message", arguments.messages, "of this name or number alone");
    auto* errors = app.add_flag("--errors", arguments.errors, "alone what failed, and its other half");
    app.add_flag("--show-private", arguments.show_private, "show what identifies a person or a card");
    const auto is_given = [](const std::string& name) { return std::string(name.empty() ? "expected a name" : ""); };
    services->type_name("NAME")->take_all()->check(is_given);
    messages->type_name("NAME")->take_all()->check(is_given);
    html->excludes(scenario, follow_flag);
    run_option->type_name("NUMBER")
        ->check([](const std::string& text) {
            return std::string(text.find_first_not_of("0123456789") != text.npos ||
                                       text.find_first_of("123456789") == text.npos
                                   ? "expected a number from 1 on"
                                   : "");
        })
        ->needs(scenario);
    scenario->excludes(follow_flag, services, messages, errors);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : 1;
    }
    if (arguments.html) return print_page(arguments);
    if (arguments.scenario) return print_scenario(arguments);
    return arguments.follow ? follow(arguments) : print_all(arguments);
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        const int status = run(argc, argv);
        if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
        say("the output can't be written");
    } catch (const std::exception& error) {
        say(error.what());
    }
    return 1;
}
