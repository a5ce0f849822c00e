#include "tools/softphone/input.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace softphone {
namespace {

std::unique_ptr<Input> make_reader(int descriptor, const std::string& name) {
    if (descriptor < 0)
        throw CommandError("cannot open " + name + ": " + std::strerror(errno));
    return std::make_unique<LineReader>(platform::common::FileDescriptor(descriptor), name);
}

}  // namespace

LineReader::LineReader(platform::common::FileDescriptor file, std::string name)
    : file_(std::move(file)), name_(std::move(name)) {}

bool LineReader::read(const LineHandler& handle) {
    std::array<char, 4096> chunk;
    const ssize_t size = ::read(file_.get(), chunk.data(), chunk.size());
    if (size < 0 && (errno == EINTR || errno == EAGAIN))
        return true;
    if (size < 0)
        throw CommandError("cannot read " + name_ + ": " + std::strerror(errno));
    if (size == 0) {
        // The last line of a file may lack its newline.
        if (!rest_.empty())
            hand_over(std::exchange(rest_, {}), handle);
        return false;
    }
    rest_.append(chunk.data(), static_cast<std::size_t>(size));
    std::string lines = std::exchange(rest_, {});
    std::size_t start = 0;
    for (auto end = lines.find('\n'); end != std::string::npos; end = lines.find('\n', start)) {
        if (!hand_over(lines.substr(start, end - start), handle))
            return false;
        start = end + 1;
    }
    rest_ = lines.substr(start);
    return true;
}

bool LineReader::hand_over(const std::string& line, const LineHandler& handle) {
    ++line_number_;
    return handle(line, name_ + ":" + std::to_string(line_number_));
}

std::unique_ptr<Input> open_script(const std::string& path) {
    return make_reader(open(path.c_str(), O_RDONLY | O_CLOEXEC), path);
}

std::unique_ptr<Input> open_standard_input() {
    return make_reader(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0), "<stdin>");
}

}  // namespace softphone
