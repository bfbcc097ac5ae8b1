// Whatever is written to the QMUX terminal, in whatever pieces: what comes back are whole frames, and the control service
// still tells its versions afterwards.
//
// An input is a row of steps. The first byte of each is one of the numbers of Step, or the length of a piece that is
// written as it is. Each input has a modem and a state directory of its own.
#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <cstdlib>

#include "fuzz/input.h"
#include "fuzz/needs_terminals.h"
#include "fuzz/scratch.h"
#include "simulator/carriers/qmux_terminal.h"
#include "simulator/modem/modem.h"

using namespace rbk;

namespace {

enum Step : std::uint8_t {
    kFrame = 0xFF,  // service, client id and message in a frame with lengths that fit
    kDeaf = 0xFE,   // nothing is read from here on
};

constexpr std::uint8_t kTransaction = 0xA5;  // of the last question

// Everything at once, few ids, and a request that takes its service away.
sim::Scenario make_scenario()
{
    sim::Scenario scenario = sim::empty_scenario();
    scenario.services = {"nas", "uim", "sar", "pdc"};
    scenario.restart = {};
    scenario.client_ids = 5;
    sim::FaultRule down;
    down.service = "sar";
    down.message = 1;
    down.action = sim::FaultAction::down;
    scenario.faults.push_back(std::move(down));
    for (const sim::ServiceKind& kind : sim::service_kinds()) {
        if (kind.read != nullptr) scenario.settings.emplace(kind.name, kind.read(nullptr));
    }
    return scenario;
}

class Session {
 public:
    Session(const std::filesystem::path& folder, fuzz::Input input)
        : input_(input), modem_(make_scenario(), folder / "state", complaints_, {64UL * 1024, kLongestUnread})
    {
        std::string error;
        carrier_ = sim::QmuxTerminal::open(folder / "qmi", error, std::chrono::milliseconds(5));
        host_ = sim::Fd(::open((folder / "qmi").c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
        if (carrier_ == nullptr || !host_.is_open()) std::abort();
        carrier_->serve(modem_);
    }

    void run()
    {
        modem_.loop().after({}, [this] { take_turn(); });
        modem_.run();
    }

 private:
    static constexpr std::chrono::milliseconds kPatience{10};  // a full queue may have lost what was asked
    static constexpr std::chrono::milliseconds kLongestUnread{50};
    static constexpr int kLongestWait = 1000;  // of kPatience

    void take_turn()
    {
        if (!input_.empty()) {
            if (!deaf_) read_frames();
            send();
            modem_.loop().after({}, [this] { take_turn(); });
            return;
        }
        if (waited_++ == 0) modem_.loop().watch(host_.get(), EPOLLIN, [this](std::uint32_t) { read_frames(); });
        if (waited_ > kLongestWait) std::abort();  // no answer any more
        constexpr std::uint8_t kVersions[] = {1, 11, 0, 0, 0, 0, 0, kTransaction, 0x21, 0, 0, 0};
        write(kVersions);
        modem_.loop().after(kPatience, [this] { take_turn(); });
    }

    void send()
    {
        const std::uint8_t step = input_.byte();
        if (step == kDeaf) {
            deaf_ = true;
        } else if (step == kFrame) {
            const std::uint8_t service = input_.byte();
            const std::uint8_t client = input_.byte();
            const auto message = input_.number<std::uint16_t>();
            const ByteView tlvs = input_.block();
            Bytes bytes(service == 0 ? 2 : 3);
            append_le(bytes, message);
            append_le(bytes, static_cast<std::uint16_t>(tlvs.size()));
            bytes.insert(bytes.end(), tlvs.begin(), tlvs.end());
            auto head = sim::pack_qmux_head(service, client, bytes.size());
            head[3] = 0;  // from the host
            bytes.insert(bytes.begin(), head.begin(), head.end());
            write(bytes);
        } else {
            write(input_.take(step));
        }
    }

    void read_frames()
    {
        std::uint8_t room[4096];
        const ssize_t size = ::read(host_.get(), room, sizeof room);
        if (size > 0) said_.insert(said_.end(), room, room + size);
        std::size_t at = 0;
        while (said_.size() - at >= 10) {
            const std::uint8_t* frame = &said_[at];
            const std::size_t length = 1UL + load_le<std::uint16_t>(frame + 1);
            if (frame[0] != 1 || frame[3] != 0x80 || length < 12) std::abort();
            if (said_.size() - at < length) break;
            if (waited_ > 0 && frame[4] == 0 && frame[6] == 1 && frame[7] == kTransaction && frame[8] == 0x21) {
                modem_.stop();
            }
            at += length;
        }
        said_.erase(said_.begin(), said_.begin() + static_cast<std::ptrdiff_t>(at));
    }

    void write(ByteView bytes) const
    {
        [[maybe_unused]] const ssize_t written = ::write(host_.get(), bytes.data(), bytes.size());
    }

    fuzz::Input input_;
    sim::Complaints complaints_{[](const std::string&) {}};
    std::unique_ptr<sim::QmuxTerminal> carrier_;
    sim::Modem modem_;
    sim::Fd host_;
    Bytes said_;
    bool deaf_ = false;
    int waited_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::ScratchFolder folder;
    Session(folder.path(), {data, size}).run();
    folder.empty();
    return 0;
}
