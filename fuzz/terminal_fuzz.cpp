// Whatever is typed into the AT terminal, in whatever pieces: the next command is answered.
//
// An input is a row of pieces, each with its length before it.
#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <cstdlib>

#include "fuzz/input.h"
#include "fuzz/needs_terminals.h"
#include "fuzz/scratch.h"
#include "simulator/carriers/at_terminal.h"

using namespace rbk;

namespace {

class Session {
 public:
    Session(const std::string& path, fuzz::Input input) : input_(input)
    {
        std::string error;
        terminal_ = sim::AtTerminal::open(path, {{"AT", "OK"}, {"ATI", "Simulated modem\nOK"}}, error);
        typist_ = sim::Fd(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
        if (terminal_ == nullptr || !typist_.is_open()) std::abort();
        terminal_->serve(loop_);
        loop_.watch(typist_.get(), EPOLLIN, [this](std::uint32_t) { read_answers(); });
    }

    void run()
    {
        loop_.after({}, [this] { take_turn(); });
        loop_.run();
    }

 private:
    static constexpr std::chrono::milliseconds kPatience{100};  // a full queue may have lost what was typed
    static constexpr int kLongestWait = 100;                    // of those

    void take_turn()
    {
        if (!input_.empty()) {
            type(input_.take(input_.byte()));
            loop_.after({}, [this] { take_turn(); });
            return;
        }
        if (++waited_ > kLongestWait) std::abort();
        said_.clear();
        type({reinterpret_cast<const std::uint8_t*>("\rAT\r"), 4});
        loop_.after(kPatience, [this] { take_turn(); });
    }

    void read_answers()
    {
        char room[4096];
        const ssize_t size = ::read(typist_.get(), room, sizeof room);
        if (size > 0) said_.append(room, static_cast<std::size_t>(size));
        if (waited_ > 0 && said_.ends_with("\r\nOK\r\n")) loop_.stop();
    }

    void type(ByteView bytes) const
    {
        [[maybe_unused]] const ssize_t typed = ::write(typist_.get(), bytes.data(), bytes.size());
    }

    fuzz::Input input_;
    sim::EventLoop loop_;  // goes last
    std::unique_ptr<sim::AtTerminal> terminal_;
    sim::Fd typist_;
    std::string said_;
    int waited_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzz::ScratchFolder folder;
    Session(folder.path() / "at", {data, size}).run();
    return 0;
}
