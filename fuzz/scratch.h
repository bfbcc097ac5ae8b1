// What a target works with on disk, which ends with the process: TMPDIR on a memory file system makes it fast.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "link/bytes.h"

namespace rbk::fuzz {

class ScratchFolder {
 public:
    ScratchFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "rbk-fuzz-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) std::abort();
        path_ = name;
    }
    ~ScratchFolder() { std::filesystem::remove_all(path_); }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    void empty() const
    {
        for (const auto& entry : std::filesystem::directory_iterator(path_)) std::filesystem::remove_all(entry.path());
    }

 private:
    std::filesystem::path path_;
};

// A file in memory alone, and the path that opens it.
class MemoryFile {
 public:
    MemoryFile() : fd_(::memfd_create("rbk-fuzz", MFD_CLOEXEC)) {}
    ~MemoryFile() { ::close(fd_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    int fd() const { return fd_; }
    std::string path() const { return "/proc/self/fd/" + std::to_string(fd_); }
    void fill(ByteView bytes) const
    {
        const auto written = static_cast<ssize_t>(bytes.size());
        if (::ftruncate(fd_, 0) != 0 || ::pwrite(fd_, bytes.data(), bytes.size(), 0) != written) std::abort();
    }

 private:
    int fd_;
};

}  // namespace rbk::fuzz
