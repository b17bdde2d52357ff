// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/standalone/SH_CacheFormat.h"

namespace standalone {

/// The system refused something.
struct DiskFault {
    const char* doing;  ///< "cannot be ..."
    int error;          ///< of errno
};

/// An open file or folder, closed at the end.
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor();
    int get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    int release();

private:
    int number_;
};

/// A folder below another one, or with AT_FDCWD for `at` one that a person named, which alone may be a link. None if it
/// is not there; throws DiskFault.
Descriptor OpenFolder(int at, const std::string& name);
/// The folder of an entry. None if a folder on the way is not there; throws DiskFault.
/// @param making  all are made that are not there, and one may be gone again all the same
Descriptor FolderOfEntry(const std::string& top, const CacheName& name, bool making);

/// Writes the item's file: under another name, onto the disk, then renamed. Throws DiskFault; nothing is left then.
/// @return the file's bytes
std::uint64_t WriteEntry(const std::string& folder, const CacheKey& key, const KS_Stuff& stuff);

enum class EntryState { missing, removed, whole };  ///< `removed`: it could not be believed
/// Reads the item's file, and renews its time. Throws DiskFault, and std::bad_alloc: then the file stays.
EntryState ReadEntry(const std::string& folder, const CacheKey& key, KS_Stuff* into);
/// Reads a file of the folder `at` and removes it when it is not what its key says. Throws DiskFault.
EntryState VerifyEntry(int at, const CacheName& name, const CacheKey& key);

}  // namespace standalone
