// SPDX-License-Identifier: Apache-2.0
#include "scene/Clip.h"

#include <algorithm>

#include "scene/Words.h"

namespace qx::scene {
namespace {

std::uint64_t bytes_of(const QX_World& world) {
    return static_cast<std::uint64_t>(world.rowbytes) * static_cast<std::uint64_t>(world.height);
}

}  // namespace

std::shared_ptr<FrameStore::Slot> FrameStore::slot_of(int number) {
    const std::lock_guard lock(mutex_);
    if (const auto found = slots_.find(number); found != slots_.end()) {
        order_.splice(order_.begin(), order_, found->second->place);
        return found->second;
    }
    auto slot = std::make_shared<Slot>();
    order_.push_front(number);
    slot->place = order_.begin();
    try {
        slots_.emplace(number, slot);
    } catch (...) {
        order_.pop_front();
        throw;
    }
    return slot;
}

void FrameStore::count(Slot& slot) {
    const std::lock_guard lock(mutex_);
    slot.bytes = bytes_of(*slot.picture->world) + (slot.picture->carried ? bytes_of(*slot.picture->carried) : 0);
    bytes_ += slot.bytes;
    drop_oldest();
}

/// Frames that are being made have no bytes yet, and stay.
void FrameStore::drop_oldest() {
    for (auto place = order_.end(); bytes_ > most_bytes_ && place != order_.begin();) {
        --place;
        const auto found = slots_.find(*place);
        if (found->second->bytes == 0 || place == order_.begin()) continue;
        bytes_ -= found->second->bytes;
        slots_.erase(found);
        place = order_.erase(place);
    }
}

SharedPicture FrameStore::get(int number, const std::function<SharedPicture()>& make) {
    const std::shared_ptr<Slot> slot = slot_of(number);
    const std::lock_guard making(slot->making);
    if (!slot->picture) {
        slot->picture = make();
        count(*slot);
    }
    return slot->picture;
}

int Clip::frame_at(const Rational& time) const {
    const auto behind = std::upper_bound(times_.begin() + 1, times_.end() - 1, time);
    return static_cast<int>(behind - times_.begin()) - 1;
}

int index_of_number(const Clip& clip, int number) {
    for (int i = 0; i < clip.frames(); ++i) {
        if (clip.number_of(i) == number) return i;
    }
    const std::string first = std::to_string(clip.number_of(0)),
                      last = std::to_string(clip.number_of(clip.frames() - 1));
    throw BadText(std::to_string(number),
                  "no such frame, the clip has " + std::to_string(clip.frames()) + " from " + first + " to " + last);
}

}  // namespace qx::scene
