#include "simulator/scenario/scenario_text.h"

#include <algorithm>

#include "simulator/scenario/scenario_reader.h"

namespace rbk::sim {
namespace {

bool is_blank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

class Scan {
 public:
    Scan(std::string_view text, const std::string& file) : text_(text), file_(file) {}
    void run();

 private:
    // Where the scan stands at one level of nesting.
    enum class Place { key, value, list };

    void skip_comment();
    void skip_text(char quote);
    void look_at(char c);
    void open(Place place);
    void close();
    void count_value();
    void check(char c, bool letters_pass) const;
    [[noreturn]] void refuse(const std::string& expected) const;

    const std::string_view text_;
    const std::string& file_;
    std::size_t at_ = 0;
    std::size_t line_ = 1;
    std::size_t values_ = 0;
    std::size_t parts_ = 1;  // of the key or number that is being read
    std::size_t depth_ = 0;
    Place places_[kDeepestScenario + 1] = {Place::key};
    // Behind a number's or word's first character the parser reads on to the next blank, comma or closing bracket, and
    // neither brackets nor quotes mean anything to it.
    bool in_word_ = false;
};

void Scan::run()
{
    if (text_.starts_with("\xEF\xBB\xBF")) at_ = 3;  // an editor's mark of UTF-8
    while (at_ < text_.size()) {
        const char c = text_[at_];
        check(c, false);
        switch (c) {
        case '#': skip_comment(); break;
        case '"':
        case '\'': skip_text(c); break;
        default: look_at(c); ++at_;
        }
    }
}

void Scan::look_at(char c)
{
    Place& place = places_[depth_];
    switch (c) {
    case '[': return open(Place::list);
    case '{': return open(Place::key);
    case ']':
    case '}': return close();
    case ' ':
    case '\t':
    case '\r': in_word_ = false; return;  // the parts of a key go on: blanks may stand around its dots
    case '\n':
        in_word_ = false;
        parts_ = 1;
        ++line_;
        if (depth_ == 0) place = Place::key;
        return;
    case ',':
        count_value();
        in_word_ = false;
        if (depth_ > 0 && place == Place::value) place = Place::key;
        return;
    case '=':
        count_value();
        if (place == Place::key) {
            place = Place::value;
            return;
        }
        break;
    case '.':
        if (++parts_ > kDeepestScenario) refuse("a key of at most " + std::to_string(kDeepestScenario) + " parts");
        break;
    default: break;
    }
    if (place != Place::key) in_word_ = true;
}

void Scan::open(Place place)
{
    count_value();
    if (depth_ == kDeepestScenario) {
        refuse("at most " + std::to_string(kDeepestScenario) + " lists and tables within each other");
    }
    places_[++depth_] = place;
}

void Scan::close()
{
    in_word_ = false;
    if (depth_ > 0) --depth_;
}

void Scan::count_value()
{
    parts_ = 1;
    if (++values_ > kMostScenarioValues) refuse("at most " + std::to_string(kMostScenarioValues) + " values");
}

void Scan::skip_comment()
{
    for (in_word_ = false; at_ < text_.size() && text_[at_] != '\n'; ++at_) check(text_[at_], true);
}

void Scan::skip_text(char quote)
{
    const bool whole_lines = text_.substr(at_).starts_with(std::string(3, quote));
    at_ += whole_lines ? 3 : 1;
    // Letters outside ASCII don't pass in the middle of a word, and not behind a backslash and the blanks that follow it,
    // which the parser skips.
    bool escaped = false;
    bool skipping = false;
    for (; at_ < text_.size(); ++at_) {
        const char c = text_[at_];
        check(c, !in_word_);
        if (skipping && static_cast<unsigned char>(c) >= 0x80) refuse("no letter outside ASCII behind a backslash");
        if (c == '\n') {
            if (!whole_lines) refuse("the end of the text in its line");
            ++line_;
        }
        if (escaped) {
            escaped = false;
            skipping = is_blank(c);
        } else if (c == '\\' && quote == '"') {
            escaped = skipping = true;
        } else if (c == quote) {
            // Three in a row end the lines; of five two are still text.
            const std::string_view ahead = text_.substr(at_, whole_lines ? 5 : 1);
            const std::size_t quotes = std::min(ahead.find_first_not_of(quote), ahead.size());
            at_ += quotes - 1;
            skipping = false;
            if (!whole_lines || quotes >= 3) {
                ++at_;
                return;
            }
        } else if (!is_blank(c)) {
            skipping = false;
        }
    }
}

void Scan::check(char c, bool letters_pass) const
{
    const auto byte = static_cast<unsigned char>(c);
    if ((byte < 0x20 && !is_blank(c)) || byte == 0x7F) refuse("no control characters");
    if (byte >= 0x80 && !letters_pass) refuse("letters outside ASCII in texts and comments alone");
}

void Scan::refuse(const std::string& expected) const
{
    throw ScenarioError(file_ + ":" + std::to_string(line_) + ": expected " + expected);
}

}  // namespace

void check_scenario_text(std::string_view text, const std::string& file)
{
    Scan(text, file).run();
}

}  // namespace rbk::sim
