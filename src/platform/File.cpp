#include "platform/File.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::uint32_t kLargestFile = std::numeric_limits<std::uint32_t>::max();

int OpenPlainFile(const std::string& path, std::uint32_t& size) {
    // A path ends at a zero byte for the operating system: what stands behind it must not be dropped in silence.
    if (path.find('\0') != std::string::npos) return -1;
    // Non-blocking, because opening a pipe waits for its writer otherwise. Reading a plain file is not affected.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return -1;
    struct stat status = {};
    if (::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= kLargestFile) {
        size = static_cast<std::uint32_t>(status.st_size);
        return descriptor;
    }
    ::close(descriptor);
    return -1;
}

}  // namespace

TNFileUnix::~TNFileUnix() {
    Close();
}

void TNFileUnix::Close() noexcept {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
    size_ = 0;
}

bool TNFileUnix::OpenFileForRead(const CTNFilePath& path) {
    Close();
    descriptor_ = OpenPlainFile(path.GetText(), size_);
    return descriptor_ >= 0;
}

bool TNFileUnix::ReadBytes(void* data, std::uint32_t size) {
    // One call reads no more than this on every system.
    constexpr std::size_t kLargestRead = 1U << 30;
    if (descriptor_ < 0) return false;
    auto* out = static_cast<unsigned char*>(data);
    std::size_t left = size;
    while (left > 0) {
        const ssize_t got = ::read(descriptor_, out, std::min(left, kLargestRead));
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) return false;
        out += got;
        left -= static_cast<std::size_t>(got);
    }
    return true;
}
