#include "simulator/services/nvefs_requests.h"

#include <algorithm>
#include <cerrno>
#include <optional>

#include "simulator/state/nv_limits.h"

namespace rbk::sim {
namespace {

// Offsets in the request record, and in the answer's.
constexpr std::size_t kOp = 0;       // 8-bit
constexpr std::size_t kSub = 1;      // 8-bit
constexpr std::size_t kNvId = 2;     // 16-bit; in an EFS write the instance
constexpr std::size_t kPathLen = 4;  // 8-bit
constexpr std::size_t kPath = 5;
constexpr std::size_t kDataLenAll = 108;
constexpr std::size_t kDataLenSend = 112;
constexpr std::size_t kDataLenCur = 116;
constexpr std::size_t kData = 120;
constexpr std::size_t kDataRoom = 424;

constexpr std::size_t kAnswerLenAll = 4;
constexpr std::size_t kAnswerLenSend = 8;
constexpr std::size_t kAnswerData = 20;

// The legacy read's, request and answer.
constexpr std::size_t kLegacyOp = 0;
constexpr std::size_t kLegacyNvId = 4;
constexpr std::size_t kLegacySub = 8;
constexpr std::size_t kLegacyDataLen = 16;
constexpr std::size_t kLegacyData = 20;
constexpr std::size_t kLegacyDataRoom = 412;

enum Op : std::uint8_t {
    kNvRead = 1,
    kNvWrite = 2,
    kNvDelete = 3,
    kEfsRead = 4,
    kEfsWrite = 5,
    kEfsDelete = 6,
};

std::uint32_t word(ByteView record, std::size_t at)
{
    return peek_le<std::uint32_t>(record, at);
}

// `size` bytes of the record. Where it is shorter they are made in `room`, with zeros behind its end.
ByteView piece(ByteView record, std::size_t at, std::size_t size, Bytes& room)
{
    if (record.size() >= at + size) return record.subspan(at, size);
    room.assign(size, 0);
    if (at < record.size()) std::copy(record.begin() + static_cast<std::ptrdiff_t>(at), record.end(), room.begin());
    return room;
}

// Empty when it is longer than a path may be, or there is none.
ByteView efs_path(ByteView request, Bytes& room)
{
    const std::size_t size = peek_le<std::uint8_t>(request, kPathLen);
    return size > kLongestEfsPath ? ByteView{} : piece(request, kPath, size, room);
}

std::optional<EfsPlace> efs_place(ByteView request)
{
    Bytes room;
    return EfsPlace::parse(peek_le<std::uint8_t>(request, kSub), efs_path(request, room));
}

StoredValue read_item(StateStore& store, std::uint32_t sub, std::uint32_t item)
{
    if (!nv_exists(sub, item)) return {-EINVAL, {}};
    return store.read(nv_name(sub, item));
}

}  // namespace

void NvEfsRequests::run(ClientId client, ByteView request, std::span<std::uint8_t> answer)
{
    std::int32_t result = -EINVAL;
    switch (peek_le<std::uint8_t>(request, kOp)) {
    case kNvRead: result = nv_read(request, answer); break;
    case kNvWrite: result = nv_write(request); break;
    case kNvDelete: result = nv_delete(request); break;
    case kEfsRead: result = efs_read(client, request, answer); break;
    case kEfsWrite: result = efs_write(client, request); break;
    case kEfsDelete: result = efs_delete(request); break;
    default: break;
    }
    store_le(&answer[kNvEfsResultAt], result);
}

void NvEfsRequests::run_legacy_read(ByteView request, std::span<std::uint8_t> answer)
{
    StoredValue value{-EINVAL, {}};
    if (word(request, kLegacyOp) == 1) {
        value = read_item(store_, word(request, kLegacySub), word(request, kLegacyNvId));
    }
    store_le(&answer[kLegacyNvResultAt], value.error);
    store_le(&answer[kLegacyDataLen], static_cast<std::uint32_t>(value.bytes.size()));
    std::copy_n(value.bytes.begin(), std::min(value.bytes.size(), kLegacyDataRoom), answer.begin() + kLegacyData);
}

std::int32_t NvEfsRequests::nv_read(ByteView request, std::span<std::uint8_t> answer)
{
    const StoredValue value =
        read_item(store_, peek_le<std::uint8_t>(request, kSub), peek_le<std::uint16_t>(request, kNvId));
    store_le(&answer[kAnswerLenAll], static_cast<std::uint32_t>(value.bytes.size()));
    std::copy_n(value.bytes.begin(), std::min(value.bytes.size(), kDataRoom), answer.begin() + kAnswerData);
    return value.error;
}

std::int32_t NvEfsRequests::nv_write(ByteView request)
{
    const std::uint32_t sub = peek_le<std::uint8_t>(request, kSub);
    const std::uint32_t item = peek_le<std::uint16_t>(request, kNvId);
    const std::uint32_t size = word(request, kDataLenAll);
    if (!nv_exists(sub, item) || size == 0 || size > kLongestNvItem) return -EINVAL;
    Bytes room;
    return store_.write(nv_name(sub, item), piece(request, kData, size, room));
}

std::int32_t NvEfsRequests::nv_delete(ByteView request)
{
    const std::uint32_t sub = peek_le<std::uint8_t>(request, kSub);
    const std::uint32_t item = peek_le<std::uint16_t>(request, kNvId);
    return nv_exists(sub, item) ? store_.remove(nv_name(sub, item)) : -EINVAL;
}

std::int32_t NvEfsRequests::efs_read(ClientId client, ByteView request, std::span<std::uint8_t> answer)
{
    const std::optional<EfsPlace> place = efs_place(request);
    if (!place) return -EINVAL;
    const Efs::ReadChunk chunk =
        efs_.read(client, *place, word(request, kDataLenCur), answer.subspan(kAnswerData, kDataRoom));
    const std::uint64_t size = std::min<std::uint64_t>(chunk.file_size, UINT32_MAX);
    store_le(&answer[kAnswerLenAll], static_cast<std::uint32_t>(size));
    store_le(&answer[kAnswerLenSend], static_cast<std::uint32_t>(chunk.size));
    return chunk.error;
}

std::int32_t NvEfsRequests::efs_write(ClientId client, ByteView request)
{
    const std::uint32_t size = word(request, kDataLenSend);
    if (size > kDataRoom) return -EINVAL;
    Bytes path_room;
    Bytes data_room;
    return efs_.write(client, {peek_le<std::uint8_t>(request, kSub), efs_path(request, path_room),
                               peek_le<std::uint16_t>(request, kNvId), word(request, kDataLenAll),
                               word(request, kDataLenCur), piece(request, kData, size, data_room)});
}

std::int32_t NvEfsRequests::efs_delete(ByteView request)
{
    const std::optional<EfsPlace> place = efs_place(request);
    return place ? efs_.remove(*place) : -EINVAL;
}

}  // namespace rbk::sim
