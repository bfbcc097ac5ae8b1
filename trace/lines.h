// Messages as lines for a person, and the words that pages use too.
#pragma once

#include <cstdint>
#include <string>

#include "trace/fields.h"
#include "trace/talk.h"

namespace rbk::trace {

// "12.345678": seconds, from microseconds.
std::string seconds_text(std::int64_t time_us);

// "0.35 ms", "250 ms", "3.25 s".
std::string duration_text(std::int64_t time_us);

// What is wrong with a message's place in the talk, in words; empty where nothing is.
std::string mark_text(const Message& message);

// Whether a person who looks for faults looks for this message.
bool is_faulty(const Message& message, const Decoded& decoded);

// A field's value, without its name and its note: a group as {a=1, b=2}, a table as [{...}, {...}]. What is private shows
// its size alone.
std::string value_text(const Field& field, bool show_private);

// The message as one line, without its end.
//   first_us   time of the talk's first message, which is 0 here
//   with_run   more than one process has written into the file: the line tells which
std::string line_of(const Message& message, const Decoded& decoded, std::int64_t first_us, bool with_run,
                    bool show_private);

}  // namespace rbk::trace
