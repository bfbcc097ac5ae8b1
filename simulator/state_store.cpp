#include "simulator/state_store.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace rbk::sim {
namespace {

constexpr char kTemporaries[] = "tmp";
constexpr std::uint64_t kLongestValue = 16UL * 1024 * 1024;  // far above what a modem keeps in one

std::string error_text(int error)
{
    return std::generic_category().message(-error);
}

// For a line on the screen: a client may have put any byte into a name.
std::string printable(std::string_view text)
{
    std::string shown;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            shown += c;
        } else {
            char escaped[5];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", byte);
            shown += escaped;
        }
    }
    return shown;
}

std::vector<std::string> split(std::string_view name)
{
    std::vector<std::string> parts;
    while (!name.empty()) {
        const std::size_t slash = std::min(name.find('/'), name.size());
        if (slash > 0) parts.emplace_back(name.substr(0, slash));
        name.remove_prefix(std::min(slash + 1, name.size()));
    }
    return parts;
}

// A name for something new. Whoever makes it goes on to the next one where it is taken: a killed process may have had the
// same number, and where two containers share the directory a living one may have it.
std::string next_name()
{
    static std::atomic<unsigned> last = 0;
    return std::to_string(::getpid()) + "-" + std::to_string(++last);
}

// Goes down from `folder` along the parts before the last `keep`; `folder` is where the way ended.
int descend(Fd& folder, const std::vector<std::string>& parts, std::size_t keep, bool make)
{
    for (std::size_t i = 0; i + keep < parts.size(); ++i) {
        const char* name = parts[i].c_str();
        const auto step = [&] { return ::openat(folder.get(), name, O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); };
        int next = step();
        if (next < 0 && errno == ENOENT && make) {
            // Another process may make it at the same moment: then its folder serves as well.
            if (::mkdirat(folder.get(), name, 0777) != 0 && errno != EEXIST) return -errno;
            next = step();
        }
        if (next < 0) return -errno;
        folder = Fd(next);
    }
    return 0;
}

int write_all(int fd, ByteView bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return -errno;
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return 0;
}

StoredFile open_regular(const Fd& folder, const std::string& name)
{
    // Not blocking: a person may have left a pipe there, whose open would wait for a writer.
    Fd fd(::openat(folder.get(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!fd.is_open()) return {-errno, {}, 0};
    struct stat status {};
    if (::fstat(fd.get(), &status) != 0) return {-errno, {}, 0};
    if (S_ISDIR(status.st_mode)) return {-EISDIR, {}, 0};
    if (!S_ISREG(status.st_mode)) return {-EIO, {}, 0};
    return {0, std::move(fd), static_cast<std::uint64_t>(status.st_size)};
}

StoredValue read_whole(StoredFile file)
{
    if (file.error != 0) return {file.error, {}};
    if (file.size > kLongestValue) return {-EFBIG, {}};
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

// Writes the value beside its place and renames it into it.
int replace(const Fd& temporaries, const Fd& folder, const std::string& name, ByteView bytes)
{
    std::string beside;
    Fd file;
    do {
        beside = next_name();
        file = Fd(::openat(temporaries.get(), beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    } while (!file.is_open() && errno == EEXIST);
    if (!file.is_open()) return -errno;
    int error = write_all(file.get(), bytes);
    if (error == 0 && ::renameat(temporaries.get(), beside.c_str(), folder.get(), name.c_str()) != 0) error = -errno;
    if (error != 0) ::unlinkat(temporaries.get(), beside.c_str(), 0);
    return error;
}

enum class Folder { fresh, filled, unusable };

Folder look_at(const std::filesystem::path& folder, int& error)
{
    DIR* entries = ::opendir(folder.c_str());
    error = entries == nullptr ? -errno : 0;
    if (entries == nullptr) return error == -ENOENT ? Folder::fresh : Folder::unusable;
    Folder state = Folder::fresh;
    while (const dirent* entry = state == Folder::fresh ? ::readdir(entries) : nullptr) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") state = Folder::filled;
    }
    ::closedir(entries);
    return state;
}

}  // namespace

StateStore::StateStore(std::filesystem::path root, Complaints& complaints)
    : root_(std::move(root)), complaints_(complaints)
{
    if (!root_.has_filename()) root_ = root_.parent_path();  // "state/": the build beside needs the last name
}

bool StateStore::prepare(const std::function<bool(StateStore& fresh)>& fill)
{
    if (root_.empty()) {
        broken_ = true;  // whoever had no place to name has said so
        return false;
    }
    int error = 0;
    const Folder state = look_at(root_, error);
    if (state == Folder::filled) return true;
    if (state == Folder::unusable) {
        broken_ = true;
        complain("", error);
        return false;
    }

    std::error_code failed;
    const std::filesystem::path place = std::filesystem::weakly_canonical(root_, failed);  // a link stays a link
    if (!failed) root_ = place;
    std::filesystem::create_directories(root_.parent_path(), failed);  // when it fails, so does the next step
    std::filesystem::path beside;
    bool made = false;
    do {
        beside = root_.parent_path() / ("." + root_.filename().string() + "-" + next_name());
        made = ::mkdir(beside.c_str(), 0777) == 0;
    } while (!made && errno == EEXIST);
    error = made ? 0 : -errno;
    StateStore fresh(beside, complaints_);
    if (made && !fill(fresh)) {
        broken_ = true;  // and `fresh` has complained
    } else if (made && ::rename(beside.c_str(), root_.c_str()) == 0) {
        return true;
    } else if (made) {
        error = -errno;
    }
    if (made) std::filesystem::remove_all(beside, failed);
    if (error == -ENOTEMPTY || error == -EEXIST) return true;  // another modem has filled it meanwhile
    if (error != 0) {
        broken_ = true;
        complain("", error);
    }
    return !broken_;
}

StoredValue StateStore::read(std::string_view name)
{
    const std::vector<std::string> parts = split(name);
    Fd folder;
    if (open_folder("", false, folder) != 0) return {-EIO, {}};
    const int error = descend(folder, parts, 1, false);
    if (error != 0) return {error == -ENOENT ? error : complain(name, error), {}};
    StoredValue value = read_whole(open_regular(folder, parts.back()));
    if (value.error != 0 && value.error != -ENOENT) value.error = complain(name, value.error);
    return value;
}

int StateStore::write(std::string_view name, ByteView bytes)
{
    const int error = write_in("", split(name), bytes);
    return error == 0 || error == -EIO || error == -ENOSPC ? error : complain(name, error);
}

int StateStore::remove(std::string_view name)
{
    const int error = remove_in("", split(name));
    return error == 0 || error == -EIO || error == -ENOENT ? error : complain(name, error);
}

StoredFile StateStore::open_in(std::string_view base, const std::vector<std::string>& parts)
{
    Fd folder;
    const int error = open_folder(base, false, folder);
    if (error != 0) return {error, {}, 0};
    const int lost = descend(folder, parts, 1, false);
    if (lost != 0) return {judge(base, parts, lost), {}, 0};
    StoredFile file = open_regular(folder, parts.back());
    if (file.error != 0) file.error = judge(base, parts, file.error);
    return file;
}

int StateStore::write_in(std::string_view base, const std::vector<std::string>& parts, ByteView bytes)
{
    Fd folder;
    Fd temporaries;
    int error = open_folder(base, true, folder);
    if (error == 0) error = open_folder(kTemporaries, true, temporaries);
    if (error != 0) return error;
    error = descend(folder, parts, 1, true);
    return judge(base, parts, error != 0 ? error : replace(temporaries, folder, parts.back(), bytes));
}

int StateStore::remove_in(std::string_view base, const std::vector<std::string>& parts)
{
    Fd folder;
    const int error = open_folder(base, false, folder);
    if (error != 0) return error;
    int result = descend(folder, parts, 1, false);
    if (result == 0 && ::unlinkat(folder.get(), parts.back().c_str(), 0) != 0) result = -errno;
    return judge(base, parts, result);
}

// A folder of the store itself. What is wrong with it is never the client's doing.
int StateStore::open_folder(std::string_view base, bool make, Fd& folder)
{
    if (broken_) return -EIO;
    folder = Fd(::open(root_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!folder.is_open()) return complain("", -errno);
    const int error = descend(folder, split(base), 0, make);
    return error == 0 || error == -ENOENT ? error : complain(base, error);
}

int StateStore::complain(std::string_view name, int error)
{
    std::string line = root_.string();
    if (!name.empty()) line.append("/").append(name);
    complaints_.say(printable(line) + ": " + error_text(error));
    return -EIO;
}

// What a client may hear of trouble within its tree; all that isn't its own doing is -EIO and a complaint.
int StateStore::judge(std::string_view base, const std::vector<std::string>& parts, int error)
{
    switch (-error) {
    case 0:
    case ENOENT:
    case ENOTDIR:
    case EISDIR:
    case EINVAL:
    case ENOSPC: return error;
    case ELOOP:
    case ENAMETOOLONG: return -EINVAL;
    case EDQUOT: return -ENOSPC;
    default: break;
    }
    std::string name(base);
    for (const std::string& part : parts) name.append(name.empty() ? "" : "/").append(part);
    return complain(name, error);
}

}  // namespace rbk::sim
