// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/shared_ptr.hpp>

#include "QX/indep/QX_Export.h"
#include "QX/indep/QX_WorldDepth.h"
#include "QX/world/QX_World.h"
#include "platform/FK_Frames.h"
#include "platform/M_Geometry.h"

/// Names of colour spaces that hosts know.
inline constexpr const char* kQX_BT709_RGB_Full = "BT.709 RGB Full";
inline constexpr const char* kQX_BT2020_RGB_Full = "BT.2020 RGB Full";

/// Worlds and the host's frames, each as the other, without a copy of pixels where that can be. A missing interface
/// that is needed is thrown as tesselcore::classref::NullInterfaceException, a failed allocation as std::bad_alloc. No
/// locks: frames and worlds belong to their callers, counts of references are atomic.
namespace vn::qx::VideoFrameFactory {

/// A world on a frame's memory, to be deleted, which keeps the frame alive. A frame on the GPU is read back first.
/// @return null for no frame, a depth that is none of 8, 16, 32 (by the bytes of its format alone), or a side below 1
QX_EXPORT QX_World* CreateFromIVideoFrame(const InterfaceRef<MK::IVideoFrame>& frame);

/// A frame on a world's memory; while it lives, data, size and rows of the world are not to change.
/// @param flip        the world's last row comes first
/// @param format      in place of the world's own; taken as it comes
/// @return none for a null world
QX_EXPORT InterfaceRef<MK::IVideoFrame> CreateFromQXWorld(QX_World* world,
                                                          const tesselmediatypes::color::ColorSpace& color_space,
                                                          bool flip, const tesselmediatypes::PixelFormat* format);
/// The same; the frame keeps the world alive.
QX_EXPORT InterfaceRef<MK::IVideoFrame> CreateFromQXWorld(const boost::shared_ptr<QX_World>& world,
                                                          const tesselmediatypes::color::ColorSpace& color_space,
                                                          bool flip, const tesselmediatypes::PixelFormat* format);

/// The record of a new frame in a device's memory, which the device is held for while it is made. Whoever has the
/// record disposes of the handle in it, then frees it by TK_FreePtr; it bears no mark of ownership.
/// @param rect  its left and top are the frame's origin
/// @return null for no device. Throws 3 after a report for a format of no depth, 4 for a frame that cannot be had.
QX_EXPORT QX_LayerDef* CreateGPUEffectWorld(const boost::shared_ptr<GK::Device>& device, const RectT<int>& rect,
                                            const tesselmediatypes::PixelAspectRatio& aspect, std::int32_t field_type,
                                            bool clear, tesselmediatypes::PixelFormat format);

/// Makes a record of a frame on the GPU. One of a processor's frame would be taken for a GPU world as soon as it has a
/// handle, and for one of 8 bits without. A frame without its interface of memory leaves the record as it is.
QX_EXPORT void InitEffectWorldFromIVideoFrame(const InterfaceRef<MK::IVideoFrame>& frame, QX_LayerDef* record);

/// The GPU's frame behind a record; none where there is none.
QX_EXPORT InterfaceRef<MK::IVideoFrame> GetGPUIVFFromQXEffectWorld(const QX_LayerDef* record);
/// Null for a null record.
QX_EXPORT VPix** GetGPUVPixFromQXEffectWorld(const QX_LayerDef* record);
/// A null record is left alone.
QX_EXPORT void MapEffectWorldToVPix(VPix** handle, QX_LayerDef* record);

}  // namespace vn::qx::VideoFrameFactory

/// The device's address of a float frame that lives on the GPU. A frame of another format gives null after a report.
/// @return 0; 516 after a report for a world without a frame on the GPU
QX_EXPORT int QX_GetPixelDataFloatGPU(const QX_LayerDef* world, void** out);
