// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_PixelContainer.h"
#include "QX/indep/QX_Records.h"

template <class Pixel> class QX_EXPORT QX_WorldX;

template <class World8, class World16, class WorldFloat> class QX_PixelContainer : public QX_PixelContainerBase {};

/// An image buffer. It owns its pixels (`New`) or refers to someone else's (`NewReference`), who must outlive
/// it; there is no reference count. Failures throw a code of QX_Errors.h as a plain `int`. No locks: reading
/// from many threads is safe, and so is writing different rectangles of one world.
class QX_EXPORT QX_World
    : public QX_PixelContainer<QX_WorldX<QX_Pixel8>, QX_WorldX<QX_Pixel16>, QX_WorldX<QX_PixelFloat>>,
      public QX_LayerDef {
public:
    // The order of the virtual operations is part of the interface.
    ~QX_World() override = default;
    std::int16_t Depth() const override = 0;
    virtual bool IsReference() const = 0;

    /// Zeroes the rectangle, the whole world when it is null. Kept: on a tightly packed world a full-width
    /// rectangle clears as many bytes as the whole world has, counted from the rectangle's top; on a world
    /// that owns its pixels this ends at the end of its block.
    virtual void Clear(const M_LRect* rect) = 0;
    /// Zeroes all pixels outside the rectangle, never the padding of rows.
    virtual void ClearExceptRect(const M_LRect& rect) = 0;
    /// Stores one colour over the rectangle, the whole world when it is null. An inverted rectangle is empty.
    virtual void Fill(const QX_PixelFloat& colour, const M_LRect* rect) = 0;
    virtual void Fill(const QX_Pixel16& colour, const M_LRect* rect) = 0;
    virtual void FillAlpha() = 0;    ///< full alpha everywhere
    virtual void InvertAlpha() = 0;  ///< full minus alpha everywhere

    /// Colour times alpha and back, against black or a colour, by the routines of QX_Premul.h. Kept: float worlds
    /// throw 3.
    virtual void Premultiply() = 0;
    virtual void Unmultiply() = 0;
    virtual void PremulColor(const QX_Pixel16& colour) = 0;
    virtual void UnmulColor(const QX_Pixel16& colour) = 0;

    /// Copies a rectangle of `src`, of this world's depth, so that its corner lands on (x, y); clipped to both.
    virtual void CopyRect(const QX_World* src, const M_LRect& rect, int x, int y) = 0;
    /// The same from any depth. `dither` adds noise where 16-bit or float pixels become 8-bit ones.
    /// Polls `progress` every 64 rows; its answer is thrown.
    virtual void CopyRectPossiblyDifferentBitdepth(const QX_World* src, const M_LRect& rect, bool dither, int x, int y,
                                                   QX_ProgressInfo* progress) = 0;
    /// At (0, 0), with dither. `field` 1 copies even rows of this world, 2 odd ones, others all.
    virtual void CopyRectPossiblyDifferentBitdepthWithField(const QX_World* src, const M_LRect& rect, int field) = 0;

    /// True when the bytes behind the last pixel of an owned world are no longer as they were made.
    virtual bool SubWorldSafetyGutterHasBeenOverWritten() const = 0;
    /// The block now belongs to someone else; it is not freed here.
    virtual void GiveUpAllocation() = 0;

    /// @param flags  bit 0 asks for a cleared buffer; others have no effect
    static QX_World* New(int width, int height, short depth, int flags);
    static QX_World* New(const M_LRect& rect, short depth, int flags);  ///< its corner becomes the origin
    static QX_World* NewMatchingWorld(const QX_World* like, int flags);
    static QX_World* NewReference(QX_LayerDef* record);
    static QX_World* NewReference(QX_World* parent, const M_LRect& rect);  ///< `rect` is not checked
    static QX_World* NewReference(QX_World* parent, const M_Rect& rect);
    static QX_World* NewReference(void* data, int width, int height, short depth, int rowbytes);

    void CopyWorld(const QX_World* src);  ///< the overlap of both, from corner to corner
    /// Becomes a reference to a rectangle of `source`. Kept: a block that this world owns stays its own, and
    /// is freed in the end with the rowbytes of `source`.
    void ReReference(QX_World* source, const M_LRect& rect);
    void ShrinkToSubRect(const M_LRect& rect);  ///< narrows in place, keeping ownership
    /// True when this is a reference to pixels that lie inside those of `other`.
    bool RefersTo(const QX_World* other) const;
    /// Fills a caller's record; the pixel aspect ratio and the origin are not passed on. Null does nothing.
    void FillOutEffectWorld(QX_LayerDef* out) const;
    void Swizzle();  ///< reverses the four channels of every pixel
};

static_assert(sizeof(QX_World) == 8 + sizeof(QX_LayerDef));

/// A place for a debugger to stop.
QX_EXPORT void QX_WorldDebugger(const QX_World* world);
