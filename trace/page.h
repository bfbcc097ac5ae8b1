// A talk as one page for a browser, which needs nothing else: no script or style from elsewhere, no server.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "trace/fields.h"
#include "trace/talk.h"

namespace rbk::trace {

// A message that the page shows.
struct PageMessage {
    std::size_t index = 0;  // in the talk
    Decoded words;
};

// The page: UTF-8, whatever bytes the trace has.
//   file           name of the trace, for the title
//   messages       the whole talk
//   shown          those of it that the page has, in their order
//   show_private   else what identifies a person or a card is hidden, in the fields and in the bytes
std::string page_of(std::string_view file, const std::vector<Message>& messages, const std::vector<PageMessage>& shown,
                    bool show_private);

// Foreign text for any place in a page where text may stand, a quoted attribute too. What can't be seen, or would change
// how its surroundings are read, stands there as \xNN (bytes that are no UTF-8, and control characters) or \u{NNNN}.
std::string html_text(std::string_view text);

}  // namespace rbk::trace
