// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Platform_Export.h"
#include "platform/tesselcore_Guid.h"
#include "platform/tesselcore_RefCounted.h"

/// The host's cache: items that were costly to make, found again by their identity, in memory and where the host has a
/// folder for them also on disk, for other runs, processes and machines. Nothing here throws, and no failure of the
/// cache shows in a result: what cannot be kept or read is made anew. Any thread.

/// A stream of bytes that an item is written to or read from. Codes: 0, 4 for want of memory, 3 for all other faults; a
/// read beyond the end is one, and takes nothing.
class PLATFORM_EXPORT KS_Stream {
public:
    virtual ~KS_Stream() = default;
    virtual int Write(const void* bytes, std::size_t count) = 0;
    virtual int Read(void* bytes, std::size_t count) = 0;
    /// Of a stream that is read: what has not been read. A size that the bytes tell is held against it before memory is
    /// taken.
    virtual std::uint64_t BytesLeft() const = 0;
};

class KS_Bag;
/// The one bag of the process; it lives until the process ends. Never null.
PLATFORM_EXPORT KS_Bag* KS_GlobalBag();

/// An item of the cache, of a kind that the library behind the host derives. An item does not change any more once it
/// is in the bag; several threads then read it at once.
class PLATFORM_EXPORT KS_Stuff : public tesselcore::utility::RefCountedObject {
public:
    /// The number of the results of the engine that makes items of this kind: raised whenever these change, so that no
    /// item of another number is ever found.
    virtual std::uint32_t GetEngineNumber() const { return 0; }
    virtual void Reserved1() {}
    virtual std::size_t GetSizeInBytes() const = 0;
    /// Drops the item's data. @return whether there was some
    virtual bool PurgeFromMemory() = 0;
    virtual bool HasData() const = 0;
    virtual bool IsOnDisk() const { return false; }
    virtual void Reserved2() {}
    virtual void Reserved3() {}
    /// Writes the data, the same bytes on every machine. @return 0 or a code
    virtual int Flatten(KS_Stream& stream) const = 0;
    /// Makes the data of what `Flatten` wrote, in an item without any. Its bytes have come through undamaged, but may
    /// not be what this engine writes: all sizes are checked before memory is taken. What is left in the stream makes
    /// it fail too, and a failed item is purged.
    /// @return 0; 4 when memory is short, so that the bytes are kept; any other code: they are of no use
    virtual int Unflatten(KS_Stream& stream) = 0;
    virtual void Reserved4() {}
    virtual void Reserved5() {}

    void SetGuid(const Guid& guid) { guid_ = guid; }
    const Guid& GetGuid() const { return guid_; }
    /// Puts the item into the bag, and on disk. Where one of its identity is there already, that one stays, and this
    /// one is its owners' alone. The caller is an owner before this call and as long as the item is used, since the bag
    /// may let it go at once.
    /// @param seconds  what making it took, 0 and up
    /// @return 0, or 4 when memory is short and the bag is as it was
    int AddToBagAndSortDir(KS_Bag* bag, double seconds);

private:
    friend class KS_Bag;
    Guid guid_{};
    int checkouts_ = 0;  ///< guarded by the bag
};

/// Keeps an item alive, and in the bag, until it is destroyed or told to keep another one.
class PLATFORM_EXPORT KS_ScCheckout {
public:
    KS_ScCheckout() = default;
    ~KS_ScCheckout() { GiveBack(); }
    KS_ScCheckout(const KS_ScCheckout&) = delete;
    KS_ScCheckout& operator=(const KS_ScCheckout&) = delete;

    /// Looks for the item of the probe's identity, engine number and the present band count.
    /// @param probe  an item without data that the caller owns. What only the disk has is read into the probe itself,
    ///               which then is the bag's item.
    /// @param use    1, to read the item; there is no other
    void FindAndCheckout(KS_Stuff* probe, int use);
    /// Takes this very item, whether the bag has it or not.
    void Checkout(KS_Stuff* stuff, int use);
    bool DidCheckout() const { return stuff_ != nullptr; }
    /// An item in a checkout is never purged, so that nothing is left to do. @return whether there is one with data
    bool EnsureInMemory() const { return stuff_ != nullptr && stuff_->HasData(); }
    KS_Stuff* GetStuff() const { return stuff_; }

private:
    void GiveBack();
    KS_Stuff* stuff_ = nullptr;
};
