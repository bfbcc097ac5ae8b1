// The modem's files: a real directory tree for each subscription, read and written in chunks.
#pragma once

#include <compare>
#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "link/bytes.h"
#include "simulator/base/client_id.h"
#include "simulator/base/ledger.h"
#include "simulator/state/state_store.h"

namespace rbk::sim {

// A file's place, taken from the bytes that a client sent.
struct EfsPlace {
    std::uint32_t sub = 0;
    std::vector<std::string> parts;  // never empty, without "", "." and ".."

    // The path ends at its first zero byte. Empty when there is no file that it could mean.
    static std::optional<EfsPlace> parse(std::uint32_t sub, ByteView path);
    std::string tree() const { return "efs/" + std::to_string(sub); }
    auto operator<=>(const EfsPlace&) const = default;
};

// Bytes of a path, and of the largest file that a client may write.
inline constexpr std::size_t kLongestEfsPath = 103;
inline constexpr std::size_t kLongestEfsFile = 102410;

// Transfers of all clients. Errors are negative numbers of <errno.h>.
class Efs {
 public:
    // Files that stay open between the chunks of their readers, of all clients; the oldest makes room.
    static constexpr std::size_t kOpenReadsOfAll = 32;

    explicit Efs(StateStore& store) : store_(store) {}

    struct ReadChunk {
        int error = 0;
        std::uint64_t file_size = 0;
        std::size_t size = 0;  // bytes put into `room`
    };
    // Reads from `offset` on into `room`. A client that goes on behind offset 0 gets the file as it was at its offset 0,
    // though others may have replaced it meanwhile.
    ReadChunk read(ClientId client, const EfsPlace& place, std::uint32_t offset, std::span<std::uint8_t> room);

    struct WriteChunk {
        std::uint32_t sub = 0;
        ByteView path;               // every chunk of a file spells it alike
        std::uint32_t instance = 0;  // kNewInstance, or what the first chunk was answered with
        std::uint32_t total = 0;     // bytes of the whole file
        std::uint32_t offset = 0;
        ByteView bytes;
    };
    static constexpr std::uint32_t kNewInstance = 255;
    // Takes one chunk; the file is stored with its last one. Result: the instance for the next chunk, 0 or above, or the
    // error. A refused chunk leaves its instance as it was, a file that can't be stored ends it.
    int write(ClientId client, const WriteChunk& chunk);

    int remove(const EfsPlace& place) { return store_.remove_in(place.tree(), place.parts); }

    // Its transfers under way.
    void tell_holdings(ClientId client, Holdings& held) const;
    // Its transfers end, and what it hasn't sent whole is forgotten.
    void client_gone(ClientId client);

 private:
    static constexpr std::uint32_t kOpenInstances = 8;  // of one client
    static constexpr std::ptrdiff_t kOpenReads = 8;     // of one client; the oldest makes room

    struct OpenRead {
        ClientId client = 0;
        EfsPlace place;
        Fd fd;
        std::uint64_t size = 0;
    };
    struct OpenWrite {
        EfsPlace place;
        Bytes path;  // as the client spells the place
        std::uint32_t total = 0;
        Bytes received;
    };
    using OpenWrites = std::map<std::uint32_t, OpenWrite>;  // by instance

    void make_room_for_read(ClientId client);
    static int open_instance(OpenWrites& writes, const WriteChunk& chunk);

    StateStore& store_;
    std::list<OpenRead> reads_;  // the latest one first
    std::map<ClientId, OpenWrites> writes_;
};

}  // namespace rbk::sim
