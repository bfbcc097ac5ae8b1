// Messages over the link to a modem in another process, against bare round trips of the same bytes.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <semaphore.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <string>

#include "bench/home.h"
#include "bench/ratios.h"
#include "diag_lsm.h"
#include "link/link_socket.h"
#include "velmor_diag_send.h"
#include "velmor_extend_api.h"
#include "velmor_extend_nvefs.h"
#include "velmor_mbn_utils.h"
#include "velmor_utils_cmn.h"

extern char** environ;

namespace {

using rbk::bench::AddRatio;

// ---- A bare peer: sends back what it gets, from another process ----

constexpr std::size_t kEnvelopeDatagram = rbk::link::kAddressSize + rbk::link::kQmiHeadSize + 567;

class Echo {
 public:
    Echo()
    {
        if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends_) != 0) std::abort();
        child_ = ::fork();
        if (child_ == 0) {
            ::close(ends_[0]);
            char bytes[kEnvelopeDatagram];
            for (;;) {
                const ssize_t got = ::recv(ends_[1], bytes, sizeof bytes, 0);
                if (got <= 0) ::_exit(0);
                // As often as the first byte says, and once more: an answer and what is said unasked behind it.
                for (int i = 0; i <= bytes[0]; ++i)
                    if (::send(ends_[1], bytes, static_cast<std::size_t>(got), 0) != got) ::_exit(0);
            }
        }
        ::close(ends_[1]);
    }
    ~Echo()
    {
        ::close(ends_[0]);
        ::waitpid(child_, nullptr, 0);
    }
    void round_trip(char unasked = 0)
    {
        char bytes[kEnvelopeDatagram] = {unasked};
        if (::send(ends_[0], bytes, sizeof bytes, 0) < 0) std::abort();
        for (int i = 0; i <= unasked; ++i)
            if (::recv(ends_[0], bytes, sizeof bytes, 0) < 0) std::abort();
    }

 private:
    int ends_[2];
    pid_t child_;
};

void bare_round_trip(benchmark::State& state)
{
    Echo echo;
    for (auto _ : state) echo.round_trip();
}
BENCHMARK(bare_round_trip)->UseRealTime();

void bare_round_trips_248(benchmark::State& state)
{
    Echo echo;
    for (auto _ : state)
        for (int i = 0; i < 248; ++i) echo.round_trip();
}
BENCHMARK(bare_round_trips_248)->UseRealTime();

// The messages of a reactivation: three requests with an indication each, and two without.
void bare_reactivation(benchmark::State& state)
{
    Echo echo;
    for (auto _ : state)
        for (const char unasked : {1, 1, 0, 1, 0}) echo.round_trip(unasked);
}
BENCHMARK(bare_reactivation)->UseRealTime();

// ---- A modem in another process, for as long as the benchmarks run ----

class ModemProcess {
 public:
    ModemProcess()
    {
        const std::string address = rbk::bench::modem_address();
        const std::string state = rbk::bench::home() + "/modem";
        const std::string program = RBK_BIN_DIR "/rbk-modem";
        const std::string scenario = rbk::bench::home() + "/scenario.toml";
        std::ofstream(scenario) << "[pdc]\nindication_ms = 0\n";
        const char* arguments[] = {program.c_str(), "--listen",   address.c_str(),  "--state",
                                   state.c_str(),   "--scenario", scenario.c_str(), nullptr};
        int out[2];
        if (::pipe2(out, O_CLOEXEC) != 0) std::abort();
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        if (::posix_spawn(&pid_, program.c_str(), &actions, nullptr, const_cast<char**>(arguments), environ) != 0)
            std::abort();
        posix_spawn_file_actions_destroy(&actions);
        ::close(out[1]);
        char ready[16];
        if (::read(out[0], ready, sizeof ready) <= 0) std::abort();  // "ready"
        ::close(out[0]);
        velmor_hal_get_logcat_print_flag(1);
        velmor_hal_get_shell_print_flag(1);
        velmor_hal_close_print();
    }
    ~ModemProcess()
    {
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    ModemProcess(const ModemProcess&) = delete;
    ModemProcess& operator=(const ModemProcess&) = delete;

 private:
    pid_t pid_ = -1;
};

void use_modem()
{
    static ModemProcess modem;
}

void envelope_over_unix(benchmark::State& state)
{
    use_modem();
    const char request[] = "echo";
    for (auto _ : state) {
        char response[EXTEND_DATA_MAX];
        uint32_t size = sizeof response;
        if (velmor_extend_qmi_send_sync(3, request, sizeof request, response, &size) != 0)
            state.SkipWithError("the envelope failed");
    }
}
BENCHMARK(envelope_over_unix)->UseRealTime();

void efs_write_102410(benchmark::State& state)
{
    use_modem();
    static uint8_t content[102410];
    std::memset(content, 0xA5, sizeof content);
    const char path[] = "/bench/file";
    for (auto _ : state)
        if (velmor_efs_write(0, path, sizeof path - 1, content, sizeof content) != 0)
            state.SkipWithError("the write failed");
}
BENCHMARK(efs_write_102410)->UseRealTime();

// From the start of the library to its stop; the wait thread that each request leaves behind sleeps 100 ms beside it.
void diag_by_callback(benchmark::State& state)
{
    use_modem();
    const uint8_t request[] = {0x7C};
    for (auto _ : state) {
        uint8_t reply[64];
        int32_t reply_len = sizeof reply;
        if (velmor_diag_cmd_send_with_result_by_callback_mode(request, sizeof request, 3000, reply, &reply_len) != 0)
            state.SkipWithError("the diag request failed");
    }
}
BENCHMARK(diag_by_callback)->UseRealTime();

// The same within one start of the library and without a thread of its own: from the send of the request, over its answer,
// until the packet that follows is in the hands of the thread that waits for it.
sem_t packet_came;

int32_t on_packet(uint8_t*, int32_t, void*)
{
    sem_post(&packet_came);
    return 0;
}

void diag_packet(benchmark::State& state)
{
    use_modem();
    sem_init(&packet_came, 0, 0);
    if (Diag_LSM_Init(nullptr) == 0) return state.SkipWithError("the diag library can't be started");
    diag_register_callback(on_packet, nullptr);
    diag_switch_logging(CALLBACK_MODE, nullptr);
    const uint8_t request[] = {0x7C};
    for (auto _ : state) {
        if (diag_callback_send_data(0, request, sizeof request) != 0) state.SkipWithError("the diag request failed");
        sem_wait(&packet_came);
    }
    Diag_LSM_DeInit();
    sem_destroy(&packet_came);
}
BENCHMARK(diag_packet)->UseRealTime();

void reactivation(benchmark::State& state)
{
    use_modem();
    for (auto _ : state)
        if (velmor_reactivate_sw_mbn(1) != 0) state.SkipWithError("the reactivation failed");
}
BENCHMARK(reactivation)->UseRealTime();

const AddRatio reactivation_row({"a reactivation of one subscription over unix: / its bare messages", "reactivation",
                                 "bare_reactivation", 3});
const AddRatio envelope_row({"an envelope over unix: / a bare round trip of its bytes", "envelope_over_unix",
                             "bare_round_trip", 1.4});
const AddRatio efs_row({"an EFS write of 102410 bytes over unix: / its 248 bare round trips", "efs_write_102410",
                        "bare_round_trips_248", 1.6});
const AddRatio diag_row({"a diag request in callback mode over unix: / a bare round trip", "diag_by_callback",
                         "bare_round_trip", 10});
const AddRatio diag_packet_row({"a diag request until its packet, library started / a round trip", "diag_packet",
                                "bare_round_trip", 3});

}  // namespace
