#include "simulator/base/printable.h"

#include <cstdio>

namespace rbk::sim {

std::string printable(std::string_view text)
{
    std::string shown;
    unsigned char before = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        // Terminals obey the second block of control characters too, U+0080 to U+009F.
        const bool upper_control = before == 0xC2 && byte < 0xA0;
        if (byte >= 0x20 && byte != 0x7F && !upper_control) {
            shown += c;
        } else {
            char escaped[5];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            shown += escaped;
        }
        before = byte;
    }
    return shown;
}

}  // namespace rbk::sim
