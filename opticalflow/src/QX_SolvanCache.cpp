// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/QX_SolvanCache.h"

#include <array>
#include <bit>

#include "platform/tesselcore_MixHash.h"

namespace solvan_of {
namespace {

static_assert(std::endian::native == std::endian::little, "words and fields are written as they lie in memory");

constexpr std::size_t kHeaderWords = 54;
using Header = std::array<std::uint32_t, kHeaderWords>;

/// What the header says of a texture of a record: that all of it is used, from 0 on.
class HeaderWriter {
public:
    explicit HeaderWriter(const SolvanVectorRecord& record) {
        add(record.width);
        add(record.height);
        const auto texture = [&](std::size_t pixel, Addressing mode) {
            add(static_cast<std::int32_t>(pixel) * record.width);
            axis(record.width, mode);
            axis(record.height, mode);
        };
        texture(sizeof(float), Addressing::clamp);
        texture(sizeof(float), Addressing::clamp);
        texture(sizeof(HvVec2), Addressing::background);
        texture(sizeof(HvVec2), Addressing::background);
    }
    const Header& words() const { return words_; }

private:
    void add(std::int32_t word) { words_[count_++] = static_cast<std::uint32_t>(word); }
    void axis(std::int32_t size, Addressing mode) {
        for (const std::int32_t word :
             {size, std::bit_cast<std::int32_t>(0.0f), static_cast<std::int32_t>(mode), 0, size - 1, 0})
            add(word);
    }

    Header words_{};
    std::size_t count_ = 0;
};

std::size_t field_bytes(const SolvanVectorRecord& record) {
    return static_cast<std::size_t>(record.width) * static_cast<std::size_t>(record.height) * sizeof(HvVec2);
}

/// The sizes that the header tells, where all of it is what a record of these sizes has.
bool read_header(const Header& words, std::uint64_t bytes_left, SolvanVectorRecord& record) {
    const std::uint64_t width = words[0], height = words[1];
    if (width == 0 || height == 0 || width > INT32_MAX / sizeof(HvVec2) || height > INT32_MAX) return false;
    record.width = static_cast<std::int32_t>(width);
    record.height = static_cast<std::int32_t>(height);
    return words == HeaderWriter(record).words() && bytes_left % 2 == 0 &&
           bytes_left / 2 / sizeof(HvVec2) / width == height && bytes_left == 2 * field_bytes(record);
}

}  // namespace

std::size_t QX_SolvanCache_Stuff::GetSizeInBytes() const {
    if (record_ == nullptr) return 0;
    return static_cast<std::size_t>(record_->width) * static_cast<std::size_t>(record_->height) * 24 + 1024;
}

bool QX_SolvanCache_Stuff::PurgeFromMemory() {
    const bool had = record_ != nullptr;
    record_.reset();
    return had;
}

int QX_SolvanCache_Stuff::Flatten(KS_Stream& stream) const {
    if (record_ == nullptr) return 3;
    const HeaderWriter header(*record_);
    int code = stream.Write(header.words().data(), sizeof(Header));
    if (code == 0) code = stream.Write(record_->forwardVectors.row(0), field_bytes(*record_));
    if (code == 0) code = stream.Write(record_->backwardVectors.row(0), field_bytes(*record_));
    return code;
}

int QX_SolvanCache_Stuff::Unflatten(KS_Stream& stream) {
    Header words;
    if (const int code = stream.Read(words.data(), sizeof words)) return code;
    auto record = std::make_unique<SolvanVectorRecord>();
    if (!read_header(words, stream.BytesLeft(), *record)) return 3;
    if (record->width != size_.width || record->height != size_.height) return 3;
    for (FloatTexture* frame : {&record->firstFrame, &record->secondFrame}) {
        if (!frame->allocate_clear(record->width, record->height)) return 4;
        frame->setAddressing(Addressing::clamp, Addressing::clamp);
    }
    for (FieldTexture* field : {&record->forwardVectors, &record->backwardVectors}) {
        if (!field->allocate(record->width, record->height)) return 4;
        if (const int code = stream.Read(field->row(0), field_bytes(*record))) return code;
    }
    record_ = std::move(record);
    return 0;
}

Guid vectors_identity(const QX_Solvan_AlgoParams& algo, const Guid& first, const Guid& second) {
    static constexpr char kName[] = "Solvan Vectors";
    constexpr std::uint32_t kNameLength = sizeof kName - 1;
    tesselcore::utility::MixHash hash(kNameLength);
    hash.MixInData(kName, kNameLength);
    for (const Guid& id : {first, second}) {
        std::uint8_t bytes[sizeof(Guid)];
        tesselcore::utility::GuidToBytes(id, bytes);
        hash.MixInData(bytes, sizeof bytes);
    }
    for_each_field(
        algo, [&](const void* bytes, std::size_t count) { hash.MixInData(bytes, static_cast<std::uint32_t>(count)); });
    return hash.ToGuid();
}

}  // namespace solvan_of
