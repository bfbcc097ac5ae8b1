#include "simulator/state/efs.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace rbk::sim {

std::optional<EfsPlace> EfsPlace::parse(std::uint32_t sub, ByteView path)
{
    const auto end = std::find(path.begin(), path.end(), std::uint8_t{0});
    std::string_view rest(reinterpret_cast<const char*>(path.data()), static_cast<std::size_t>(end - path.begin()));
    // A folder's path ("/nv/") names no file; to a modem it is one that lacks its last part.
    if (sub > 1 || rest.empty() || rest.back() == '/') return std::nullopt;
    EfsPlace place{sub, {}};
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find('/'), rest.size());
        const std::string_view part = rest.substr(0, length);
        if (part == "..") return std::nullopt;
        if (!part.empty() && part != ".") place.parts.emplace_back(part);
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    if (place.parts.empty()) return std::nullopt;
    return place;
}

Efs::ReadChunk Efs::read(ClientId client, const EfsPlace& place, std::uint32_t offset, std::span<std::uint8_t> room)
{
    auto open = std::find_if(reads_.begin(), reads_.end(),
                             [&](const OpenRead& read) { return read.client == client && read.place == place; });
    if (open != reads_.end() && offset == 0) {
        reads_.erase(open);
        open = reads_.end();
    }
    if (open == reads_.end()) {
        StoredFile file = store_.open_in(place.tree(), place.parts);
        if (file.error != 0) return {file.error, 0, 0};
        make_room_for_read(client);
        reads_.push_front({client, place, std::move(file.fd), file.size});
        open = reads_.begin();
    }

    ReadChunk chunk{0, open->size, 0};
    if (offset < open->size) {
        const std::size_t wanted = std::min<std::uint64_t>(room.size(), open->size - offset);
        const ssize_t got = ::pread(open->fd.get(), room.data(), wanted, offset);
        if (got < 0) chunk.error = -EIO;
        chunk.size = got < 0 ? 0 : static_cast<std::size_t>(got);
    }
    if (offset + chunk.size >= open->size || chunk.error != 0) reads_.erase(open);
    return chunk;
}

void Efs::make_room_for_read(ClientId client)
{
    const auto is_own = [&](const OpenRead& read) { return read.client == client; };
    if (std::count_if(reads_.begin(), reads_.end(), is_own) == kOpenReads) {
        reads_.erase(std::prev(std::find_if(reads_.rbegin(), reads_.rend(), is_own).base()));
    } else if (reads_.size() == kOpenReadsOfAll) {
        reads_.pop_back();
    }
}

int Efs::write(ClientId client, const WriteChunk& chunk)
{
    if (chunk.bytes.empty() || chunk.total == 0) return -EINVAL;
    if (chunk.total > kLongestEfsFile) return -ENOSPC;
    OpenWrites& writes = writes_[client];
    std::uint32_t instance = chunk.instance;
    if (instance == kNewInstance) {
        if (chunk.offset != 0 || chunk.bytes.size() > chunk.total) return -EINVAL;
        const int opened = open_instance(writes, chunk);
        if (opened < 0) return opened;
        instance = static_cast<std::uint32_t>(opened);
    }
    const auto found = writes.find(instance);
    if (found == writes.end()) return -EINVAL;
    OpenWrite& open = found->second;
    if (open.place.sub != chunk.sub || !std::ranges::equal(open.path, chunk.path) || open.total != chunk.total ||
        chunk.offset != open.received.size() || chunk.bytes.size() > open.total - open.received.size()) {
        return -EINVAL;
    }

    open.received.insert(open.received.end(), chunk.bytes.begin(), chunk.bytes.end());
    if (open.received.size() < open.total) return static_cast<int>(instance);
    const int error = store_.write_in(open.place.tree(), open.place.parts, open.received);
    writes.erase(found);
    return error != 0 ? error : static_cast<int>(instance);
}

int Efs::open_instance(OpenWrites& writes, const WriteChunk& chunk)
{
    std::optional<EfsPlace> place = EfsPlace::parse(chunk.sub, chunk.path);
    if (!place) return -EINVAL;
    for (std::uint32_t instance = 0; instance < kOpenInstances; ++instance) {
        const auto [open, made] = writes.try_emplace(instance);
        if (!made) continue;
        open->second = {*std::move(place), Bytes(chunk.path.begin(), chunk.path.end()), chunk.total, {}};
        open->second.received.reserve(chunk.total);
        return static_cast<int>(instance);
    }
    return -EMFILE;
}

void Efs::tell_holdings(ClientId client, Holdings& held) const
{
    held.efs_reads += static_cast<std::size_t>(
        std::ranges::count_if(reads_, [&](const OpenRead& read) { return read.client == client; }));
    const auto writes = writes_.find(client);
    if (writes != writes_.end()) held.efs_writes += writes->second.size();
}

void Efs::client_gone(ClientId client)
{
    std::erase_if(reads_, [&](const OpenRead& read) { return read.client == client; });
    writes_.erase(client);
}

}  // namespace rbk::sim
