// SPDX-License-Identifier: Apache-2.0
// The keys that objects of a scene file may have, which the reader and the schema of the file share.
#pragma once

namespace qx::scene {

inline constexpr const char* kSceneKeys[] = {"$schema",    "size",   "depth",   "dither",    "orient",
                                             "rate",       "frames", "space",   "linearize", "output-space",
                                             "background", "layers", "comment", "output"};
inline constexpr const char* kOutputKeys[] = {"compression", "jpeg-quality", "half",    "flatten",     "depth",
                                              "codec",       "crf",          "bitrate", "pixel-format"};
inline constexpr const char* kFileKeys[] = {"name", "offset", "profile"};
inline constexpr const char* kClipKeys[] = {"clip",   "offset",  "speed", "map",    "rate",
                                            "method", "quality", "cuts",  "profile"};
/// Of every layer; what it shows has keys besides.
inline constexpr const char* kLayerKeys[] = {
    "mode", "opacity", "mask",    "effects", "field", "quality", "transform", "shutter",     "rgb-only", "linear",
    "seed", "name",    "comment", "in",      "out",   "visible", "parent",    "matte-layer", "at"};
inline constexpr const char* kFileSourceKeys[] = {"file", "matte", "missing"};
inline constexpr const char* kSolidSourceKeys[] = {"solid", "size"};
inline constexpr const char* kGradientSourceKeys[] = {"gradient", "size"};
inline constexpr const char* kGroupSourceKeys[] = {"layers", "size"};
inline constexpr const char* kTextSourceKeys[] = {"text", "font", "size", "colour", "align", "line-height", "width"};
inline constexpr const char* kGradientKeys[] = {"kind", "from", "to", "stops"};
inline constexpr const char* kStopKeys[] = {"at", "colour"};
inline constexpr const char* kMaskKeys[] = {"file", "kind", "at", "transform"};
inline constexpr const char* kMatteLayerKeys[] = {"layer", "kind"};
inline constexpr const char* kTransformKeys[] = {"anchor", "translate", "scale", "rotate", "matrix"};
inline constexpr const char* kShutterKeys[] = {"angle", "phase", "matrices"};
inline constexpr const char* kPlugInKeys[] = {"plugin", "parameters", "comment"};
inline constexpr const char* kTrackKeys[] = {"keys", "interpolation"};
inline constexpr const char* kBezierKeys[] = {"bezier"};
inline constexpr const char* kKeyKeys[] = {"frame", "value", "interpolation"};

}  // namespace qx::scene
