// Properties on a host: one file a value, so that people read and write them with what they have.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace rbk::platform {

// Longest name and longest value, bytes.
inline constexpr std::size_t kPropertyNameMax = 255;
inline constexpr std::size_t kPropertyValueMax = 255;

// Keeps `persist.` and `ro.` names under kept/, all others under a directory named after the boot of the host, which
// the first write after another boot replaces. A file holds the value and a line feed; one without the line feed is
// read as well. Names begin with a letter or a digit and hold letters, digits and ".-_@:" alone, so that none leaves
// its directory. A value is written beside its place and renamed, so that a kill leaves it whole, old or new.
//
// Holds nothing between calls: what other processes do is seen at once, and two threads may share a store.
class PropertyStore {
 public:
    // A problem is a line for a person; empty when there is none.
    struct Reading {
        std::optional<std::string> value;
        std::string problem;
    };
    struct Listing {
        std::map<std::string, std::string> values;
        std::string problem;
    };

    explicit PropertyStore(std::filesystem::path root, std::filesystem::path boot_id_file = kBootIdFile)
        : root_(std::move(root)), boot_id_file_(std::move(boot_id_file))
    {
    }
    // The store of this user, under rbk_home().
    static PropertyStore of_home();

    // A name that nobody has set is no problem; one that can't be a name or whose file can't be read is.
    Reading get(std::string_view name) const;
    // These answer with the problem. What stood there stays when there is one; unsetting what isn't set is none.
    std::string set(std::string_view name, std::string_view value) const;
    std::string unset(std::string_view name) const;
    Listing list() const;

 private:
    static constexpr const char* kBootIdFile = "/proc/sys/kernel/random/boot_id";

    std::filesystem::path kept() const { return root_ / "kept"; }
    std::filesystem::path this_boot() const;
    std::filesystem::path file_of(std::string_view name) const;
    std::string make_directories() const;

    std::filesystem::path root_;                           // empty: there is no home, and so nothing is stored
    std::string no_home_ = "no directory for properties";  // why
    std::filesystem::path boot_id_file_;
};

}  // namespace rbk::platform
