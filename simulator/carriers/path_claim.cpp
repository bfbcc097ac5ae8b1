#include "simulator/carriers/path_claim.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>

namespace rbk::sim {
namespace {

// In two steps: with O_CREAT some systems refuse, root included, a file that is there and belongs to another user.
Fd open_or_make(const std::string& name)
{
    constexpr int kHow = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
    Fd file;
    do {
        file = Fd(::open(name.c_str(), kHow));
        if (!file.is_open() && errno == ENOENT) file = Fd(::open(name.c_str(), kHow | O_CREAT | O_EXCL, 0600));
    } while (!file.is_open() && errno == EEXIST);  // somebody has made it between the two
    return file;
}

// Whether the open file still has its name.
bool is_at(const Fd& file, const std::string& name)
{
    struct stat opened {};
    struct stat there {};
    return ::fstat(file.get(), &opened) == 0 && ::lstat(name.c_str(), &there) == 0 && opened.st_dev == there.st_dev &&
           opened.st_ino == there.st_ino;
}

}  // namespace

std::optional<PathClaim> PathClaim::take(const std::string& path, std::string& error)
{
    const std::string name = path + ".lock";
    for (;;) {
        Fd file = open_or_make(name);
        const int failed = file.is_open() ? 0 : errno;
        struct stat there {};
        const bool is_there = ::lstat(name.c_str(), &there) == 0;
        if (is_there && there.st_uid != ::geteuid()) {
            error = name + ": belongs to another user";
        } else if (is_there && !S_ISREG(there.st_mode)) {
            error = name + ": something that isn't a lock lies there";
        } else if (failed != 0) {
            error = path + ": " + std::generic_category().message(failed);
        } else if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            if (is_at(file, name)) return PathClaim(std::move(file), name);
            continue;  // its owner was about to end, and has removed it
        } else if (errno == EWOULDBLOCK) {
            error = path + ": a server listens there already";
        } else {
            error = name + ": " + std::generic_category().message(errno);
        }
        return std::nullopt;
    }
}

PathClaim::~PathClaim()
{
    if (file_.is_open() && is_at(file_, name_)) ::unlink(name_.c_str());
}

std::string PathClaim::made() const
{
    char text[64];
    const ssize_t size = ::pread(file_.get(), text, sizeof text, 0);
    return {text, size > 0 ? static_cast<std::size_t>(size) : 0};
}

bool PathClaim::set_made(const std::string& what)
{
    return ::ftruncate(file_.get(), 0) == 0 &&
           ::pwrite(file_.get(), what.data(), what.size(), 0) == static_cast<ssize_t>(what.size());
}

}  // namespace rbk::sim
