// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "QX/world/QX_World.h"

/// The world of one pixel type. Cheap enough to be placed on the stack around a record on every call: the
/// wrapping constructors allocate nothing and own nothing.
template <class Pixel> class QX_EXPORT QX_WorldX : public QX_World {
public:
    QX_WorldX(int width, int height, int flags);
    /// Wraps: takes over size, rowbytes, data, flags and extent hint. What `record` has beside these is not copied.
    /// `keepRest` promises callers nothing: memory that was never written cannot be kept, so the rest starts at
    /// zero either way.
    QX_WorldX(QX_LayerDef* record, bool keepRest);
    QX_WorldX(QX_WorldX* parent, const M_LRect& rect);
    QX_WorldX(void* data, int width, int height, int rowbytes);
    ~QX_WorldX() override;
    QX_WorldX(const QX_WorldX&) = delete;
    QX_WorldX& operator=(const QX_WorldX&) = delete;

    std::int16_t Depth() const override;
    bool IsReference() const override { return allocation == nullptr; }
    void Clear(const M_LRect* rect) override;
    void ClearExceptRect(const M_LRect& rect) override;
    void Fill(const QX_PixelFloat& colour, const M_LRect* rect) override;
    void Fill(const QX_Pixel16& colour, const M_LRect* rect) override;
    void FillAlpha() override;
    void InvertAlpha() override;
    void Premultiply() override;
    void Unmultiply() override;
    void PremulColor(const QX_Pixel16& colour) override;
    void UnmulColor(const QX_Pixel16& colour) override;
    void CopyRect(const QX_World* src, const M_LRect& rect, int x, int y) override;
    void CopyRectPossiblyDifferentBitdepth(const QX_World* src, const M_LRect& rect, bool dither, int x, int y,
                                           QX_ProgressInfo* progress) override;
    void CopyRectPossiblyDifferentBitdepthWithField(const QX_World* src, const M_LRect& rect, int field) override;
    bool SubWorldSafetyGutterHasBeenOverWritten() const override;
    void GiveUpAllocation() override;

    /// First pixel of a row. `y` lies in the world.
    Pixel* Row(int y) { return reinterpret_cast<Pixel*>(static_cast<std::byte*>(data) + std::ptrdiff_t{y} * rowbytes); }
    const Pixel* Row(int y) const { return const_cast<QX_WorldX*>(this)->Row(y); }

protected:
    std::int16_t allocated_width = 0;  ///< 0 in a world that was not made by allocation
    std::int16_t allocated_height = 0;
    void* allocation = nullptr;  ///< the block as the frame allocator gave it, before alignment

private:
    template <class Colour> void FillWith(const Colour& colour, const M_LRect* rect);
    void PremultiplyBlack(bool forward);
    void Matte(const QX_Pixel16& colour, bool forward);
    std::size_t BlockSize() const;
    const std::byte* BlockEnd() const;
};

extern template class QX_WorldX<QX_Pixel8>;
extern template class QX_WorldX<QX_Pixel16>;
extern template class QX_WorldX<QX_PixelFloat>;

static_assert(sizeof(QX_WorldX<QX_Pixel8>) == sizeof(QX_World) + 16);

namespace qx {
/// Worlds alive that own their pixels. For inspection only.
QX_EXPORT std::int32_t live_world_count();
/// Starts the count over, at the library's start.
QX_EXPORT void reset_live_world_count();
}  // namespace qx
