// The modem's memory: one small file a value under the state directory.
//
// A value is written beside its place, in the store's own folder `tmp`, and renamed into it: a kill at any moment leaves
// it whole, old or new, and two modems on one directory don't lose each other's values. People look at the files with
// ls and xxd and put content in with cp, so whatever lies there is foreign: links are not followed, folders and devices
// are no values.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "link/bytes.h"
#include "simulator/base/complaints.h"
#include "simulator/base/fd.h"
#include "simulator/state/stored_file.h"

namespace rbk::sim {

class StateStore {
 public:
    // Nothing is opened or read here. `complaints` hears of each file that can't be read or written.
    StateStore(std::filesystem::path root, Complaints& complaints);

    // Fills a missing or empty root with what `fill` puts into a store of its own. When another process was quicker, its
    // content stays. False, after a complaint, when there is no root to work with; from then on every operation answers
    // -EIO. `fill` gives up at the first failure, which has been told.
    bool prepare(const std::function<bool(StateStore& fresh)>& fill);
    bool is_usable() const { return !broken_; }

    // A value by its name ("nv/0/550"). -ENOENT when there is none; -EIO, after a complaint, for any other trouble.
    StoredValue read(std::string_view name);
    int write(std::string_view name, ByteView bytes);
    int remove(std::string_view name);

    // The same within a tree whose names a client chooses: `base` is a folder of the store ("efs/0"), `parts` the way
    // from there to the file. Errors that the client's own names cause come back as they are: -ENOENT, -ENOTDIR,
    // -EISDIR, -EINVAL (a link, a name too long), -ENOSPC. A write makes the folders that are missing.
    StoredFile open_in(std::string_view base, const std::vector<std::string>& parts);
    int write_in(std::string_view base, const std::vector<std::string>& parts, ByteView bytes);
    int remove_in(std::string_view base, const std::vector<std::string>& parts);

 private:
    bool build(const std::function<bool(StateStore& fresh)>& fill);
    bool take_whole();
    void sweep();
    bool give_up(const std::filesystem::path& place, int error);

    int open_folder(std::string_view base, bool make, Fd& folder);
    int complain(std::string_view name, int error);
    int judge(std::string_view base, const std::vector<std::string>& parts, int error);

    std::filesystem::path root_;
    std::string shown_;  // the root's name in complaints
    Complaints& complaints_;
    bool broken_ = false;
    bool filling_ = false;  // there is no client to hear of any error
};

}  // namespace rbk::sim
