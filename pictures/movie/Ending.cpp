// SPDX-License-Identifier: Apache-2.0
// Whether a file was cut off: the libraries give what there is, and do not tell.
#include "pictures/movie/Ending.h"

#include <sys/types.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string_view>

namespace qx::movie {
namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

class Bytes {
public:
    explicit Bytes(const char* file) : file_(std::fopen(file, "rb")) {
        if (file_ == nullptr || ::fseeko(file_.get(), 0, SEEK_END) != 0) return;
        count_ = ::ftello(file_.get());
    }
    std::int64_t count() const { return count_; }
    /// Reads the bytes from a place on. @return false where there are not so many
    bool look_at(std::int64_t place, std::size_t bytes) {
        return place >= 0 && place <= count_ && bytes <= head_.size() && ::fseeko(file_.get(), place, SEEK_SET) == 0 &&
               std::fread(head_.data(), 1, bytes, file_.get()) == bytes;
    }
    unsigned byte(std::size_t at) const { return head_[at]; }
    std::string_view text(std::size_t at) const { return {reinterpret_cast<const char*>(head_.data()) + at, 4}; }
    std::uint64_t high_first(std::size_t at, std::size_t bytes) const {
        std::uint64_t number = 0;
        for (std::size_t i = 0; i < bytes; ++i) number = number << 8 | head_[at + i];
        return number;
    }
    std::int64_t low_first(std::size_t at) const {
        std::int64_t number = 0;
        for (std::size_t i = 4; i-- > 0;) number = number << 8 | head_[at + i];
        return number;
    }

private:
    std::unique_ptr<std::FILE, Close> file_;
    std::int64_t count_ = -1;
    std::array<unsigned char, 16> head_{};
};

constexpr std::int64_t kFarthest = std::int64_t{1} << 60;

std::int64_t missing(const Bytes& file, std::int64_t end) { return std::max<std::int64_t>(end - file.count(), 0); }

/// A chain of boxes. What follows the last one and is none is left alone; fragments may end with any of them.
std::optional<std::int64_t> missing_of_boxes(Bytes& file) {
    constexpr std::string_view known[] = {"ftyp", "moov", "mdat", "free", "skip", "wide", "uuid", "meta", "pnot"};
    std::int64_t place = 0;
    while (file.look_at(place, 8) && std::ranges::find(known, file.text(4)) != std::end(known)) {
        std::uint64_t length = file.high_first(0, 4);
        if (length == 0) return 0;  // to the end, wherever that is
        if (length == 1 && file.look_at(place, 16)) length = file.high_first(8, 8);
        if (length < 8 || length > kFarthest) return std::nullopt;
        place += static_cast<std::int64_t>(length);
        if (place >= file.count()) return missing(file, place);
    }
    return std::nullopt;
}

/// Large files have several lists, one behind the other.
std::optional<std::int64_t> missing_of_lists(Bytes& file) {
    constexpr std::int64_t slack = 8, unknown = 0xFFFFFFFF;  // some count the head, or leave out the last byte of two
    std::int64_t place = 0;
    while (file.look_at(place, 8) && file.text(0) == "RIFF") {
        const std::int64_t length = file.low_first(4);
        if (length == 0 || length == unknown) return std::nullopt;
        place += 8 + length + length % 2;
    }
    return place > file.count() + slack ? missing(file, place) : 0;
}

/// An element's number of bytes, and its own: the first one tells by its leading zeros how many there are.
struct Size {
    std::uint64_t value;
    std::size_t bytes;
    bool is_unknown() const { return value == (std::uint64_t{1} << 7 * bytes) - 1; }
};
std::optional<Size> size_at(Bytes& file, std::int64_t place) {
    if (!file.look_at(place, 1) || file.byte(0) == 0) return std::nullopt;
    std::size_t bytes = 1;
    while ((file.byte(0) << bytes & 0x100) == 0) ++bytes;
    if (!file.look_at(place, bytes)) return std::nullopt;
    return Size{file.high_first(0, bytes) & ((std::uint64_t{1} << 7 * bytes) - 1), bytes};
}

/// A head, and one element with all that follows.
std::optional<std::int64_t> missing_of_elements(Bytes& file) {
    constexpr std::uint64_t segment = 0x18538067;
    const auto head = size_at(file, 4);
    if (!head || head->value > 1 << 20) return std::nullopt;
    const std::int64_t place = 4 + static_cast<std::int64_t>(head->bytes + head->value);
    if (!file.look_at(place, 4) || file.high_first(0, 4) != segment) return std::nullopt;
    const auto size = size_at(file, place + 4);
    if (!size || size->is_unknown() || size->value > kFarthest) return std::nullopt;
    return missing(file, place + 4 + static_cast<std::int64_t>(size->bytes + size->value));
}

}  // namespace

std::optional<std::int64_t> missing_bytes(const char* name) {
    Bytes file(name);
    if (!file.look_at(0, 12)) return std::nullopt;
    constexpr std::uint64_t elements = 0x1A45DFA3;
    if (file.high_first(0, 4) == elements) return missing_of_elements(file);
    if (file.text(0) == "RIFF" && file.text(8) == "AVI ") return missing_of_lists(file);
    return missing_of_boxes(file);
}

}  // namespace qx::movie
