// SPDX-License-Identifier: Apache-2.0
#include "pictures/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "pictures/Picture.h"

namespace qx::pictures {
namespace {

constexpr std::size_t kHeadBytes = 16;

std::string words(int error) {
    char text[128];
    return ::strerror_r(error, text, sizeof text);
}

/// Opens a new file beside `target`, under a name of its own that is short enough for any name to take its place.
/// The system gives it the rights of a new file: to ask for these would change them for all threads.
int open_beside(const std::string& target, std::string& name) {
    static std::atomic<unsigned> number{0};
    const std::string begin = ".qx-" + std::to_string(::getpid()) + "-";
    int descriptor = -1;
    do {
        name = std::filesystem::path(target).replace_filename(begin + std::to_string(++number)).string();
        descriptor = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EEXIST);  // one that a stopped process has left
    return descriptor;
}

/// A file that takes the place of another one gets its rights.
bool take_rights(int descriptor, const std::string& target) {
    struct stat info {};
    return ::stat(target.c_str(), &info) != 0 || ::fchmod(descriptor, info.st_mode & 0777) == 0;
}

/// Only regular files are opened: to open a pipe that nobody writes would wait for ever.
std::FILE* open_regular(const std::string& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) throw Failure(path, words(errno));
    if (S_ISDIR(info.st_mode)) throw Failure(path, "is a folder");
    if (!S_ISREG(info.st_mode)) throw Failure(path, "is not a regular file");
    std::FILE* stream = std::fopen(path.c_str(), "rb");
    if (stream == nullptr) throw Failure(path, words(errno));
    return stream;
}

}  // namespace

InputFile::InputFile(const std::string& path) : path_(path), stream_(open_regular(path)) {
    char head[kHeadBytes];
    const std::size_t length = std::fread(head, 1, sizeof head, stream_);
    const int error = errno;
    const bool failed = std::ferror(stream_) != 0;
    head_.assign(head, length);
    std::rewind(stream_);
    if (length > 0) return;
    std::fclose(stream_);
    throw Failure(path, failed ? words(error) : "is empty");
}

InputFile::~InputFile() { std::fclose(stream_); }

bool InputFile::begins_with(const std::string& magic) const { return head_.compare(0, magic.size(), magic) == 0; }

OutputFile::OutputFile(const std::string& path) : path_(path) {
    std::error_code ignored;
    const auto resolved = std::filesystem::weakly_canonical(path, ignored);  // a link stays, its file is replaced
    target_ = ignored ? path : resolved.string();
    const auto status = std::filesystem::status(target_, ignored);
    if (std::filesystem::is_directory(status)) throw Failure(path, "is a folder");
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw Failure(path, "is not a regular file");
    }
    const int descriptor = open_beside(target_, temporary_);
    if (descriptor < 0) {
        const int error = errno;
        temporary_.clear();
        throw Failure(path, words(error));
    }
    stream_ = ::fdopen(descriptor, "w+b");
    if (stream_ == nullptr || !take_rights(descriptor, target_)) note_error();
    // A failure so early is kept like that of a write: `write_picture` asks for it before it writes.
}

OutputFile::~OutputFile() {
    if (stream_ != nullptr) std::fclose(stream_);
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

void OutputFile::note_error() {
    if (error_ == 0) error_ = errno != 0 ? errno : EIO;
}

bool OutputFile::write(const void* data, std::size_t bytes) {
    if (!failed() && std::fwrite(data, 1, bytes, stream_) != bytes) note_error();
    return !failed();
}

bool OutputFile::seek(std::uint64_t place) {
    if (!failed() && ::fseeko(stream_, static_cast<off_t>(place), SEEK_SET) != 0) note_error();
    return !failed();
}

std::uint64_t OutputFile::tell() {
    const off_t place = ::ftello(stream_);
    if (place < 0) note_error();
    return place < 0 ? 0 : static_cast<std::uint64_t>(place);
}

void OutputFile::check() const {
    if (failed()) throw Failure(path_, words(error_));
}

void OutputFile::commit() {
    if (!failed() && std::fflush(stream_) != 0) note_error();
    if (!failed() && std::ferror(stream_) != 0) note_error();
    const int closed = std::fclose(stream_);  // some file systems tell of a full disk only now
    stream_ = nullptr;
    if (closed != 0) note_error();
    check();
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) note_error();
    check();
    temporary_.clear();
}

}  // namespace qx::pictures
