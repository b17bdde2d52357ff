// SPDX-License-Identifier: Apache-2.0
// One file of the cache: written whole or not at all, read whole, and believed when everything in it fits.
#include "platform/standalone/SH_CacheFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <new>
#include <vector>

#define XXH_STATIC_LINKING_ONLY  // for the size of a state, so that it can stand where it is used
#include <xxhash.h>

#include "platform/TK_Memory.h"

namespace standalone {
namespace {

constexpr int kTries = 8;  // of a folder that somebody else removes while it is empty

[[noreturn]] void fail(const char* doing) { throw DiskFault{doing, errno}; }

class Checksum {
public:
    Checksum() { XXH3_64bits_reset(&state_); }
    void add(const void* bytes, std::size_t count) { XXH3_64bits_update(&state_, bytes, count); }
    std::uint64_t value() const { return XXH3_64bits_digest(&state_); }

private:
    XXH3_state_t state_;
};

/// @return whether all bytes went
bool write_all(int file, const void* bytes, std::size_t count, off_t at) {
    for (const char* from = static_cast<const char*>(bytes); count > 0;) {
        const ssize_t written = ::pwrite(file, from, std::min<std::size_t>(count, 1 << 30), at);
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        from += written, at += written, count -= static_cast<std::size_t>(written);
    }
    return true;
}

/// @return bytes that came; fewer than asked for only at the file's end
std::size_t read_all(int file, void* bytes, std::size_t count, off_t at) {
    std::size_t got = 0;
    while (got < count) {
        const ssize_t part = ::pread(file, static_cast<char*>(bytes) + got, std::min<std::size_t>(count - got, 1 << 30),
                                     at + static_cast<off_t>(got));
        if (part < 0 && errno == EINTR) continue;
        if (part < 0) fail("read");
        if (part == 0) break;
        got += static_cast<std::size_t>(part);
    }
    return got;
}

/// What an item writes, behind the place of the head.
class FileStream final : public KS_Stream {
public:
    explicit FileStream(int file) : file_(file) {}
    int Write(const void* bytes, std::size_t count) override {
        if (!write_all(file_, bytes, count, static_cast<off_t>(kCacheHeadBytes + length_))) {
            error_ = errno;
            return 3;
        }
        checksum_.add(bytes, count);
        length_ += count;
        return 0;
    }
    int Read(void*, std::size_t) override { return 3; }
    std::uint64_t BytesLeft() const override { return 0; }

    int error() const { return error_; }
    CacheHead head(const CacheKey& key) const { return {key, length_, checksum_.value()}; }

private:
    const int file_;
    int error_ = 0;
    std::uint64_t length_ = 0;
    Checksum checksum_;
};

/// Bytes that lie in memory.
class MemoryStream final : public KS_Stream {
public:
    MemoryStream(const char* bytes, std::size_t count) : next_(bytes), left_(count) {}
    int Write(const void*, std::size_t) override { return 3; }
    int Read(void* bytes, std::size_t count) override {
        if (count > left_) return 3;
        std::copy_n(next_, count, static_cast<char*>(bytes));
        next_ += count, left_ -= count;
        return 0;
    }
    std::uint64_t BytesLeft() const override { return left_; }

private:
    const char* next_;
    std::size_t left_;
};

/// A file under a name of its own, which goes unless it gets its true one.
class UnfinishedFile {
public:
    explicit UnfinishedFile(int folder)
        : folder_(folder),
          name_(NewUnfinishedName()),
          file_(::openat(folder, name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600)) {}
    UnfinishedFile(const UnfinishedFile&) = delete;
    ~UnfinishedFile() {
        if (file_ || closed_) ::unlinkat(folder_, name_.c_str(), 0);
    }
    explicit operator bool() const { return static_cast<bool>(file_); }
    int get() const { return file_.get(); }

    /// @return false if somebody has removed it
    bool finish(const std::string& name) {
        if (::fsync(file_.get()) != 0) fail("written");
        closed_ = true;
        if (::close(file_.release()) != 0) fail("written");
        if (::renameat(folder_, name_.c_str(), folder_, name.c_str()) == 0) {
            closed_ = false;
        } else if (errno == EISDIR) {
            throw DiskFault{"used whole", EISDIR};
        } else if (errno != ENOENT) {
            fail("renamed");
        }
        return !closed_;
    }

private:
    const int folder_;
    const std::string name_;
    Descriptor file_;
    bool closed_ = false;  ///< and not yet renamed
};

void make_folder_and_parents(const std::string& path) {
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string part = path.substr(0, end);
        if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) {
            struct stat facts;  // what cannot be written to may be there all the same
            const int error = errno;
            if (::stat(part.c_str(), &facts) != 0) throw DiskFault{"made", error};
        }
        if (end == std::string::npos) return;
    }
}

Descriptor make_folder(int at, const std::string& name) {
    if (::mkdirat(at, name.c_str(), 0700) != 0 && errno != EEXIST && errno != ENOENT) fail("made");
    return OpenFolder(at, name);
}

struct RuntimeFree {
    void operator()(char* block) const { TK_RuntimeFree(block); }
};

/// A file that is open for reading.
class Entry {
public:
    /// False if it is not there. Throws DiskFault.
    Entry(int folder, const CacheName& name)
        : folder_(folder),
          name_(name),
          file_(::openat(folder, name.rest.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC)),
          is_there_(file_ || errno != ENOENT) {
        if (is_there_ && !file_ && errno != ELOOP) fail("opened");
        struct stat facts;
        if (file_ && ::fstat(file_.get(), &facts) != 0) fail("read");
        is_plain_ = file_ && S_ISREG(facts.st_mode);
        if (is_plain_) size_ = static_cast<std::uint64_t>(facts.st_size);
    }
    explicit operator bool() const { return is_there_; }
    std::uint64_t length() const { return size_ - kCacheHeadBytes; }

    bool has_head_of(const CacheKey& key) {
        CacheHeadBytes head;
        return is_plain_ && read_all(file_.get(), head.data(), head.size(), 0) == head.size() &&
               IsHeadOf(head, key, size_, &checksum_);
    }
    /// Reads what follows the head into a buffer, again and again if it is smaller, and sums it up.
    bool read_body(char* buffer, std::uint64_t bytes) {
        Checksum sum;
        for (std::uint64_t done = 0; done < length();) {
            const auto part = static_cast<std::size_t>(std::min(bytes, length() - done));
            if (read_all(file_.get(), buffer, part, static_cast<off_t>(kCacheHeadBytes + done)) != part) return false;
            sum.add(buffer, part);
            done += part;
        }
        return sum.value() == checksum_;
    }
    EntryState remove() {
        if (::unlinkat(folder_, name_.rest.c_str(), 0) == 0 || errno == ENOENT) return EntryState::removed;
        if (errno != EISDIR) fail("removed");
        if (::unlinkat(folder_, name_.rest.c_str(), AT_REMOVEDIR) == 0) return EntryState::removed;
        throw DiskFault{"used whole", EISDIR};  // somebody's, who has put something in it
    }
    /// Where that is not allowed the file is merely older than it might be.
    void renew() { static_cast<void>(::futimens(file_.get(), nullptr)); }

private:
    const int folder_;
    const CacheName& name_;
    const Descriptor file_;
    const bool is_there_;
    bool is_plain_ = false;  ///< no link, pipe or folder
    std::uint64_t size_ = 0, checksum_ = 0;
};

/// 0, 4 or another code, whatever the item throws.
int unflatten(KS_Stuff* into, const char* bytes, std::size_t count) {
    int code = 3;
    try {
        MemoryStream stream(bytes, count);
        code = into->Unflatten(stream);
        if (code == 0 && stream.BytesLeft() > 0) code = 3;
    } catch (int thrown) {
        code = thrown == 0 ? 3 : thrown;
    } catch (const std::bad_alloc&) {
        code = 4;
    } catch (...) {
    }
    if (code != 0) into->PurgeFromMemory();
    return code;
}

}  // namespace

Descriptor::~Descriptor() {
    if (number_ >= 0) ::close(number_);
}

int Descriptor::release() {
    const int number = number_;
    number_ = -1;
    return number;
}

Descriptor OpenFolder(int at, const std::string& name) {
    const int links = at == AT_FDCWD ? 0 : O_NOFOLLOW;
    Descriptor folder(::openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC | links));
    if (!folder && errno != ENOENT) fail("opened");
    return folder;
}

Descriptor FolderOfEntry(const std::string& top, const CacheName& name, bool making) {
    const auto step = making ? make_folder : OpenFolder;
    if (making) make_folder_and_parents(top);
    const Descriptor folder = OpenFolder(AT_FDCWD, top);
    if (!folder) return Descriptor();
    const Descriptor vectors = step(folder.get(), kCacheTop);
    if (!vectors) return Descriptor();
    const Descriptor numbers = step(vectors.get(), name.numbers);
    return numbers ? step(numbers.get(), name.first) : Descriptor();
}

std::uint64_t WriteEntry(const std::string& top, const CacheKey& key, const KS_Stuff& stuff) {
    const CacheName name = NameOf(key);
    for (int i = 0; i < kTries; ++i) {
        const Descriptor folder = FolderOfEntry(top, name, true);
        if (!folder) continue;
        UnfinishedFile file(folder.get());
        if (!file && errno == ENOENT) continue;
        if (!file) fail("made");
        FileStream stream(file.get());
        const int code = stuff.Flatten(stream);
        if (stream.error() != 0) throw DiskFault{"written", stream.error()};
        if (code != 0) throw code;
        const CacheHead head = stream.head(key);
        const CacheHeadBytes bytes = BytesOf(head);
        if (!write_all(file.get(), bytes.data(), bytes.size(), 0)) fail("written");
        if (!file.finish(name.rest)) continue;
        return kCacheHeadBytes + head.length;
    }
    throw DiskFault{"made", ENOENT};
}

EntryState ReadEntry(const std::string& top, const CacheKey& key, KS_Stuff* into) {
    const CacheName name = NameOf(key);
    const Descriptor folder = FolderOfEntry(top, name, false);
    if (!folder) return EntryState::missing;
    Entry entry(folder.get(), name);
    if (!entry) return EntryState::missing;
    if (!entry.has_head_of(key)) return entry.remove();
    const auto length = static_cast<std::size_t>(entry.length());
    const std::unique_ptr<char, RuntimeFree> body(static_cast<char*>(TK_RuntimeMalloc(length)));
    if (body == nullptr) throw std::bad_alloc();
    if (!entry.read_body(body.get(), length)) return entry.remove();
    const int code = unflatten(into, body.get(), length);
    if (code == 4) throw std::bad_alloc();
    if (code != 0) return entry.remove();
    entry.renew();
    return EntryState::whole;
}

EntryState VerifyEntry(int at, const CacheName& name, const CacheKey& key) {
    Entry entry(at, name);
    if (!entry) return EntryState::missing;
    std::vector<char> buffer(1 << 20);
    if (!entry.has_head_of(key) || !entry.read_body(buffer.data(), buffer.size())) return entry.remove();
    return EntryState::whole;
}

}  // namespace standalone
