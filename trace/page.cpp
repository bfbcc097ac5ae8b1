// The page stands in lines of elements that a browser shows before any script has run: a <details> for each message, with
// its arrow between two lifelines. Where the arrow begins and ends says the style, by the classes of client and service: a
// page whose policy forbids inline style can't say it in figures.
#include "trace/page.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <optional>

#include "trace/lines.h"
#include "trace/page_assets.h"

namespace rbk::trace {
namespace {

// As many lifelines as page.css has classes for. The services beyond share the last one.
constexpr std::size_t kServiceLanes = 16;
constexpr std::size_t kClientLanes = 4;
constexpr std::size_t kMany = 8;  // services whose names don't fit side by side

constexpr std::size_t kChunk = 50;           // messages that the browser lays out together once they come into sight
constexpr std::size_t kAtOnce = 500;         // messages that are elements from the start; the script makes the others
constexpr std::int64_t kGap_us = 200'000;    // silence that is drawn
constexpr std::size_t kLongestGlance = 160;  // bytes of fields beside a message that isn't opened

__attribute__((format(printf, 1, 2))) std::string format(const char* form, ...)
{
    char text[160];
    va_list arguments;
    va_start(arguments, form);
    std::vsnprintf(text, sizeof text, form, arguments);
    va_end(arguments);
    return text;
}

std::string counted(std::size_t count, const std::string& thing)
{
    return std::to_string(count) + ' ' + thing + (count == 1 ? "" : "s");
}

// ---- Foreign text ----

// The character at the front and the bytes that it has. Empty for bytes that are no UTF-8.
struct Character {
    char32_t code = 0;
    std::size_t size = 0;
};
std::optional<Character> front_character(std::string_view text)
{
    const auto byte = [&](std::size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0U; };
    const unsigned first = byte(0);
    if (first < 0x80) return Character{first, 1};
    const std::size_t size = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4) return std::nullopt;
    char32_t code = first & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if ((byte(i) & 0xC0U) != 0x80) return std::nullopt;
        code = code << 6U | (byte(i) & 0x3FU);
    }
    const bool is_overlong = (size == 3 && code < 0x800) || (size == 4 && code < 0x10000);
    const bool is_surrogate = code >= 0xD800 && code < 0xE000;
    if (is_overlong || is_surrogate || code > 0x10FFFF) return std::nullopt;
    return Character{code, size};
}

// What nobody sees: control characters, and those that turn the direction of text, join or break it.
bool is_unseen(char32_t code)
{
    struct Range {
        char32_t first, last;
    };
    constexpr Range kUnseen[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0xAD, 0xAD},     {0x61C, 0x61C},
                                 {0x115F, 0x1160}, {0x180B, 0x180F}, {0x200B, 0x200F}, {0x2028, 0x202E},
                                 {0x2060, 0x206F}, {0x3164, 0x3164}, {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF},
                                 {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFFB}, {0xFFFE, 0xFFFF}, {0xE0000, 0xE0FFF}};
    return std::ranges::any_of(kUnseen, [&](const Range& each) { return code >= each.first && code <= each.last; });
}

// ---- Bytes ----

constexpr std::size_t kBytesInLine = 8;

std::string dump_line(ByteView bytes, const std::vector<bool>& hidden, std::size_t offset)
{
    std::string digits;
    std::string letters;
    for (std::size_t i = offset; i < std::min(offset + kBytesInLine, bytes.size()); ++i) {
        const std::uint8_t byte = bytes[i];
        const bool is_letter = byte >= 0x20 && byte < 0x7F;
        digits += hidden[i] ? " \u00B7\u00B7" : format(" %02X", byte);
        letters += hidden[i] ? "\u00B7" : is_letter ? html_text({reinterpret_cast<const char*>(&byte), 1}) : ".";
    }
    const std::size_t missing = kBytesInLine - std::min(kBytesInLine, bytes.size() - offset);
    return digits + std::string(3 * missing, ' ') + "  " + letters;
}

// Lines of offset, digits and letters. Lines that are like the one before are counted only.
std::string dump(ByteView bytes, const std::vector<bool>& hidden)
{
    std::string text;
    std::string last;
    std::size_t repeated = 0;
    const auto end_repeated = [&] {
        if (repeated > 0) text += format("      %zu more like it\n", repeated);
        repeated = 0;
    };
    for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesInLine) {
        std::string line = dump_line(bytes, hidden, offset);
        if (line == last) {
            ++repeated;
            continue;
        }
        end_repeated();
        text += format("%04zX ", offset) + line + '\n';
        last = std::move(line);
    }
    end_repeated();
    return text;
}

// ---- The page ----

class Page {
 public:
    Page(std::string_view file, const std::vector<Message>& messages, const std::vector<PageMessage>& shown,
         bool show_private)
        : file_(html_text(file)), messages_(messages), shown_(shown), show_private_(show_private)
    {
        find_lanes();
        find_faults();
    }

    std::string write()
    {
        add_head();
        add_summary();
        add_lanes();
        for (std::size_t at = 0; at < shown_.size(); at += kChunk) {
            const bool is_later = at >= kAtOnce;
            out_ += is_later ? "<div class=\"c\"><noscript>\n" : "<div class=\"c\">\n";
            for (std::size_t i = at; i < std::min(at + kChunk, shown_.size()); ++i) add_message(i);
            out_ += is_later ? "</noscript></div>\n" : "</div>\n";
        }
        out_ += "</main>\n<script>" + std::string(kPageScript) + "</script>\n</body>\n</html>\n";
        return std::move(out_);
    }

 private:
    const Message& message(std::size_t at) const { return messages_[shown_[at].index]; }

    void find_lanes();
    void find_faults();
    std::size_t service_lane(std::string_view service) const;
    std::size_t service_lanes() const { return std::min(services_.size(), kServiceLanes); }

    void add_head();
    void add_summary();
    void add_lanes();
    void add_silence(std::size_t at);
    void add_message(std::size_t at);
    void add_label(std::size_t at);
    void add_opened(std::size_t at);
    void add_fields(const std::vector<Field>& fields);
    void add_element(std::string_view start_tag, const std::string& text, std::string_view end_tag);

    std::string file_;
    const std::vector<Message>& messages_;
    const std::vector<PageMessage>& shown_;
    bool show_private_;
    std::vector<std::string> services_;      // in the order of their first words
    std::vector<std::size_t> lane_of_run_;   // runs at the same time have a lifeline each
    std::vector<std::size_t> first_of_run_;  // place among the shown
    std::vector<bool> is_fault_;             // of all messages; of those that aren't shown false
    std::vector<bool> has_faulty_half_;      // it belongs to a message that is faulty
    std::vector<bool> is_shown_;
    std::size_t client_lanes_ = 1;
    std::size_t runs_ = 0;
    std::size_t faults_ = 0;
    std::string out_;
};

// A run's lifeline goes from its first to its last message. Where it has ended the next run takes it.
void Page::find_lanes()
{
    std::size_t runs = 0;
    for (const Message& each : messages_) runs = std::max(runs, each.run + 1);
    std::vector<std::size_t> last_of_run(runs, 0);
    first_of_run_.assign(runs, shown_.size());
    lane_of_run_.assign(runs, 0);
    for (std::size_t at = 0; at < shown_.size(); ++at) {
        const std::size_t run = message(at).run;
        first_of_run_[run] = std::min(first_of_run_[run], at);
        last_of_run[run] = at;
        const std::string& service = shown_[at].words.service;
        if (std::ranges::find(services_, service) == services_.end()) services_.push_back(service);
    }
    std::size_t free_from[kClientLanes] = {};
    for (std::size_t at = 0; at < shown_.size(); ++at) {
        const std::size_t run = message(at).run;
        if (first_of_run_[run] != at) continue;
        ++runs_;
        std::size_t lane = 0;
        while (lane + 1 < kClientLanes && free_from[lane] > at) ++lane;
        free_from[lane] = std::max(free_from[lane], last_of_run[run] + 1);
        lane_of_run_[run] = lane;
        client_lanes_ = std::max(client_lanes_, lane + 1);
    }
}

void Page::find_faults()
{
    is_fault_.assign(messages_.size(), false);
    has_faulty_half_.assign(messages_.size(), false);
    is_shown_.assign(messages_.size(), false);
    for (const auto& [index, words] : shown_) {
        is_shown_[index] = true;
        is_fault_[index] = is_faulty(messages_[index], words);
        faults_ += is_fault_[index] ? 1 : 0;
    }
    for (std::size_t i = 0; i < messages_.size(); ++i) {
        const std::optional<std::size_t> partner = messages_[i].partner;
        if (partner && is_fault_[i]) has_faulty_half_[*partner] = true;
        if (partner && is_fault_[*partner]) has_faulty_half_[i] = true;
    }
}

std::size_t Page::service_lane(std::string_view service) const
{
    const auto found = std::ranges::find(services_, service);
    return std::min(static_cast<std::size_t>(found - services_.begin()), kServiceLanes - 1);
}

void Page::add_element(std::string_view start_tag, const std::string& text, std::string_view end_tag)
{
    out_ += start_tag;
    out_ += html_text(text);
    out_ += end_tag;
}

void Page::add_head()
{
    out_ +=
        "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; base-uri 'none'; "
        "form-action 'none'; style-src '" +
        std::string(kPageStyleHash) + "'; script-src '" + std::string(kPageScriptHash) +
        "'\">\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n<title>" +
        file_ + ": what rbk and the modem said</title>\n<style>" + std::string(kPageStyle) +
        "</style>\n</head>\n<body class=\"n" + std::to_string(std::max<std::size_t>(service_lanes(), 1)) + " l" +
        std::to_string(client_lanes_) + (services_.size() < kMany ? "" : " many") + "\">\n";
}

void Page::add_summary()
{
    const bool is_whole = shown_.size() == messages_.size();
    const std::string count = is_whole ? counted(shown_.size(), "message")
                                       : std::to_string(shown_.size()) + " of " + counted(messages_.size(), "message");
    std::int64_t lasted_us = 0;  // without the steps back of a clock that was set
    for (std::size_t i = 1; i < shown_.size(); ++i)
        lasted_us += std::max<std::int64_t>(message(i).line.time_us - message(i - 1).line.time_us, 0);
    out_ += "<header>\n<h1>" + file_ + "</h1>\n<p>" + count + " <i>\u00B7</i> " + counted(runs_, "run") +
            " of rbk <i>\u00B7</i> " + (faults_ > 0 ? "<strong>" : "<span>") + counted(faults_, "fault") +
            (faults_ > 0 ? "</strong>" : "</span>") + " <i>\u00B7</i> " + duration_text(lasted_us) +
            (show_private_ ? " <i>\u00B7</i> <strong>private values are shown</strong>" : "") +
            "</p>\n</header>\n<div class=\"top\">\n<form role=\"search\" hidden>\n"
            "<label><input type=\"checkbox\" id=\"faults\"> only faults</label>\n"
            "<input type=\"search\" id=\"search\" placeholder=\"search\" aria-label=\"search in names and fields\" "
            "autocomplete=\"off\" spellcheck=\"false\">\n<output></output>\n"
            "<p><kbd>j</kbd> <kbd>k</kbd> move <kbd>Enter</kbd> opens <kbd>n</kbd> next fault <kbd>/</kbd> search</p>\n"
            "</form>\n";
}

// The names above the lifelines, which stay on top, and the lifelines themselves, from the first message to the last.
void Page::add_lanes()
{
    std::string lines;
    out_ += "<div class=\"names\"><span class=\"time\">seconds</span><div>";
    for (std::size_t lane = 0; lane < client_lanes_; ++lane)
        lines += "<i class=\"client r" + std::to_string(lane) + "\"></i>";
    out_ += "<b class=\"client\"><span>rbk</span></b>";
    for (std::size_t lane = 0; lane < service_lanes(); ++lane) {
        const bool are_several = lane + 1 == kServiceLanes && services_.size() > kServiceLanes;
        out_ += "<b class=\"s" + std::to_string(lane) + "\"><span>" +
                (are_several ? "others" : html_text(services_[lane])) + "</span></b>";
        lines += "<i class=\"s" + std::to_string(lane) + "\"></i>";
    }
    out_ +=
        "</div><p class=\"key\" aria-hidden=\"true\"><span><i class=\"a q\"><span></span></i> request</span> "
        "<span><i class=\"a p\"><span></span></i> answer</span> "
        "<span><i class=\"a i\"><span></span></i> indication</span> "
        "<span><i class=\"a q f\"><span></span></i> fault</span></p></div>\n</div>\n<main>\n"
        "<div class=\"lanes\" aria-hidden=\"true\">" +
        lines + "</div>\n";
    if (shown_.empty()) out_ += "<p class=\"none\">None of the messages was asked for.</p>\n";
}

// What stands before a message: the silence since the last one, and the beginning of a run.
void Page::add_silence(std::size_t at)
{
    const std::size_t run = message(at).run;
    const std::int64_t silence_us = at == 0 ? 0 : message(at).line.time_us - message(at - 1).line.time_us;
    if (silence_us < -kGap_us) {
        out_ += "<p class=\"gap g1\"><span>clock set back</span></p>\n";
    } else if (silence_us >= kGap_us) {
        const auto seconds = static_cast<double>(silence_us) / 1e6;
        const int size = seconds < 1 ? 1 : seconds < 10 ? 2 : seconds < 100 ? 3 : 4;
        out_ += format("<p class=\"gap g%d\"><span>%.*f s</span></p>\n", size, seconds < 100 ? 1 : 0, seconds);
    }
    if (runs_ > 1 && first_of_run_[run] == at)
        out_ += format("<h2 class=\"r%zu\">run %zu</h2>\n", lane_of_run_[run], run + 1);
}

void Page::add_message(std::size_t at)
{
    const Message& each = message(at);
    const std::size_t index = shown_[at].index;
    add_silence(at);
    const bool is_answer = each.line.is_answer() || (each.line.is_diag && !each.line.to_modem && each.partner);
    const char* const kind = each.line.to_modem ? "q" : is_answer ? "p" : "i";
    const char* const spoken = each.line.to_modem ? "to" : is_answer ? "from" : "unasked from";
    out_ += format("<details class=\"m %s r%zu s%zu%s\" id=\"m%lu\"><summary><span class=\"time\">%s</span>", kind,
                   lane_of_run_[each.run], service_lane(shown_[at].words.service),
                   is_fault_[index]          ? " f"
                   : has_faulty_half_[index] ? " h"
                                             : "",
                   each.line.number, seconds_text(each.line.time_us - messages_.front().line.time_us).c_str());
    out_ += format("<i class=\"a\"><span>%s</span></i><span class=\"t\">", spoken);
    add_label(at);
    out_ += "</span></summary><div class=\"d\">";
    add_opened(at);
    out_ += "</div></details>\n";
}

void Page::add_label(std::size_t at)
{
    const Message& each = message(at);
    const Decoded& words = shown_[at].words;
    if (client_lanes_ > 1) out_ += format("<i>run %zu</i> ", each.run + 1);
    const bool has_content = !words.content.empty();
    add_element("<i>", has_content ? words.service + ' ' + words.message : words.service, "</i> <b>");
    add_element("", has_content ? words.content : words.message, "</b>");
    if (!words.result.empty())
        add_element(words.is_fault ? " <strong>" : " <em>", words.result, words.is_fault ? "</strong>" : "</em>");
    if (each.took_us) add_element(" <small>", duration_text(*each.took_us), "</small>");
    if (const std::string mark = mark_text(each); !mark.empty()) add_element(" <mark>", mark, "</mark>");
    if (!words.complaint.empty())
        add_element(words.is_fault ? " <mark>" : " <small>", words.complaint, words.is_fault ? "</mark>" : "</small>");
    std::string glance;
    for (const Field& field : words.fields) {
        if (!glance.empty()) glance += "  ";
        glance += field.name + '=' + value_text(field, show_private_);
        if (glance.size() > kLongestGlance) break;
    }
    if (glance.size() > kLongestGlance) {
        std::size_t end = kLongestGlance;
        while (end > 0 && (static_cast<unsigned char>(glance[end]) & 0xC0U) == 0x80) --end;  // no character is cut
        glance.resize(end);
        glance += "\u2026";
    }
    if (!glance.empty()) add_element(" <span class=\"v\">", glance, "</span>");
}

void Page::add_opened(std::size_t at)
{
    const Message& each = message(at);
    const TraceLine& line = each.line;
    out_ += "<p>";
    if (!line.is_diag) {
        out_ += format("message 0x%04X of service 0x%04X", line.head.message, line.service);
        if (!line.is_indication()) out_ += format(", transaction %u", line.head.transaction);
        out_ += ", ";
    }
    out_ += counted(line.bytes.size(), "byte") + format(", line %lu of the file", line.number);
    if (each.partner && is_shown_[*each.partner]) {
        const char* const name = line.is_request() ? "its answer" : "its request";
        out_ += format(". <a href=\"#m%lu\">%s</a>", messages_[*each.partner].line.number, name);
    }
    out_ += "</p>";
    if (!shown_[at].words.fields.empty()) add_fields(shown_[at].words.fields);
    if (!line.bytes.empty()) {
        const std::vector<bool> hidden =
            show_private_ ? std::vector<bool>(line.bytes.size()) : private_bytes(line, shown_[at].words);
        out_ += "<pre>" + dump(line.bytes, hidden) + "</pre>";
    }
}

void Page::add_fields(const std::vector<Field>& fields)
{
    out_ += "<dl>";
    for (const Field& field : fields) {
        const bool is_group = !field.parts.empty() && (!field.is_private || show_private_);
        add_element(is_group ? "<dt class=\"g\">" : "<dt>", field.name, is_group ? "<dd class=\"g\">" : "<dd>");
        if (is_group)
            add_fields(field.parts);
        else
            out_ += html_text(value_text(field, show_private_));
        if (!field.note.empty()) add_element(" <mark>", field.note, "</mark>");
    }
    out_ += "</dl>";
}

}  // namespace

std::string html_text(std::string_view text)
{
    std::string shown;
    while (!text.empty()) {
        const std::optional<Character> character = front_character(text);
        const std::size_t size = character ? character->size : 1;
        const std::string_view bytes = text.substr(0, size);
        text.remove_prefix(size);
        if (!character || (character->code < 0x100 && is_unseen(character->code))) {
            for (const char byte : bytes) shown += format("\\x%02X", static_cast<unsigned char>(byte));
        } else if (is_unseen(character->code)) {
            shown += format("\\u{%X}", static_cast<unsigned>(character->code));
        } else if (std::string_view("&<>\"'").find(bytes) != std::string_view::npos) {
            shown += format("&#%u;", static_cast<unsigned>(character->code));
        } else {
            shown += bytes;
        }
    }
    return shown;
}

std::string page_of(std::string_view file, const std::vector<Message>& messages, const std::vector<PageMessage>& shown,
                    bool show_private)
{
    return Page(file, messages, shown, show_private).write();
}

}  // namespace rbk::trace
