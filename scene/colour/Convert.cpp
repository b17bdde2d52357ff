// SPDX-License-Identifier: Apache-2.0
#include "scene/colour/Convert.h"

#include <algorithm>
#include <atomic>

#include "QX/color/QX_ColourTransform.h"
#include "QX/indep/QX_Area.h"
#include "QX/indep/QX_Guard.h"
#include "QX/iterate/QX_Bands.h"
#include "pictures/Carried.h"
#include "pictures/Outside.h"
#include "platform/standalone/Host.h"
#include "platform/tesselcore_Threads.h"
#include "scene/Faults.h"
#include "scene/RowCount.h"

namespace qx::scene {
namespace {

/// One transform and the worlds that it goes between.
struct Work {
    const HCL_CMX_Transform& transform;
    QX_World &src, &dst;
    bool inks;
};

/// Whole rows, as references to both worlds.
int convert_rows(const Work& work, const M_LRect& rect) {
    return guarded([&] {
        const std::unique_ptr<QX_World> from(QX_World::NewReference(&work.src, rect));
        const std::unique_ptr<QX_World> to(QX_World::NewReference(&work.dst, rect));
        if (work.inks) {
            QX_CMXApplyTransformSrcCMYK(work.transform, from.get(), to.get(), false, nullptr);
        } else {
            QX_CMXApplyTransform(work.transform, from.get(), to.get(), false, nullptr, nullptr);
        }
    });
}

int convert_world(const Work& work, pictures::Watch& watch) {
    const M_LRect whole = whole_of(work.src);
    const Bands bands(whole, std::min(standalone::BandCount(), kMaxBands));
    RowCount rows(watch, work.src.height);
    std::atomic<int> first_code{0};
    const auto task = [&](int i) {
        if (first_code.load() != 0) return;
        const int code = rows.stops() ? static_cast<int>(kQX_Interrupted) : convert_rows(work, bands[i]);
        if (code == 0) return rows.add(bands[i].bottom - bands[i].top);
        int none = 0;
        first_code.compare_exchange_strong(none, code);
    };
    tesselcore::threads::ExecuteCPUBoundTaskOnAllProcessors(task, bands.count());
    return first_code.load();
}

HCL_CMX_Transform transform_between(const std::string& subject, const Profile& from, const Profile& to,
                                    const Rendering& rendering) {
    std::string fault;
    HCL_CMX_Transform transform =
        standalone::MakeTransform(*from, *to, rendering.intent, rendering.black_point, &fault);
    if (transform.GetTransform() != nullptr) return transform;
    throw pictures::Failure(subject, "its colours cannot be converted: " + fault);
}

}  // namespace

void convert(const std::string& subject, pictures::Picture& picture, const Profile& from, const Profile& to, int depth,
             const Rendering& rendering, pictures::Watch& watch) {
    if (picture.carried && depth == 32) pictures::bring_to_depth(subject, picture, depth);  // all that the file tells
    std::unique_ptr<QX_World> deeper;
    if (picture.world->Depth() != depth) deeper = pictures::at_depth(subject, *picture.world, depth);
    QX_World& dst = deeper ? *deeper : *picture.world;
    const bool stays = !picture.cmyk && are_one(from, to);
    const HCL_CMX_Transform transform = stays ? HCL_CMX_Transform() : transform_between(subject, from, to, rendering);
    if (!stays) must(convert_world({transform, *picture.world, dst, picture.cmyk}, watch), subject);
    if (picture.cmyk) dst.FillAlpha();
    if (deeper) picture.world = std::move(deeper);
    picture.cmyk = false;
    if (stays) return assign(picture, to);
    pictures::change_outside(picture, [&](QX_World& pixels) {
        must(convert_rows({transform, pixels, pixels, false}, whole_of(pixels)), subject);
    });
    assign(picture, to);
}

}  // namespace qx::scene
