#include "trace/lines.h"

#include <cstdio>

#include "trace/names.h"

namespace rbk::trace {
namespace {

bool is_table(const Field& group)
{
    return !group.parts.empty() && group.parts.front().name == "0";
}

std::string parts_text(const Field& group, bool show_private)
{
    std::string text;
    for (const Field& part : group.parts) {
        if (!text.empty()) text += ", ";
        if (!is_table(group)) text += part.name + '=';
        text += value_text(part, show_private);
        if (!part.note.empty()) text += " (" + part.note + ")";
    }
    return text;
}

const char* words_of(const Message& message)
{
    switch (message.mark) {
    case Mark::none: break;
    case Mark::unanswered: return "unanswered";
    case Mark::late: return message.line.is_request() ? "answered too late" : "too late: nobody waits for it any more";
    case Mark::doubled: return message.line.is_indication() ? "told a second time" : "a second answer";
    case Mark::unmatched: return "an answer to nothing";
    case Mark::early: return "before the answer";
    case Mark::no_outcome: return "acknowledged, and no outcome told";
    }
    return "";
}

}  // namespace

std::string seconds_text(std::int64_t time_us)
{
    char text[40];
    const std::int64_t size = time_us < 0 ? -time_us : time_us;
    std::snprintf(text, sizeof text, "%s%ld.%06ld", time_us < 0 ? "-" : "", size / 1'000'000, size % 1'000'000);
    return text;
}

std::string duration_text(std::int64_t time_us)
{
    char text[40];
    const auto micros = static_cast<double>(time_us);
    if (time_us < 1'000'000)
        std::snprintf(text, sizeof text, time_us < 10'000 ? "%.2f ms" : "%.0f ms", micros / 1e3);
    else
        std::snprintf(text, sizeof text, "%.2f s", micros / 1e6);
    return text;
}

std::string mark_text(const Message& message)
{
    std::string text = words_of(message);
    if (message.is_guess) text += text.empty() ? "of another run perhaps" : ", of another run perhaps";
    return text;
}

bool is_faulty(const Message& message, const Decoded& decoded)
{
    return message.mark != Mark::none || decoded.is_fault;
}

std::string value_text(const Field& field, bool show_private)
{
    if (field.is_private && !show_private)
        return "(" + std::to_string(field.size) + (field.size == 1 ? " byte, hidden)" : " bytes, hidden)");
    if (field.parts.empty()) return field.value.empty() ? "none" : field.value;
    const std::string parts = parts_text(field, show_private);
    return is_table(field) ? "[" + parts + "]" : "{" + parts + "}";
}

std::string line_of(const Message& message, const Decoded& decoded, std::int64_t first_us, bool with_run,
                    bool show_private)
{
    const TraceLine& line = message.line;
    char head[80];
    std::snprintf(head, sizeof head, "%12s %c %-8s ", seconds_text(line.time_us - first_us).c_str(),
                  line.to_modem ? '>' : '<', decoded.service.c_str());
    std::string text = head;
    if (with_run) text += "run " + std::to_string(message.run + 1) + ' ';
    if (!line.is_diag && !line.is_indication()) text += '#' + std::to_string(line.head.transaction) + ' ';
    if (line.is_indication()) text += "says ";
    text += decoded.message;
    if (!decoded.content.empty()) text += ": " + decoded.content;
    if (!decoded.result.empty()) text += "  " + decoded.result;
    if (message.took_us) text += "  after " + duration_text(*message.took_us);
    if (const std::string mark = mark_text(message); !mark.empty()) text += "  ! " + mark;
    if (!decoded.complaint.empty()) text += "  ! " + decoded.complaint;
    bool is_first = true;
    for (const Field& field : decoded.fields) {
        text += (is_first ? "  " : " ") + field.name + '=' + value_text(field, show_private);
        if (!field.note.empty()) text += " (" + field.note + ")";
        is_first = false;
    }
    return text;
}

}  // namespace rbk::trace
