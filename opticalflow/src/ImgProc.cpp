// SPDX-License-Identifier: Apache-2.0
#include "opticalflow/src/ImgProc.h"

namespace solvan_of {

void FnImgProc::set_rectangle_from(const FnTexIndexer& target) {
    rectangle_ = {target.x.origin, target.y.origin, target.x.origin + target.width(),
                  target.y.origin + target.height()};
    flags_ |= kHasRectangle;
}

void FnImgProc::grow_rectangle(std::int32_t margin) {
    if (margin <= 0) return;
    rectangle_.left -= margin;
    rectangle_.top -= margin;
    rectangle_.right += margin;
    rectangle_.bottom += margin;
}

bool FnImgProc::push_rectangle() {
    if (saved_count_ == saved_.size()) return false;
    saved_[saved_count_++] = rectangle_;
    return true;
}

bool FnImgProc::pop_rectangle() {
    if (saved_count_ == 0) return false;
    rectangle_ = saved_[--saved_count_];
    return true;
}

void FnImgProc::processImage(FnTexIndexer* target) {
    if (target == nullptr) return;
    target_ = target;
    width_ = target->width();
    height_ = target->height();
    if ((options_ & kKeepsRectangle) == 0 || (flags_ & kHasRectangle) == 0) set_rectangle_from(*target);
    FnMultiProcessor::process();
    target_ = nullptr;
}

PartRows FnImgProc::rows_of(int part) const {
    const bool parallel = (options_ & kParallel) != 0;
    const PartRows rows = rows_of_part(rectangle_.height(), parallel ? part : 0, parallel ? processorCount() : 1);
    return {rows.begin + rectangle_.top, rows.end + rectangle_.top};
}

}  // namespace solvan_of
