// SPDX-License-Identifier: Apache-2.0
// All files of the cache: their sums, the limit, and what is left behind.
#include "platform/standalone/SH_CacheKeeping.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <memory>
#include <optional>
#include <string_view>
#include <tuple>
#include <vector>

namespace standalone {
namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { ::closedir(folder); }
};

/// The names in a folder, which may be gone.
std::vector<std::string> names_in(int folder) {
    std::vector<std::string> names;
    const int again = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);  // the listing closes its own
    if (again < 0 && errno == ENOENT) return names;
    if (again < 0) throw DiskFault{"listed", errno};
    const std::unique_ptr<DIR, CloseFolder> listing(::fdopendir(again));
    if (listing == nullptr) {
        ::close(again);
        throw DiskFault{"listed", errno};
    }
    for (errno = 0; const dirent* one = ::readdir(listing.get()); errno = 0) names.emplace_back(one->d_name);
    if (errno != 0 && errno != ENOENT) throw DiskFault{"listed", errno};
    return names;
}

struct File {
    CacheName name;
    std::uint64_t bytes;
    timespec changed;
};

double age(const timespec& changed) {
    timespec now;
    ::clock_gettime(CLOCK_REALTIME, &now);
    return std::difftime(now.tv_sec, changed.tv_sec);
}

/// A folder of the cache's own; none for a link, and for what else may bear its name.
Descriptor own_folder(int at, const std::string& name) {
    Descriptor folder(::openat(at, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder && errno != ENOENT && errno != ENOTDIR && errno != ELOOP) throw DiskFault{"opened", errno};
    return folder;
}

/// A plain file's facts. @return false where there is none
bool look_at(int folder, const std::string& name, struct stat* facts) {
    return ::fstatat(folder, name.c_str(), facts, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(facts->st_mode);
}

/// @return false if it was gone
bool remove(int folder, const std::string& name) {
    if (::unlinkat(folder, name.c_str(), 0) == 0) return true;
    if (errno != ENOENT) throw DiskFault{"removed", errno};
    return false;
}

/// Calls visit(folder, file) for each whole file, and removes what was left unfinished; what has other names is
/// none of the cache's. With `emptying` folders that are empty afterwards go.
class Walk {
public:
    /// @param in_the_way  null, or folders with names of entries go if they are empty, and of others this tells
    explicit Walk(const std::string& top, bool emptying = false, std::optional<DiskFault>* in_the_way = nullptr)
        : emptying_(emptying), in_the_way_(in_the_way), top_(OpenFolder(AT_FDCWD, top)) {}

    template <class Visit> void run(const Visit& visit) const {
        if (!top_) return;
        const Descriptor vectors = OpenFolder(top_.get(), kCacheTop);
        if (!vectors) return;
        for (const std::string& numbers : names_in(vectors.get())) {
            if (!IsNumbersFolder(numbers)) continue;
            const Descriptor folder = own_folder(vectors.get(), numbers);
            if (!folder) continue;
            for (const std::string& first : names_in(folder.get())) run(visit, folder.get(), numbers, first);
            end(vectors.get(), numbers);
        }
        end(top_.get(), kCacheTop);
    }

private:
    template <class Visit>
    void run(const Visit& visit, int numbers_folder, const std::string& numbers, const std::string& first) const {
        if (first.size() != 2 || first == "..") return;
        const Descriptor folder = own_folder(numbers_folder, first);
        if (!folder) return;
        for (const std::string& rest : names_in(folder.get())) {
            struct stat facts;
            const CacheName name{numbers, first, rest};
            const bool whole = IsEntryName(name);
            if (!whole && !IsUnfinished(rest)) continue;
            if (!look_at(folder.get(), rest, &facts)) {
                if (whole && in_the_way_ != nullptr) try_to_remove_folder(folder.get(), rest);
            } else if (whole) {
                visit(folder.get(), File{name, static_cast<std::uint64_t>(facts.st_size), facts.st_mtim});
            } else if (IsAbandoned(rest, age(facts.st_mtim))) {
                ::unlinkat(folder.get(), rest.c_str(), 0);  // where that is not allowed it is others' to do
            }
        }
        end(numbers_folder, first);
    }
    /// A folder that is not empty, or not ours to remove, stays.
    void end(int at, const std::string& name) const {
        if (emptying_) ::unlinkat(at, name.c_str(), AT_REMOVEDIR);
    }

    /// Links and pipes stay: they are replaced when the entry is written.
    void try_to_remove_folder(int at, const std::string& name) const {
        const bool is_removed = ::unlinkat(at, name.c_str(), AT_REMOVEDIR) == 0;
        if (!is_removed && errno != ENOENT && errno != ENOTDIR) *in_the_way_ = DiskFault{"used whole", EISDIR};
    }

    const bool emptying_;
    std::optional<DiskFault>* const in_the_way_;
    const Descriptor top_;
};

void add(CacheSums* sums, const File& file) {
    ++sums->entries;
    sums->bytes += file.bytes;
}

}  // namespace

void SweepFiles(const std::string& top, CacheSums* left) {
    Walk(top).run([&](int, const File& file) { add(left, file); });
}

CacheSums ShrinkFiles(const std::string& top, std::uint64_t limit, const std::string& numbers) {
    std::vector<File> files;
    CacheSums sums;
    Walk(top).run([&](int, const File& file) {
        files.push_back(file);
        add(&sums, file);
    });
    if (sums.bytes <= limit) return sums;
    const auto order = [&](const File& file) {
        return std::tuple(file.name.numbers == numbers, file.changed.tv_sec, file.changed.tv_nsec,
                          std::tie(file.name.first, file.name.rest));
    };
    std::ranges::sort(files, {}, order);
    for (const File& file : files) {
        if (sums.bytes <= limit - limit / 10) break;
        const Descriptor folder = FolderOfEntry(top, file.name, false);
        if (folder) remove(folder.get(), file.name.rest);
        --sums.entries;
        sums.bytes -= file.bytes;
    }
    return sums;
}

void RemoveFiles(const std::string& top, CacheSums* removed) {
    std::optional<DiskFault> in_the_way;
    Walk(top, true, &in_the_way).run([&](int folder, const File& file) {
        if (remove(folder, file.name.rest)) add(removed, file);
    });
    if (in_the_way) throw *in_the_way;
}

void VerifyFiles(const std::string& top, bool (*stops)(), CacheSums* left, CacheSums* removed) {
    std::optional<DiskFault> first_fault;
    Walk(top, false, &first_fault).run([&](int folder, const File& file) {
        if (stops != nullptr && stops()) return;
        try {
            const auto key = KeyOf(file.name);
            const EntryState state = key ? VerifyEntry(folder, file.name, *key) : EntryState::whole;
            if (state != EntryState::missing) add(state == EntryState::whole ? left : removed, file);
        } catch (const DiskFault& fault) {
            if (!first_fault) first_fault = fault;
        }
    });
    if (first_fault) throw *first_fault;
}

}  // namespace standalone
