// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <boost/make_shared.hpp>
#include <cstring>
#include <map>
#include <mutex>

#include "platform/HCL_CMX.h"
#include "platform/standalone/Colour.h"

namespace standalone {
namespace {

struct Earlier {
    bool operator()(const t_CMX_ID& a, const t_CMX_ID& b) const {
        return std::memcmp(a.bytes, b.bytes, sizeof(a.bytes)) < 0;
    }
};

class ProfilePool final : public HCL_CMX_ProfilePool {
public:
    t_CMX_ID AddProfile(const HCL_CMX_ProfilePtr& profile) override {
        if (profile == nullptr || profile->GetProfile() == nullptr) return CMX_EmptyProfile_ID;
        const t_CMX_ID id = profile->GetProfile()->ID();
        const std::lock_guard lock(mutex_);
        profiles_.emplace(id, profile);  // unless one is there
        return id;
    }
    HCL_CMX_ProfilePtr GetProfile(const t_CMX_ID& id) const override {
        const std::lock_guard lock(mutex_);
        const auto found = profiles_.find(id);
        return found == profiles_.end() ? nullptr : found->second;
    }

private:
    mutable std::mutex mutex_;
    std::map<t_CMX_ID, HCL_CMX_ProfilePtr, Earlier> profiles_;
};

}  // namespace

HCL_CMX_ProfilePoolPtr NewProfilePool() { return boost::make_shared<ProfilePool>(); }

}  // namespace standalone

const t_CMX_ID CMX_EmptyProfile_ID{};

bool HCL_EqualCMXIDs(const t_CMX_ID& a, const t_CMX_ID& b) {
    return std::equal(std::begin(a.bytes), std::end(a.bytes), std::begin(b.bytes));
}
