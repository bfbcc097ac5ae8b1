// The right to make and remove what lies at a path, against other servers that are given the same path.
#pragma once

#include <optional>
#include <string>

#include "simulator/base/fd.h"

namespace rbk::sim {

// A locked file beside the path, PATH.lock, that is there as long as its owner lives. Only its user may open it, so that
// nobody else can hold the lock; and the lock is never waited for. What a killed process leaves is taken over.
class PathClaim {
 public:
    // Empty, with the reason in `error`, when a living process has the path or there can be no such file.
    static std::optional<PathClaim> take(const std::string& path, std::string& error);
    // Removes the file.
    ~PathClaim();
    PathClaim(PathClaim&&) = default;
    PathClaim& operator=(PathClaim&&) = delete;

    // What was made at the path, for whoever takes it over after a kill. Empty where nobody wrote it down.
    std::string made() const;
    bool set_made(const std::string& what);

 private:
    PathClaim(Fd file, std::string name) : file_(std::move(file)), name_(std::move(name)) {}

    Fd file_;
    std::string name_;
};

}  // namespace rbk::sim
