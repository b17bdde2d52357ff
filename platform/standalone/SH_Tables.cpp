// SPDX-License-Identifier: Apache-2.0
// Tables of the host's mathematics.
#include <algorithm>
#include <array>
#include <cmath>
#include <mutex>
#include <numbers>

#include "platform/M_Tables.h"
#include "platform/TK_Memory.h"

namespace {

/// A table that lives from the first request to the last release.
template <class T> class Shared {
public:
    using Build = void (*)(T* entries);
    constexpr Shared(const char* name, std::size_t count, Build build) : name_(name), count_(count), build_(build) {}

    /// @return 0 or 4
    int acquire() {
        const std::lock_guard lock(mutex_);
        if (entries_ == nullptr) {
            entries_ = static_cast<T*>(TK_AllocatePtr(0, name_, count_ * sizeof(T)));
            if (entries_ == nullptr) return 4;
            build_(entries_);
        }
        ++users_;
        return 0;
    }
    /// @return 0, or 3 when nobody holds the table
    int release() {
        const std::lock_guard lock(mutex_);
        if (users_ == 0) return 3;
        if (--users_ == 0) {
            TK_FreePtr(entries_);
            entries_ = nullptr;
        }
        return 0;
    }
    const T* entries() {
        const std::lock_guard lock(mutex_);
        return entries_;
    }

private:
    std::mutex mutex_;
    const char* name_;
    std::size_t count_;
    Build build_;
    T* entries_ = nullptr;
    int users_ = 0;
};

constexpr std::size_t kProducts = 256 * 256;

std::uint8_t Product(unsigned channel, unsigned alpha) {
    const unsigned t = channel * alpha + 128;
    return static_cast<std::uint8_t>((t + (t >> 8)) >> 8);
}

std::uint8_t Quotient(unsigned channel, unsigned alpha) {
    if (alpha == 0) return 255;
    return static_cast<std::uint8_t>(std::min(255u, (channel * 255 + alpha / 2) / alpha));
}

/// The multiply table, with the divide table behind it.
void BuildColourTables(std::uint8_t* entries) {
    for (unsigned i = 0; i < kProducts; ++i) {
        entries[i] = Product(i & 255, i >> 8);
        entries[kProducts + i] = Quotient(i & 255, i >> 8);
    }
}

constexpr int kTrigSteps = 1024;

void BuildSines(std::int32_t* entries) {
    for (int i = 0; i <= kTrigSteps; ++i) {
        const double sine = std::sin(i * (2 * std::numbers::pi / kTrigSteps));
        entries[i] = static_cast<std::int32_t>(std::lround(sine * 65536));
    }
}

Shared<std::uint8_t> colour_tables("colour tables", 2 * kProducts, BuildColourTables);
Shared<std::int32_t> sines("trigonometry table", kTrigSteps + 1, BuildSines);

/// The largest prime below 65536: walking through the table with any stride visits every entry.
constexpr int kNoiseCount = 65521;

/// Mixes a counter into 64 random bits (splitmix64); the upper half is used.
constexpr std::uint32_t Noise(std::uint64_t counter) {
    std::uint64_t z = (counter + 1) * 0x9E3779B97F4A7C15u;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return static_cast<std::uint32_t>((z ^ (z >> 31)) >> 32);
}

}  // namespace

int M_PrepareFCMD(bool make, bool, int, const std::uint8_t** multiply, const std::uint8_t** divide) {
    const int code = make ? colour_tables.acquire() : 0;
    const std::uint8_t* entries = colour_tables.entries();
    if (multiply != nullptr) *multiply = entries;
    if (divide != nullptr) *divide = entries == nullptr ? nullptr : entries + kProducts;
    return code;
}

int M_UnprepareFCMD() { return colour_tables.release(); }

int M_PrepareFTrig(bool make, bool, int, const std::int32_t** table) {
    const int code = make ? sines.acquire() : 0;
    if (table != nullptr) *table = sines.entries();
    return code;
}

int M_UnprepareFTrig() { return sines.release(); }

int RND_GetPrimeSizedTable(const std::uint32_t** table, std::int32_t* count) {
    static std::array<std::uint32_t, kNoiseCount> values;
    static std::once_flag once;
    std::call_once(once, [] {
        for (std::uint64_t i = 0; i < values.size(); ++i) values[i] = Noise(i);
    });
    *table = values.data();
    *count = kNoiseCount;
    return 0;
}

double M_fmod(double x, double y) { return y == 0 ? 0 : std::fmod(x, y); }
