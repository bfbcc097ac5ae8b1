#include "simulator/state/stored_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace rbk::sim {

std::string file_error_text(int error)
{
    return error == kNoRegularFile ? "expected a regular file" : std::generic_category().message(-error);
}

StoredFile open_regular(int folder, const std::string& name, int more_flags)
{
    // Not blocking: a pipe's open would wait for a writer.
    Fd fd(::openat(folder, name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC | more_flags));
    if (!fd.is_open()) return {errno == ENXIO ? kNoRegularFile : -errno, {}, 0};  // a socket can't be opened
    struct stat status {};
    if (::fstat(fd.get(), &status) != 0) return {-errno, {}, 0};
    if (S_ISDIR(status.st_mode)) return {-EISDIR, {}, 0};
    if (!S_ISREG(status.st_mode)) return {kNoRegularFile, {}, 0};
    return {0, std::move(fd), static_cast<std::uint64_t>(status.st_size)};
}

StoredValue read_whole(StoredFile file, std::uint64_t longest)
{
    if (file.error != 0) return {file.error, {}};
    if (file.size > longest) return {-EFBIG, {}};
    StoredValue value{0, Bytes(file.size)};
    std::size_t filled = 0;
    while (filled < value.bytes.size()) {
        const ssize_t got = ::read(file.fd.get(), value.bytes.data() + filled, value.bytes.size() - filled);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return {-errno, {}};
        if (got == 0) break;  // somebody shortens it in place
        filled += static_cast<std::size_t>(got);
    }
    value.bytes.resize(filled);
    return value;
}

}  // namespace rbk::sim
