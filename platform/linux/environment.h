// What the platform is told from outside, and how it tells a person that something is wrong. No other place reads
// environment variables. Whoever links this has its closed standard streams on /dev/null before anything else is opened.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace rbk::platform {

// Read once, at the first use. A variable that is unset or empty is missing here.
struct Environment {
    std::optional<std::string> modem;     // RBK_MODEM: "embedded", "unix:PATH" or "qrtr"; not judged here
    std::optional<std::string> scenario;  // RBK_SCENARIO: scenario of the embedded modem, as find_scenario takes it
    std::optional<std::string> trace;     // RBK_TRACE: file to which each message on the link is appended
    std::optional<std::string> logcat;    // RBK_LOGCAT: file, or "stderr", for a copy of the log
    double qmi_timeout_scale = 1;         // RBK_QMI_TIMEOUT_SCALE: factor on the QMI client's own time-outs, above 0
};

// Lives until the process is gone, exit handlers and left-over threads included. Threads: any.
const Environment& environment();

// The state directory: RBK_HOME, else $XDG_STATE_HOME/rbk, else .local/state/rbk in the home directory. Not created
// here. Empty, with a line for a person in `problem`, when there is no home directory to be found or the state directory
// is none that can be entered.
std::filesystem::path rbk_home(std::string& problem);

// Says "rbk: <line>" on standard error, each line once per process however often it is asked to. Threads: any.
void complain(std::string_view line);

}  // namespace rbk::platform
