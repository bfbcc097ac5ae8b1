// The page's style and script: page.css and page.js, which the build writes into page_assets.cpp.
#pragma once

#include <string_view>

namespace rbk::trace {

extern const std::string_view kPageStyle;
extern const std::string_view kPageScript;

// Their SHA-256, as a Content-Security-Policy names it.
extern const std::string_view kPageStyleHash;
extern const std::string_view kPageScriptHash;

}  // namespace rbk::trace
