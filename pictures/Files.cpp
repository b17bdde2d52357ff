// SPDX-License-Identifier: Apache-2.0
#include "pictures/Files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "pictures/Picture.h"

namespace qx::io {
namespace {

constexpr std::size_t kHeadBytes = 16;

std::string words(int error) { return std::strerror(error); }  // one thread opens and closes files

/// Rights that a new file gets, or those of the file whose place it takes.
mode_t rights(const std::string& target) {
    struct stat info {};
    if (::stat(target.c_str(), &info) == 0) return info.st_mode & 0777;
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
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
    temporary_ = std::filesystem::path(target_).replace_filename(".qx-XXXXXX").string();  // short enough for any name
    const int descriptor = ::mkstemp(temporary_.data());
    if (descriptor < 0) {
        const int error = errno;
        temporary_.clear();
        throw Failure(path, words(error));
    }
    stream_ = ::fdopen(descriptor, "w+b");
    if (::fchmod(descriptor, rights(target_)) != 0 || stream_ == nullptr) note_error();
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

}  // namespace qx::io
