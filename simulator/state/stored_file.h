// A file as one value: opened without waiting for anybody, and read whole up to a bound. What lies at a path is foreign:
// it may be a pipe that nobody writes to, a device without an end, or grow while it is read.
#pragma once

#include <cstdint>
#include <string>

#include "link/bytes.h"
#include "simulator/base/fd.h"

namespace rbk::sim {

// Errors are negative numbers of <errno.h>, or kNoRegularFile; 0 is success.
struct StoredFile {
    int error = 0;
    Fd fd;
    std::uint64_t size = 0;
};

struct StoredValue {
    int error = 0;
    Bytes bytes;
};

inline constexpr int kNoRegularFile = -100000;  // beyond all of <errno.h>: a pipe, a device, a socket

// For a person.
std::string file_error_text(int error);

// `folder` and `more_flags` as for openat(). A folder is -EISDIR.
StoredFile open_regular(int folder, const std::string& name, int more_flags);

// The file as long as it was at its opening; shorter where somebody cuts it meanwhile. -EFBIG when it is above `longest`.
StoredValue read_whole(StoredFile file, std::uint64_t longest);

}  // namespace rbk::sim
