// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

/// Frames between frames by optical flow once more, for tests alone: one number after the other, no lanes, no lists in
/// blocks, whole copies where the engine keeps rows. It includes nothing of the engine, so that a fault there is no
/// fault here. All quantities are 32-bit floats in the order that is written; the build fuses nothing.
namespace flow_model {

inline constexpr float kInvalid = 3.4028235e38F;  ///< x of a vector that is not there

inline float real(int i) { return static_cast<float>(i); }

/// Scaled by k it leads from pixel (x, y) to (x + 0.5 - k * v.x, y + 0.5 + k * v.y).
struct Vec {
    float x = 0, y = 0;
    bool operator==(const Vec&) const = default;  // equal floats, not equal bits; NaN is nobody's twin
    bool valid() const { return x != kInvalid; }
    bool valid_parts() const { return x != kInvalid && y != kInvalid; }
};

/// What lies beyond the edge of a texture.
enum class Edge { background, clamp, mirror, wrap };
/// The index that stands for `i`; -1 for the background.
int address(int i, int size, Edge edge);

/// A position as integer and fraction. NaN and huge ones have integers too.
struct Whole {
    int index;
    float fraction;
};
Whole whole(float position);

inline std::size_t place(int w, int x, int y) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(w) + static_cast<std::size_t>(x);
}
inline std::size_t area(int w, int h) { return place(w, 0, h); }

/// Luminance, or costs of cells. Reads beyond the edge are clamped.
struct Image {
    int w = 0, h = 0;
    std::vector<float> px;
    Image() = default;
    Image(int width, int height, float value = 0) : w(width), h(height), px(area(width, height), value) {}
    float& at(int x, int y) { return px[place(w, x, y)]; }
    float read(int x, int y) const { return px[place(w, address(x, w, Edge::clamp), address(y, h, Edge::clamp))]; }
    /// Between (i, j) and its neighbours to the right and below.
    float mix(int i, int j, float fx, float fy) const;
};

struct Field {
    int w = 0, h = 0;
    std::vector<Vec> px;
    Vec background{};
    Edge edge = Edge::background;
    Field() = default;
    Field(int width, int height, Vec value = {}) : w(width), h(height), px(area(width, height), value) {}
    bool has(int x, int y) const { return x >= 0 && x < w && y >= 0 && y < h; }
    Vec& at(int x, int y) { return px[place(w, x, y)]; }
    const Vec& at(int x, int y) const { return px[place(w, x, y)]; }
    Vec read(int x, int y) const;
    /// Bilinear at (x, y), pixel centres at halves; invalid vectors are numbers like others.
    Vec bilinear(float x, float y) const;
};

/// Occlusion states, or which cells have changed.
struct States {
    int w = 0, h = 0;
    std::vector<int> px;
    States() = default;
    States(int width, int height, int value = 0) : w(width), h(height), px(area(width, height), value) {}
    bool has(int x, int y) const { return x >= 0 && x < w && y >= 0 && y < h; }
    int& at(int x, int y) { return px[place(w, x, y)]; }
    int at(int x, int y) const { return px[place(w, x, y)]; }
};

using Colour = std::array<float, 4>;  ///< alpha, red, green, blue as the world holds them, in float

struct Frame {
    int w = 0, h = 0, depth = 8;
    std::vector<Colour> px;
    Frame() = default;
    Frame(int width, int height, int bits, Colour colour = {})
        : w(width), h(height), depth(bits), px(area(width, height), colour) {}
    float range() const { return depth == 8 ? 255.0F : depth == 16 ? 32768.0F : 1.0F; }
    Colour& at(int x, int y) { return px[place(w, x, y)]; }
    const Colour& read(int x, int y) const {
        return px[place(w, address(x, w, Edge::clamp), address(y, h, Edge::clamp))];
    }
    /// What a channel of this depth holds of `value`: clamped and truncated, save in float.
    float stored(float value) const;
};

/// The record of a render; percentages are fractions already.
struct Params {
    int mode = 2;
    float detail = 0.2F;
    float estimator_smoothness = 500, refine_smoothness = 500;
    int iterations = 5;
    float convergence = 0.01F;
    bool sinc = false;
    int block = 6;
    double red = 0.2988804, green = 0.58676529, blue = 0.11435428;
    float shutter = 180;
    int samples = 1;
};

/// Rows go to parts; parts run one after the other, from either end, which must not show.
struct Parts {
    int count = 1;
    bool reversed = false;
    Parts(int n, bool backwards = false) : count(n), reversed(backwards) {}  // NOLINT: a number of parts is parts
};
struct Rows {
    int begin, end;
    bool has(int y) const { return y >= begin && y < end; }
};
Rows rows_of(int part, int count, int rows);
void each_part(const Parts& parts, int rows, const std::function<void(Rows)>& body);

// Candidates (Candidates.cpp)

struct Random {
    std::uint32_t state = 0;
    int next();
};

using List = std::vector<Vec>;
/// Without the invalid and without twins, of which the first stays.
List filtered(const List& list);
void shuffle(List& list, Random& random);       ///< pairs of places, half as many as there are entries
void shuffle_each(List& list, Random& random);  ///< every place with another
Vec neighbour_mean(const Field& field, int x, int y);
/// Rows outside of `part` as they were before the pass, those inside as they are.
Vec neighbour_mean(const Field& now, const Field& before, Rows part, int x, int y);

/// Which cells have changed since the last run.
struct Monitor {
    States map;
    Field saved;
    bool first = true, all = false, saw_invalid = false;
    void run(const Field& field);
    List candidates(int x, int y) const;
};

struct Weights {
    float data = 1, smoothness = 1;
};
Weights weights_of(float balance);

// Working frames (Working.cpp)

Image luminance(const Frame& frame, const Params& params);
Image box_blur(const Image& image, float rx, float ry, int passes);
Image nearest(const Image& image, int w, int h, float scale);
/// At the size of the vectors; no pixels where that is nothing.
Image working_frame(const Frame& frame, const Params& params);
/// `mask` has values of 8 bits. What it hides becomes the mean of what it shows.
Image masked_working_frame(const Frame& frame, const Image& mask, const Params& params, const Parts& parts);
int level_count(int w, int h);
std::vector<Image> pyramid(const Image& image, int levels);

// Estimator and smoothing of blocks (Estimator.cpp, Blocks.cpp)

inline constexpr int kOverlap = 2;

struct Block {
    int left, top, right, bottom;
};
Block block_of(const Image& image, int gx, int gy, int size);
int grid_size(int pixels, int size);

struct Step {
    Vec v;
    float error;
    bool refused;
};
Step solve_step(const Image& first, const Image& second, const Block& block, Vec v, float threshold);
Vec solve(const Image& first, const Image& second, const Block& block, Vec start, float threshold);
float quantised(float value, int level);
void quantise(Field& grid, int level);

/// Invalid where too little of the block meets the other image.
float block_error(const Image& first, const Image& second, const Block& block, Vec v);
/// One pass. `costs` are kept from pass to pass of a level and begin as invalid.
void smooth_blocks(Field& grid, Image& costs, const Monitor& monitor, const Image& first, const Image& second, int size,
                   const Weights& weights, const Parts& parts);
void settle_blocks(Field& grid, const Image& first, const Image& second, int size, const Weights& weights,
                   const Parts& parts);

Field zoom_nearest(const Field& from, int w, int h, bool scale_values);
/// A vector a pixel of `second`, into `first`.
Field estimate(const Image& first, const Image& second, const Params& params, const Parts& parts);

// Refinement (Refine.cpp)

/// Of luminance at a position; invalid beyond the ring of one pixel.
float ring_sample(const Image& image, float x, float y);
Field initial_assignment(const Field& in, const Image& first, const Image& second, int size, const Weights& weights,
                         const Parts& parts);
void refine_pass(Field& field, const Monitor& monitor, const Image& first, const Image& second, const Weights& weights,
                 const Parts& parts);
Field refine(const Field& in, const Image& first, const Image& second, const Params& params, const Parts& parts);

// Tweener (Tween.cpp, Occlusion.cpp)

struct Tween {
    int w = 0, h = 0;
    float t = 0.5F;
    int iterations = 5, occlusion_rounds = 1;
    float symmetry = 10;
    Weights weights;
    unsigned flags = 0x438;
    Image frame0, frame1;
    Field forward, backward;  ///< at frame 0, at frame 1
    States map;
    Field to1, to0;                    ///< results
    std::vector<List> lists1, lists0;  ///< candidates a pixel, of the vectors to frame 1 and to frame 0
    unsigned word = 0x2;               ///< of the passes
    unsigned pass = 0;
    Monitor monitor1{}, monitor0{};

    List& list1(int x, int y) { return lists1[place(w, x, y)]; }
    List& list0(int x, int y) { return lists0[place(w, x, y)]; }
};
/// Lists of both directions; those of the result begin empty.
void temporal_candidates(Tween& tween);
void tween_pass(Tween& tween, const Parts& parts);
void iterate_candidates(Tween& tween, const Parts& parts);
bool guess_occlusion(Tween& tween);   ///< one pass; whether the changed word was set
bool smooth_occlusion(Tween& tween);  ///< likewise
void blank_occlusion(Tween& tween);
void guess_occlusions(Tween& tween);
/// Result fields and map from everything above them.
void run_tween(Tween& tween, const Parts& parts);

// Pictures (Picture.cpp)

float rounded_position(double position);
/// Bilinear from field pixels to pixels of a target; `scale` leads from these to those.
Field enlarged(const Field& field, int w, int h, float scale);
States enlarged(const States& map, int w, int h);
Colour bilinear(const Frame& frame, float x, float y);
Colour windowed_sinc(const Frame& frame, float x, float y);

struct PictureFlags {
    bool sinc = false;
    bool paint_states = false;
    bool nearer_alone = false;
};
/// Fields and map have the size of the picture; `scale` is its width by the width of the vectors.
Frame build_picture(const Frame& frame0, const Frame& frame1, const Field& to1, const Field& to0, const States& map,
                    float scale, float t, const PictureFlags& flags);
Frame blend(const Frame& a, const Frame& b, float t, int w, int h);
Frame copy(const Frame& frame, int w, int h);
Frame mean_of_equal_passes(const Frame& pass, int passes);

// Whole renders (Render.cpp)

struct Pair {
    int code = 0;
    Image frame0, frame1;
    Field forward, backward;
};
Pair vectors(const Frame& frame0, const Frame& frame1, const Params& params, const Parts& parts);
Pair vectors(const Image& frame0, const Image& frame1, const Params& params, const Parts& parts);
/// Both fields as they are seen at `t`.
Tween tweened(const Pair& pair, float t, const Params& params, const Parts& parts);
Frame picture(const Frame& frame0, const Frame& frame1, const Pair& pair, double position, const Params& params,
              const Parts& parts);

struct Rendered {
    int code = 0;
    Frame frame;
};
Rendered render(const Frame& frame0, const Frame& frame1, int w, int h, double position, const Params& params,
                const Parts& parts);
/// The fields at the time of frame 0 in a buffer's size, as the entry for buffers writes them; masks may be null.
struct BufferFields {
    int code = 0;
    Field forward, backward;
};
BufferFields buffer_fields(const Frame& frame0, const Frame& frame1, const Image* mask0, const Image* mask1, int w,
                           int h, const Params& params, const Parts& parts);

}  // namespace flow_model
