#include "platform/linux/property_store.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <system_error>

#include "platform/linux/environment.h"

namespace rbk::platform {
namespace {

namespace fs = std::filesystem;

std::string error_line(const fs::path& path, int error)
{
    return path.string() + ": " + std::generic_category().message(error);
}

bool is_letter_or_digit(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// What is wrong with a name; empty when nothing is.
std::string name_problem(std::string_view name)
{
    const auto fits = [](char c) {
        return is_letter_or_digit(c) || std::string_view(".-_@:").find(c) != std::string_view::npos;
    };
    if (name.size() > kPropertyNameMax)
        return "a property's name has at most " + std::to_string(kPropertyNameMax) + " bytes, not " +
               std::to_string(name.size());
    if (name.empty() || !is_letter_or_digit(name.front()) || !std::all_of(name.begin(), name.end(), fits))
        return std::string(name) + ": a property's name has letters, digits and .-_@: behind a letter or a digit";
    return {};
}

bool survives_boot(std::string_view name)
{
    return name.starts_with("persist.") || name.starts_with("ro.");
}

// Writes a value into a new file in `directory` and returns its path; empty, with errno set, when that fails.
fs::path write_beside(const fs::path& directory, std::string_view value)
{
    static std::atomic<unsigned> last = 0;
    fs::path path;
    int fd = -1;
    do {  // a killed process may have had the same number, and where two containers share the store a living one has it
        path = directory / (".new." + std::to_string(getpid()) + "-" + std::to_string(++last));
        fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (fd < 0 && errno == EEXIST);
    if (fd < 0) return {};
    const std::string text = std::string(value) + "\n";
    const ssize_t written = write(fd, text.data(), text.size());
    int error = written < 0 ? errno : written == static_cast<ssize_t>(text.size()) ? 0 : ENOSPC;
    if (close(fd) != 0 && error == 0) error = errno;
    if (error == 0) return path;
    unlink(path.c_str());
    errno = error;
    return {};
}

}  // namespace

PropertyStore PropertyStore::of_home()
{
    std::string problem;
    const fs::path home = rbk_home(problem);
    PropertyStore store(home.empty() ? home : home / "properties");
    if (home.empty()) store.no_home_ = problem;
    return store;
}

fs::path PropertyStore::this_boot() const
{
    std::string id;
    std::ifstream(boot_id_file_) >> id;
    return root_ / ("boot-" + (id.empty() ? "unknown" : id));
}

fs::path PropertyStore::file_of(std::string_view name) const
{
    return (survives_boot(name) ? kept() : this_boot()) / name;
}

// The directories of the store, and those of an earlier boot away.
std::string PropertyStore::make_directories() const
{
    const fs::path current = this_boot();
    std::error_code error;
    fs::create_directories(kept(), error);
    if (error) return error_line(root_, error.value());
    const bool first_of_boot = fs::create_directory(current, error);
    if (error) return error_line(root_, error.value());
    if (!first_of_boot) return {};
    for (fs::directory_iterator entry(root_, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code ignored;  // another process may be at the same
        if (entry->path() != current && entry->path().filename().string().starts_with("boot-"))
            fs::remove_all(entry->path(), ignored);
    }
    return {};
}

PropertyStore::Reading PropertyStore::get(std::string_view name) const
{
    if (root_.empty()) return {std::nullopt, no_home_};
    if (std::string problem = name_problem(name); !problem.empty()) return {std::nullopt, problem};

    const fs::path file = file_of(name);
    const int fd = open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    char room[kPropertyValueMax + 2];  // the line feed, and one byte that tells of more
    const ssize_t length = fd < 0 ? -1 : read(fd, room, sizeof room);
    const int error = errno;
    if (fd >= 0) close(fd);
    if (length < 0) {
        if (error == ENOENT) return {};
        // A home that is broken as a whole is one problem, however many names are asked for.
        const bool directory_sound = access(file.parent_path().c_str(), X_OK) == 0;
        return {std::nullopt, error_line(directory_sound ? file : root_, error)};
    }
    std::string value(room, static_cast<std::size_t>(length));
    if (value.ends_with('\n')) value.pop_back();
    if (value.size() > kPropertyValueMax)
        return {std::nullopt, file.string() + ": expected at most " + std::to_string(kPropertyValueMax) + " bytes"};
    value.resize(std::min(value.find('\0'), value.size()));
    return {value, {}};
}

std::string PropertyStore::set(std::string_view name, std::string_view value) const
{
    if (root_.empty()) return no_home_;
    if (std::string problem = name_problem(name); !problem.empty()) return problem;
    if (value.size() > kPropertyValueMax)
        return std::string(name) + ": a value has at most " + std::to_string(kPropertyValueMax) + " bytes, not " +
               std::to_string(value.size());
    if (std::string problem = make_directories(); !problem.empty()) return problem;

    const fs::path file = file_of(name);
    // In the boot's directory for kept names too: what a kill leaves behind goes with it.
    const fs::path beside = write_beside(this_boot(), value);
    if (beside.empty()) return error_line(root_, errno);
    if (name.starts_with("ro.")) {
        // A link refuses a name that is there already, so that of two processes one alone sets it.
        const int error = link(beside.c_str(), file.c_str()) == 0 ? 0 : errno;
        unlink(beside.c_str());
        if (error == EEXIST) return std::string(name) + " is set already, and can be set once";
        return error == 0 ? std::string() : error_line(file, error);
    }
    if (rename(beside.c_str(), file.c_str()) == 0) return {};
    const int error = errno;
    unlink(beside.c_str());
    return error_line(file, error);
}

std::string PropertyStore::unset(std::string_view name) const
{
    if (root_.empty()) return no_home_;
    if (std::string problem = name_problem(name); !problem.empty()) return problem;
    const fs::path file = file_of(name);
    if (unlink(file.c_str()) == 0 || errno == ENOENT) return {};
    return error_line(file, errno);
}

PropertyStore::Listing PropertyStore::list() const
{
    if (root_.empty()) return {{}, no_home_};
    Listing listing;
    for (const fs::path& directory : {kept(), this_boot()}) {
        std::error_code error;
        for (fs::directory_iterator entry(directory, error), end; !error && entry != end; entry.increment(error)) {
            const std::string name = entry->path().filename();
            if (name.starts_with('.')) continue;  // being written
            const Reading reading = get(name);
            if (reading.value) listing.values[name] = *reading.value;
            if (listing.problem.empty()) listing.problem = reading.problem;
        }
        if (error && error.value() != ENOENT && listing.problem.empty())
            listing.problem = error_line(directory, error.value());
    }
    return listing;
}

}  // namespace rbk::platform
