// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>

#include "opticalflow/src/VectorRecord.h"
#include "platform/KS_Cache.h"

namespace solvan_of {

/// Number of the engine's results: raised whenever any vector of any pair changes, so that old ones are not found.
inline constexpr std::uint32_t kEngineNumber = 1;

/// A pair's vectors in the host's cache.
class QX_SolvanCache_Stuff : public KS_Stuff {
public:
    /// An item without data, for vectors of this size: no others are read into it.
    explicit QX_SolvanCache_Stuff(const FieldSize& size) : size_(size) {}
    explicit QX_SolvanCache_Stuff(std::unique_ptr<SolvanVectorRecord> record) : record_(std::move(record)) {}

    std::uint32_t GetEngineNumber() const override { return kEngineNumber; }
    std::size_t GetSizeInBytes() const override;
    bool PurgeFromMemory() override;
    bool HasData() const override { return record_ != nullptr; }
    /// Sizes and axes of both frames and both fields, and the fields. Luminance is not written.
    int Flatten(KS_Stream& stream) const override;
    int Unflatten(KS_Stream& stream) override;

    SolvanVectorRecord& record() { return *record_; }
    /// Held while luminance that was not written is made anew.
    std::mutex& luminance_lock() { return luminance_lock_; }

private:
    std::unique_ptr<SolvanVectorRecord> record_;
    FieldSize size_{};
    std::mutex luminance_lock_;
};

/// The identity of a pair's vectors: of the frames, and of every algorithm field.
Guid vectors_identity(const QX_Solvan_AlgoParams& algo, const Guid& first, const Guid& second);

/// Calls take(bytes, count) for every algorithm field in its order, low byte first.
template <class Take> void for_each_field(const QX_Solvan_AlgoParams& p, const Take& take) {
    const auto field = [&](const auto& value) { take(&value, sizeof value); };
    field(p.interpolationMode);
    field(p.vectorDetail);
    field(p.estimatorSmoothness);
    field(p.refineSmoothness);
    field(p.refineIterations);
    field(p.convergenceError);
    field(p.highQualityFilter);
    field(p.blockSize);
    field(p.lumaRed);
    field(p.lumaGreen);
    field(p.lumaBlue);
    field(p.shutterAngle);
    field(p.sampleCount);
    field(p.reservedChoice);
}

}  // namespace solvan_of
