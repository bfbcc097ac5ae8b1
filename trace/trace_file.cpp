#include "trace/trace_file.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace rbk::trace {
namespace {

// Above two digits for each byte of the longest message and the words before them.
constexpr std::size_t kLongestLine = 262'144;  // bytes

std::runtime_error failure(const std::string& name)
{
    return std::runtime_error(name + ": " + std::strerror(errno));
}

}  // namespace

TraceFile::TraceFile(const std::string& name)
    : name_(name == "-" ? "standard input" : name), file_(name == "-" ? stdin : std::fopen(name.c_str(), "re"))
{
    if (file_ == nullptr) throw failure(name_);
    struct stat found {};
    if (::fstat(::fileno(file_), &found) == 0 && S_ISDIR(found.st_mode)) {
        if (file_ != stdin) std::fclose(file_);
        errno = EISDIR;
        throw failure(name_);
    }
}

TraceFile::~TraceFile()
{
    if (file_ != stdin) std::fclose(file_);
}

std::optional<std::string> TraceFile::next(bool whole_lines)
{
    std::clearerr(file_);
    int c = 0;
    while ((c = ::getc_unlocked(file_)) != EOF && c != '\n') {
        if (partial_.size() < kLongestLine) partial_ += static_cast<char>(c);
    }
    if (c == EOF && std::ferror(file_) != 0) throw failure(name_);
    if (c == EOF && (whole_lines || partial_.empty())) return std::nullopt;
    ++number_;
    if (partial_.ends_with('\r')) partial_.pop_back();  // it has come through a terminal
    return std::exchange(partial_, {});
}

bool TraceFile::begins_anew()
{
    struct stat open {};
    struct stat named {};
    if (file_ == stdin || ::fstat(::fileno(file_), &open) != 0 || !S_ISREG(open.st_mode)) return false;
    const bool is_another = ::stat(name_.c_str(), &named) == 0 && S_ISREG(named.st_mode) &&
                            (named.st_ino != open.st_ino || named.st_dev != open.st_dev);
    if (is_another) {
        std::FILE* file = std::fopen(name_.c_str(), "re");
        if (file == nullptr) return false;  // not yet
        std::fclose(std::exchange(file_, file));
    } else if (open.st_size < std::ftell(file_)) {
        std::rewind(file_);
    } else {
        return false;
    }
    partial_.clear();
    number_ = 0;
    return true;
}

}  // namespace rbk::trace
