// SPDX-License-Identifier: Apache-2.0
#include "scene/colour/WorkingSpace.h"

#include <algorithm>

#include "QX/compositing/QX_LinearBlendingTables.h"
#include "QX/indep/QX_Guard.h"
#include "scene/colour/Convert.h"

namespace qx::scene {
namespace {

/// What `ask` gives; an error of the engine is a failure in the name of a profile.
template <class Ask> auto asked(const Profile& profile, const char* what, const Ask& ask) {
    try {
        return ask();
    } catch (int code) {
        const std::string fault = standalone::LastColourFault();
        const std::string why = fault.empty() ? "code " + std::to_string(code) : fault;
        throw pictures::Failure(name_of(profile), what + why);
    }
}

}  // namespace

WorkingSpace::WorkingSpace(const Profile& space, bool linearize)
    : settings_(standalone::NewProfilePool(), space, kHCL_Gamma22, linearize, true),
      profile_(asked(space, "has no linear version: ", [&] { return settings_.GetAdjustedProfile(); })) {}

const QX_LinearBlendingTables* WorkingSpace::tables() const {
    return asked(profile_,
                 "cannot be blended in linear light: ", [&] { return settings_.GetLinearBlendingTables(false); });
}

void WorkingSpace::take(const std::string& subject, pictures::Picture& picture, const Profile& own, int depth,
                        std::vector<std::string>& notes, pictures::Watch& watch) const {
    Profile from = own;
    if (!from) {
        const Meaning meaning = meaning_of(picture, notes);
        if (!meaning.told) notes.emplace_back(kMeaningIsUsual);
        from = meaning.profile;
    }
    const int deeper = std::max<int>(depth, picture.world->Depth());
    convert(subject, picture, from, profile_, deeper, {}, watch);
}

void WorkingSpace::give(const std::string& subject, pictures::Picture& picture, const Profile& output,
                        pictures::Watch& watch) const {
    convert(subject, picture, profile_, output, picture.world->Depth(), {}, watch);
}

LightTables tables_of(const LightChoice& light, const WorkingSpace* space) {
    if (light.by_profile) return {LightTables(), space->tables()};
    if (light.gamma <= 0) return nullptr;
    auto tables = std::make_shared<QX_LinearBlendingTables>();
    QX_BuildGammaBlendingTables(light.gamma, tables.get());
    return tables;
}

std::string not_light(const std::string& path, const Profile& profile) {
    if (!pictures::is_linear_format(path) || standalone::FactsOf(*profile).over_range) return {};
    return name_of(profile) + " is not linear light, which OpenEXR is meant for";
}

}  // namespace qx::scene
