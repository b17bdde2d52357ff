// SPDX-License-Identifier: Apache-2.0
#include "pictures/Files.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <new>
#include <vector>

#include "pictures/Picture.h"

namespace qx::pictures {
namespace {

constexpr const char* kNoFolder = "its folder is missing";

std::string words(int error) {
    char text[128];
    return ::strerror_r(error, text, sizeof text);
}

/// Throws for an error of the system. @param path  the file in whose name
[[noreturn]] void fail(const std::string& path, int error) {
    if (error == EINTR) throw Stopped();  // a signal that is to end the work, while it waited for others
    if (error == ENOMEM) throw std::bad_alloc();
    throw Failure(path, words(error));
}

/// Names of the files that are being written, for a process that ends at once. More than these stay where they are.
std::array<std::atomic<const char*>, 1024> unfinished{};

void note_unfinished(const char* name) {
    for (auto& place : unfinished) {
        const char* none = nullptr;
        if (place.compare_exchange_strong(none, name)) return;
    }
}
void forget_unfinished(const char* name) {
    for (auto& place : unfinished) {
        const char* same = name;
        if (place.compare_exchange_strong(same, nullptr)) return;
    }
}

/// What names of unfinished files of this machine begin with: others may work in the same folder.
std::string unfinished_name() {
    char host[256] = "";
    ::gethostname(host, sizeof host - 1);
    std::uint32_t hash = 2166136261u;  // FNV-1a
    for (const char* c = host; *c != '\0'; ++c) hash = (hash ^ static_cast<unsigned char>(*c)) * 16777619u;
    char name[32];
    std::snprintf(name, sizeof name, ".qx-%08x-", static_cast<unsigned>(hash));
    return name;
}

/// Opens a new file beside `target`, under a name of its own that is short enough for any name to take its place.
/// The system gives it the rights of a new file: to ask for these would change them for all threads.
int open_beside(const std::string& target, std::string& name) {
    static std::atomic<unsigned> number{0};
    const std::string begin = unfinished_name() + std::to_string(::getpid()) + "-";
    int descriptor = -1;
    do {
        name = target.substr(0, target.find_last_of('/') + 1) + begin + std::to_string(++number);
        descriptor = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    } while (descriptor < 0 && errno == EEXIST);  // one that a stopped process has left
    return descriptor;
}

/// A file that takes the place of another one gets its rights.
bool take_rights(int descriptor, const std::string& target) {
    struct stat info {};
    return ::stat(target.c_str(), &info) != 0 || ::fchmod(descriptor, info.st_mode & 0777) == 0;
}

void must_be_regular(const std::string& path, const struct stat& info) {
    if (S_ISDIR(info.st_mode)) throw Failure(path, "is a folder");
    if (!S_ISREG(info.st_mode)) throw Failure(path, "is not a regular file");
}

/// Where a link leads to: it stays, and its file is replaced. Other names are as they were.
std::string resolved(const std::string& path) {
    errno = 0;
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    if (real == nullptr && errno == ENOMEM) throw std::bad_alloc();
    return real == nullptr ? path : std::string(real.get());
}

/// Only regular files are opened: to open a pipe that nobody writes would wait for ever.
/// @param path  in whose name faults are told
std::FILE* open_regular(const std::string& path, const std::string& file) {
    struct stat info {};
    if (::stat(file.c_str(), &info) != 0) fail(path, errno);
    must_be_regular(path, info);
    std::FILE* stream = std::fopen(file.c_str(), "rb");
    if (stream == nullptr) fail(path, errno);
    return stream;
}

/// By which a file of this process that has no name is opened anew.
std::string name_of(std::FILE* stream) { return "/proc/self/fd/" + std::to_string(::fileno(stream)); }

void copy(std::FILE* from, std::FILE* to, const std::string& path) {
    std::vector<char> bytes(std::size_t{1} << 16);
    for (;;) {
        const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), from);
        if (std::fwrite(bytes.data(), 1, count, to) != count || std::ferror(from) != 0) fail(path, errno);
        if (count == 0) break;
    }
    if (std::fflush(to) != 0) fail(path, errno);
}

/// What standard input gave, for as long as the process lives.
const std::string& kept_standard_input() {
    static const std::string kept = [] {
        std::FILE* file = std::tmpfile();
        if (file == nullptr) fail("-", errno);
        copy(stdin, file, "-");
        return name_of(file);
    }();
    return kept;
}

FileName to_open(const std::string& path) {
    return is_standard_input(path) ? FileName{kept_standard_input(), ""} : named(path);
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : path_(path), named_(to_open(path)), stream_(open_regular(path, named_.file)) {
    head_bytes_ = std::fread(head_.data(), 1, head_.size(), stream_);
    const int error = errno;
    const bool failed = std::ferror(stream_) != 0;
    std::rewind(stream_);
    if (head_bytes_ > 0) return;
    std::fclose(stream_);
    if (failed) fail(path, error);
    throw Failure(path, "is empty");
}

InputFile::~InputFile() { std::fclose(stream_); }

std::uint64_t InputFile::bytes() const {
    struct stat info {};
    return ::fstat(::fileno(stream_), &info) == 0 ? static_cast<std::uint64_t>(info.st_size) : 0;
}

bool InputFile::holds(const std::string& magic, std::size_t at) const {
    return at + magic.size() <= head_bytes_ &&
           std::equal(magic.begin(), magic.end(), head_.begin() + static_cast<std::ptrdiff_t>(at));
}

std::vector<unsigned char> InputFile::contents() const {
    std::vector<unsigned char> all(bytes());
    std::rewind(stream_);
    if (std::fread(all.data(), 1, all.size(), stream_) != all.size()) fail(path_, errno != 0 ? errno : EIO);
    return all;
}

OutputFile::OutputFile(const std::string& path) : path_(path) {
    if (is_standard_output(path)) {
        open_nameless();
        return;
    }
    target_ = resolved(path);
    struct stat info {};
    if (::stat(target_.c_str(), &info) == 0) must_be_regular(path, info);
    const int descriptor = open_beside(target_, temporary_);
    if (descriptor < 0) {
        const int error = errno;
        temporary_.clear();
        if (error == ENOENT) throw Failure(path, kNoFolder);
        fail(path, error);
    }
    note_unfinished(temporary_.c_str());
    stream_ = ::fdopen(descriptor, "w+b");
    if (stream_ == nullptr || !take_rights(descriptor, target_)) note_error();
    // A failure so early is kept like that of a write: `write_picture` asks for it before it writes.
}

void OutputFile::open_nameless() {
    if (::isatty(STDOUT_FILENO) != 0) throw Failure(path_, "standard output is a terminal, which shows no pictures");
    stream_ = std::tmpfile();
    if (stream_ == nullptr) fail(path_, errno);
    temporary_ = name_of(stream_);
}

OutputFile::OutputFile(const std::string& path, std::string& bytes) : path_(path), bytes_(&bytes) {
    const int descriptor = ::memfd_create("picture", MFD_CLOEXEC);  // one that may be read too, as libraries do
    if (descriptor >= 0) stream_ = ::fdopen(descriptor, "w+b");
    if (stream_ == nullptr) note_error();
}

OutputFile::~OutputFile() {
    if (stream_ != nullptr) std::fclose(stream_);
    if (temporary_.empty() || is_standard_output(path_)) return;
    ::unlink(temporary_.c_str());
    forget_unfinished(temporary_.c_str());
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
    if (failed()) fail(path_, error_);
}

void OutputFile::finish() {
    if (!failed() && std::fflush(stream_) != 0) note_error();
    if (!failed() && std::ferror(stream_) != 0) note_error();
    if (is_standard_output(path_)) return check();  // it is gone once it is closed
    if (!failed() && bytes_ != nullptr) take_bytes();
    const int closed = std::fclose(stream_);  // some file systems tell of a full disk only now
    stream_ = nullptr;
    if (closed != 0) note_error();
    check();
}

void OutputFile::take_bytes() {
    struct stat info {};
    if (::fstat(::fileno(stream_), &info) != 0) return note_error();
    bytes_->resize(static_cast<std::size_t>(info.st_size));
    std::rewind(stream_);
    if (std::fread(bytes_->data(), 1, bytes_->size(), stream_) != bytes_->size()) note_error();
}

void OutputFile::copy_to_standard_output() {
    std::rewind(stream_);
    copy(stream_, stdout, path_);
}

void OutputFile::commit() {
    if (stream_ != nullptr) finish();
    if (is_standard_output(path_)) return copy_to_standard_output();
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) note_error();
    check();
    forget_unfinished(temporary_.c_str());
    temporary_.clear();
}

void check_folder(const std::string& path) {
    std::error_code ignored;
    const auto folder = std::filesystem::path(path).parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored)) throw Failure(path, kNoFolder);
    if (std::filesystem::is_directory(path, ignored)) throw Failure(path, "is a folder");
}

void flush_disk_of(const std::string& path) noexcept {
    try {
        const std::string folder = std::filesystem::path(path).parent_path().string();
        const int descriptor = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (descriptor < 0) return;
        ::syncfs(descriptor);
        ::close(descriptor);
    } catch (const std::exception&) {  // no memory for a name: the system writes it in its own time
    }
}

void sweep_unfinished(const std::string& path) noexcept {
    try {
        const std::filesystem::path folder = std::filesystem::path(path).parent_path();
        const std::string begin = unfinished_name();
        std::vector<std::filesystem::path> left;
        for (const auto& entry : std::filesystem::directory_iterator(folder.empty() ? "." : folder)) {
            const std::string name = entry.path().filename().string();
            int process = 0, number = 0, length = 0;
            const bool ours = name.starts_with(begin) &&
                              std::sscanf(name.c_str() + begin.size(), "%d-%d%n", &process, &number, &length) == 2 &&
                              begin.size() + static_cast<std::size_t>(length) == name.size();
            if (ours && process > 0 && ::kill(process, 0) != 0 && errno == ESRCH) left.push_back(entry.path());
        }
        for (const auto& file : left) ::unlink(file.c_str());
    } catch (const std::exception&) {  // a folder that cannot be read keeps what it has
    }
}

void remove_unfinished() noexcept {
    for (auto& place : unfinished) {
        if (const char* name = place.load()) ::unlink(name);
    }
}

}  // namespace qx::pictures
