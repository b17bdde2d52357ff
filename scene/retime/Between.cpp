// SPDX-License-Identifier: Apache-2.0
#include "scene/retime/Between.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "QX/indep/QX_Errors.h"
#include "QX/pixelops/QX_Premul.h"
#include "opticalflow/src/QX_AdvancedFrameBlending.h"
#include "pictures/Carried.h"
#include "scene/Faults.h"
#include "scene/retime/FrameId.h"
#include "scene/retime/Rims.h"

namespace qx::scene {
namespace {

/// Colours times alpha, or back; black where there is none.
void multiply(bool forward, QX_World& world, const std::string& subject) {
    constexpr QX_PixelFloat black{1, 0, 0, 0};
    QX_LayerDef record{};
    world.FillOutEffectWorld(&record);
    must(QX_PremulColorFloat(nullptr, &record, &black, forward, &record), subject);
}

bool equal_worlds(const QX_World* a, const QX_World* b) {
    if (a == nullptr || b == nullptr) return a == b;
    if (a->Depth() != b->Depth() || a->width != b->width || a->height != b->height) return false;
    const auto bytes = static_cast<std::size_t>(a->width) * static_cast<std::size_t>(a->Depth() / 2);
    const auto row = [](const QX_World* world, int y) {
        return static_cast<const char*>(world->data) + std::ptrdiff_t{y} * world->rowbytes;
    };
    for (int y = 0; y < a->height; ++y) {
        if (std::memcmp(row(a, y), row(b, y), bytes) != 0) return false;
    }
    return true;
}

int depth_of_results(int asked, const pictures::Picture& first, const pictures::Picture& second) {
    return asked != 0 ? asked : std::max(first.world->Depth(), second.world->Depth());
}

}  // namespace

double flow_position(double position) {
    const float steps = std::floor((static_cast<float>(position) + 0.0025f) / 0.005f);
    return static_cast<double>(steps * 0.005f);
}

SharedPicture brought_to_depth(const std::string& subject, const SharedPicture& picture, int depth) {
    const int own = picture->world->Depth();
    if (depth == 0 || own == depth) return picture;
    auto copy = std::make_shared<pictures::Picture>();
    copy->about() = picture->about();
    copy->carried = picture->carried;
    copy->world = pictures::at_depth(subject, *picture->world, own);
    pictures::bring_to_depth(subject, *copy, depth);
    return copy;
}

bool equal_pictures(const pictures::Picture& a, const pictures::Picture& b) {
    return equal_worlds(a.world.get(), b.world.get()) && equal_worlds(a.carried.get(), b.carried.get());
}

FramePair::FramePair(std::string subject, SharedPicture first, SharedPicture second, const BetweenOptions& options)
    : subject_(std::move(subject)),
      first_(std::move(first)),
      second_(std::move(second)),
      options_(options),
      depth_(depth_of_results(options.depth, *first_, *second_)),
      work_depth_(options.depth == 0 && depth_ == 8 ? 16 : depth_),
      percentages_(in_percent(fitted(options.flow, first_->world->width, first_->world->height))),
      are_equal_(equal_pictures(*first_, *second_)) {}

FramePair::Kind FramePair::kind(double position) const {
    if (are_equal_) return Kind::first;
    if (options_.method == BetweenMethod::nearest) return position > 0.5 ? Kind::second : Kind::first;
    const double taken = options_.method == BetweenMethod::flow ? flow_position(position) : position;
    return taken <= 0 ? Kind::first : taken >= 1 ? Kind::second : Kind::made;
}

FramePair::World FramePair::like(const QX_World& frame) const {
    return pictures::new_world(subject_, frame.width, frame.height, work_depth_, false);
}

FramePair::World FramePair::opaque_copy(const QX_World& frame) const {
    World copy = pictures::at_depth(subject_, frame, work_depth_);
    copy->FillAlpha();
    return copy;
}

FramePair::Ready FramePair::ready(const pictures::Picture& frame) const {
    pictures::Picture copy;
    copy.carried = frame.carried;
    copy.world = pictures::at_depth(subject_, *frame.world, frame.world->Depth());
    pictures::bring_to_depth(subject_, copy, work_depth_);
    Ready ready;
    ready.world = std::move(copy.world);
    ready.is_transparent = pictures::any_transparency(*ready.world);
    if (ready.is_transparent) multiply(true, *ready.world, subject_);
    ready.id = frame_id(*ready.world);
    return ready;
}

void FramePair::get_ready() {
    const std::lock_guard lock(mutex_);
    if (is_ready_) return;
    first_ready_ = ready(*first_);
    second_ready_ = ready(*second_);
    is_ready_ = true;
}

void FramePair::render(QX_SolvanMode mode, double position, QX_World& first, QX_World& second, QX_World& output,
                       pictures::Watch& watch) const {
    QX_Solvan_AlgoParams algo = percentages_;
    algo.interpolationMode = mode;
    QX_Solvan_OtherParams other{};
    other.firstTime = {0, 1};
    other.secondTime = {1, 1};
    other.firstFrameId = first_ready_.id;
    other.secondFrameId = second_ready_.id;
    other.position = position;
    void* heard = &watch;
    QX_AdvancedFrameBlending engine(algo, other, {stop_code, &heard});
    must(engine.Render(&first, &second, &output), subject_);
}

/// What no vector reached takes the mix of the frames. Their alpha tells of it where they are opaque; others are asked
/// a second time as if they were. Their vectors, which never see alpha, are the same.
FramePair::World FramePair::tweened(double position, pictures::Watch& watch) {
    QX_World &first = *first_ready_.world, &second = *second_ready_.world;
    World output = like(first);
    {
        std::unique_lock lock(vectors_);
        if (have_vectors_) lock.unlock();  // until then others wait, who need them as well
        render(kQX_Solvan_Tween, position, first, second, *output, watch);
        if (lock.owns_lock()) have_vectors_ = true;
    }
    World opaque;
    if (is_transparent()) {
        opaque = like(first);
        render(kQX_Solvan_Tween, position, *opaque_copy(first), *opaque_copy(second), *opaque, watch);
    }
    const float detail = fitted(options_.flow, first.width, first.height).vectorDetail;
    const Rims rims(opaque ? *opaque : *output, static_cast<int>(std::ceil(1 / detail)));
    if (rims.any()) {
        World mix = like(first);
        render(kQX_Solvan_Mix, position, first, second, *mix, watch);
        rims.mend(*mix, *output);
    }
    return output;
}

SharedPicture FramePair::result(World world) const {
    auto result = std::make_shared<pictures::Picture>();
    result->about() = first_->about();
    result->has_alpha = first_->has_alpha || second_->has_alpha;
    result->precision = std::min(result->precision, pictures::precision_of(depth_));
    result->world = depth_ == work_depth_ ? std::move(world) : pictures::at_depth(subject_, *world, depth_);
    return result;
}

SharedPicture FramePair::at(double position, pictures::Watch& watch) {
    const Kind what = kind(position);
    if (what != Kind::made)
        return brought_to_depth(subject_, what == Kind::second ? second_ : first_, options_.depth_of_copies());
    get_ready();
    World world;
    if (options_.method == BetweenMethod::flow) {
        world = tweened(position, watch);
    } else {
        world = like(*first_ready_.world);
        render(kQX_Solvan_Mix, position, *first_ready_.world, *second_ready_.world, *world, watch);
    }
    if (is_transparent()) {
        multiply(false, *world, subject_);
    } else {
        world->FillAlpha();
    }
    return result(std::move(world));
}

}  // namespace qx::scene
