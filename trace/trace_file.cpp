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
    return std::exchange(partial_, {});
}

bool TraceFile::has_shrunk()
{
    struct stat found {};
    if (file_ == stdin || ::fstat(::fileno(file_), &found) != 0 || !S_ISREG(found.st_mode)) return false;
    if (found.st_size >= std::ftell(file_)) return false;
    std::rewind(file_);
    partial_.clear();
    number_ = 0;
    return true;
}

}  // namespace rbk::trace
