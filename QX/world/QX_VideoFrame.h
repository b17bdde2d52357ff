// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>
#include <cstdint>

#include "QX/world/QX_WorldX.h"
#include "platform/FK_Frames.h"

/// What a RecycledMemoryVideoFrame shows of a world.
struct RecycledMemoryFields {
    std::uint64_t size;  ///< bytes of all rows
    tesselmediatypes::PixelFormat format;
    MK::FrameBounds bounds;       ///< from the world's origin to its end
    std::int32_t stored_size[4];  ///< width and height, twice
    tesselmediatypes::PixelAspectRatio aspect;
    std::int32_t field_type;
    tesselmediatypes::color::ColorSpace color_space;
    boost::shared_ptr<QX_World> world;  ///< kept alive; null where its owner does that
    void* pixels;                       ///< the first row to present
    std::int32_t stride;                ///< to the next row; negative for a flipped frame
    std::uint32_t pixel_bytes;
};

/// The interfaces of a frame that shows the memory of a world.
class RecycledMemoryVideoFrameBase : public TK_MemTrackedObject,
                                     public MK::IVideoFrame,
                                     public FK::IVideoFrameMemoryAccess,
                                     public FK::IVideoFrame2DPixelMemoryAccess,
                                     public MK::IVideoFrameClearable {
public:
    explicit RecycledMemoryVideoFrameBase(RecycledMemoryFields fields) : fields_(std::move(fields)) {}

    tesselmediatypes::PixelFormat GetPixelFormat() const override { return fields_.format; }
    MK::FrameBounds GetBounds() const override { return fields_.bounds; }
    tesselmediatypes::PixelAspectRatio GetPixelAspectRatio() const override { return fields_.aspect; }
    std::int32_t GetFieldType() const override { return fields_.field_type; }
    tesselmediatypes::color::ColorSpace GetColorSpace() const override { return fields_.color_space; }
    void* GetMemory() const override;  ///< the lowest row, from which the size counts
    std::uint64_t GetSize() const override { return fields_.size; }
    void* GetPixels() const override { return fields_.pixels; }
    std::int32_t GetRowBytes() const override { return fields_.stride; }  ///< of both interfaces of memory
    std::int32_t GetWidth() const override { return fields_.stored_size[0]; }
    std::int32_t GetHeight() const override { return fields_.stored_size[1]; }
    void Clear() override;  ///< the pixels of its rows, not what lies between them

protected:
    ~RecycledMemoryVideoFrameBase() = default;
    void* find_interface(const Guid& id) noexcept;

private:
    RecycledMemoryFields fields_;
};

class RecycledMemoryVideoFrame final : public FK::VideoFrameTemplate<RecycledMemoryVideoFrameBase> {
public:
    using VideoFrameTemplate::VideoFrameTemplate;

private:
    ~RecycledMemoryVideoFrame() override = default;
};

/// A world on the memory of a frame, which it keeps alive.
template <class Pixel> class QX_World_IVideoFrame final : public QX_WorldX<Pixel> {
public:
    QX_World_IVideoFrame(void* data, int width, int height, int rowbytes, InterfaceRef<MK::IVideoFrame> shown)
        : QX_WorldX<Pixel>(data, width, height, rowbytes), frame(std::move(shown)) {}

    InterfaceRef<MK::IVideoFrame> frame;
};
