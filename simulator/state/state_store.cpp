#include "simulator/state/state_store.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <system_error>

#include "simulator/base/printable.h"

namespace rbk::sim {
namespace {

constexpr char kTemporaries[] = "tmp";
// In a root without content: a folder for each build that is under way, and the one that was taken, `whole`.
constexpr char kUnfinished[] = ".new";
constexpr char kWhole[] = "whole";
constexpr char kContent[] = "content";                       // within a build
constexpr std::uint64_t kLongestValue = 16UL * 1024 * 1024;  // far above what a modem keeps in one

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

std::atomic<unsigned> names_taken = 0;

// A name for something new. Whoever makes it goes on to the next one where it is taken: a killed process may have had the
// same number, and where two containers share the directory a living one may have it.
std::string next_name()
{
    return std::to_string(::getpid()) + "-" + std::to_string(++names_taken);
}

// Whether a process that no longer lives has left what has this name, which is one of next_name().
bool is_left_over(const std::string& name)
{
    int pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    if (error != std::errc{} || pid <= 0 || *end != '-') return false;
    if (end[1] == '\0' || std::string_view(end + 1).find_first_not_of("0123456789") != std::string_view::npos)
        return false;
    if (pid == ::getpid()) return names_taken == 0;
    return ::kill(pid, 0) != 0 && errno == ESRCH;
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

struct Names {
    int error = 0;
    std::vector<std::string> names;
};

Names names_in(const std::filesystem::path& folder)
{
    DIR* entries = ::opendir(folder.c_str());
    if (entries == nullptr) return {-errno, {}};
    Names found;
    errno = 0;
    while (const dirent* entry = ::readdir(entries)) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") found.names.emplace_back(name);
    }
    found.error = -errno;
    ::closedir(entries);
    return found;
}

bool has_content(const Names& root)
{
    return std::any_of(root.names.begin(), root.names.end(), [](const std::string& name) {
        return name != kUnfinished && name != "lost+found";  // a new volume's own
    });
}

// The folder and those above it. `failed` is the one that can't be made.
int make_folders(const std::filesystem::path& folder, std::filesystem::path& failed)
{
    const auto make = [&] { return ::mkdir(folder.c_str(), 0777) == 0 || errno == EEXIST ? 0 : -errno; };
    int error = make();
    if (error == -ENOENT && folder.has_relative_path() && folder.has_parent_path()) {
        if (const int above = make_folders(folder.parent_path(), failed)) return above;
        error = make();
    }
    if (error != 0) failed = folder;
    return error;
}

// Makes a new folder in `folder` and gives its path; empty, with errno set, when that fails.
std::filesystem::path make_new_folder(const std::filesystem::path& folder)
{
    std::filesystem::path made;
    int result = 0;
    do {
        made = folder / next_name();
        result = ::mkdir(made.c_str(), 0777);
    } while (result != 0 && errno == EEXIST);
    return result == 0 ? made : std::filesystem::path{};
}

}  // namespace

StateStore::StateStore(std::filesystem::path root, Complaints& complaints)
    : root_(std::move(root)), shown_(root_.string()), complaints_(complaints)
{
}

// ---- A fresh root ----
//
// The content is built within the root, which may be all that the process can write to (a volume of its own), in a folder
// that no other process uses, .new/PID-N. One rename takes a build, and refuses all others: .new/whole is there. What it
// holds is then moved to the root, entry by entry, by whoever finds it there, so that a kill at any moment is made good
// by the next start. At last .new goes away as a whole, and with it builds that came too late: none of them can be taken
// any more, for the name .new that their renames go through is gone, or is another folder.

bool StateStore::prepare(const std::function<bool(StateStore& fresh)>& fill)
{
    if (root_.empty()) {
        broken_ = true;  // whoever had no place to name has said so
        return false;
    }
    Names there = names_in(root_);
    if (there.error == -ENOENT) {
        std::error_code failure;
        const std::filesystem::path place = std::filesystem::weakly_canonical(root_, failure);  // a link stays a link
        std::filesystem::path failed;
        const int error = make_folders(failure ? root_ : place, failed);
        if (error != 0) return give_up(failed, error);
        there = names_in(root_);
    }
    if (there.error != 0) return give_up(root_, there.error);
    // Where the store makes, moves and removes what is its own, a person's link would lead it to what isn't.
    for (const char* own : {kUnfinished, kTemporaries}) {
        if (std::error_code ignored; std::filesystem::is_symlink(root_ / own, ignored))
            return give_up(root_ / own, -ENOTDIR);
    }
    if (!has_content(there)) return build(fill) && take_whole();
    if (std::find(there.names.begin(), there.names.end(), kUnfinished) != there.names.end()) return take_whole();
    sweep();
    return true;
}

// False when no build can be had. True doesn't tell whose it is.
bool StateStore::build(const std::function<bool(StateStore& fresh)>& fill)
{
    const std::filesystem::path unfinished = root_ / kUnfinished;
    std::filesystem::path own;
    do {
        if (::mkdir(unfinished.c_str(), 0777) != 0 && errno != EEXIST) return give_up(root_, -errno);
        own = make_new_folder(unfinished);
    } while (own.empty() && errno == ENOENT);  // another start has just done with .new
    if (own.empty()) return give_up(root_, -errno);
    // Looked at again, now that this build can go nowhere but into the .new that it stands in: while the root is without
    // content, no build has been taken from there.
    if (::access((unfinished / kWhole).c_str(), F_OK) == 0 || has_content(names_in(root_))) {
        ::rmdir(own.c_str());
        return true;
    }

    std::vector<std::string> lines;
    Complaints aside([&lines](const std::string& line) { lines.push_back(line); });
    StateStore fresh(own / kContent, aside);
    fresh.shown_ = shown_;
    fresh.filling_ = true;
    int error = ::mkdir(fresh.root_.c_str(), 0777) == 0 ? 0 : -errno;
    const bool filled = error == 0 && fill(fresh);
    if (filled && ::rename(own.c_str(), (unfinished / kWhole).c_str()) == 0) return true;
    if (filled) error = -errno;

    const bool too_late = error == -ENOTEMPTY || error == -EEXIST || ::access(own.c_str(), F_OK) != 0;
    std::error_code ignored;
    std::filesystem::remove_all(own, ignored);
    if (too_late) return true;
    ::rmdir(unfinished.c_str());
    if (error != 0) return give_up(root_, error);
    broken_ = true;
    for (const std::string& line : lines) complaints_.say(line);
    return false;
}

bool StateStore::take_whole()
{
    const std::filesystem::path unfinished = root_ / kUnfinished;
    const std::filesystem::path content = unfinished / kWhole / kContent;
    const Names built = names_in(content);
    // Not found: another start has moved all of it, and .new is gone. Anything else must not pass for an empty build.
    if (built.error != 0 && built.error != -ENOENT) return give_up(content, built.error);
    for (const std::string& name : built.names) {
        if (::rename((content / name).c_str(), (root_ / name).c_str()) == 0) continue;
        // Another start has been quicker, or a person, and what they have put there stays.
        if (errno != ENOENT && errno != ENOTEMPTY && errno != EEXIST && errno != ENOTDIR && errno != EISDIR) {
            return give_up(root_ / name, -errno);
        }
    }
    const std::filesystem::path temporaries = root_ / kTemporaries;
    int error = ::mkdir(temporaries.c_str(), 0777) == 0 || errno == EEXIST ? 0 : -errno;
    const std::filesystem::path away = error == 0 ? make_new_folder(temporaries) : "";
    if (error == 0 && (away.empty() || ::rename(unfinished.c_str(), away.c_str()) != 0)) error = -errno;
    std::error_code ignored;
    if (!away.empty()) std::filesystem::remove_all(away, ignored);
    // The content is whole without that; the next start tries again.
    if (error != 0 && error != -ENOENT) complaints_.say(printable(unfinished.string()) + ": " + file_error_text(error));
    return true;
}

// What killed processes have left among the temporaries.
void StateStore::sweep()
{
    const std::filesystem::path temporaries = root_ / kTemporaries;
    for (const std::string& name : names_in(temporaries).names) {
        std::error_code ignored;
        if (is_left_over(name)) std::filesystem::remove_all(temporaries / name, ignored);
    }
}

bool StateStore::give_up(const std::filesystem::path& place, int error)
{
    broken_ = true;
    complaints_.say(printable(place.string()) + ": " + file_error_text(error));
    return false;
}

// ---- Values ----

StoredValue StateStore::read(std::string_view name)
{
    const std::vector<std::string> parts = split(name);
    Fd folder;
    if (open_folder("", false, folder) != 0) return {-EIO, {}};
    const int error = descend(folder, parts, 1, false);
    if (error != 0) return {error == -ENOENT ? error : complain(name, error), {}};
    StoredValue value = read_whole(open_regular(folder.get(), parts.back(), O_NOFOLLOW), kLongestValue);
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
    StoredFile file = open_regular(folder.get(), parts.back(), O_NOFOLLOW);
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
    if (error == 0) {
        error = replace(temporaries, folder, parts.back(), bytes);
        // A modem of another container, which doesn't see this process, may have swept the new file away.
        if (error == -ENOENT) error = replace(temporaries, folder, parts.back(), bytes);
    }
    return judge(base, parts, error);
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
    std::string line = shown_;
    if (!name.empty()) line.append("/").append(name);
    complaints_.say(printable(line) + ": " + file_error_text(error));
    return -EIO;
}

// What a client may hear of trouble within its tree; all that isn't its own doing is -EIO and a complaint.
int StateStore::judge(std::string_view base, const std::vector<std::string>& parts, int error)
{
    if (error == 0) return 0;
    switch (filling_ ? EIO : -error) {
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
