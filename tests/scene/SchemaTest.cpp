// SPDX-License-Identifier: Apache-2.0
// The schema of scene files has the keys that the reader knows.
#include <nlohmann/json.hpp>
#include <set>

#include "scene/SceneKeys.h"
#include "scene/effects/Effect.h"
#include "tests/pictures/Support.h"

namespace {

using namespace qx::scene;
using namespace qx::test;
using Set = std::set<std::string>;

class Schema : public testing::Test {
protected:
    const nlohmann::json schema_ = nlohmann::json::parse(contents(QX_SOURCES "/docs/scene.schema.json"));

    static Set keys_of(const nlohmann::json& object) {
        Set keys;
        for (const auto& item : object.at("properties").items()) keys.insert(item.key());
        return keys;
    }
    Set keys(const std::string& definition) const { return keys_of(schema_.at("definitions").at(definition)); }
    /// Of the object among the forms that a definition has.
    Set object_keys(const std::string& definition) const {
        for (const auto& form : schema_.at("definitions").at(definition).at("anyOf")) {
            if (form.contains("properties")) return keys_of(form);
        }
        return {};
    }
    template <std::size_t... N> static Set all(const char* const (&... lists)[N]) {
        Set keys;
        (keys.insert(std::begin(lists), std::end(lists)), ...);
        return keys;
    }
};

TEST_F(Schema, HasTheKeysOfTheReader) {
    EXPECT_EQ(keys_of(schema_), all(kSceneKeys));
    EXPECT_EQ(keys("file-layer"), all(kFileSourceKeys, kLayerKeys));
    EXPECT_EQ(keys("solid-layer"), all(kSolidSourceKeys, kLayerKeys));
    EXPECT_EQ(keys("gradient-layer"), all(kGradientSourceKeys, kLayerKeys));
    EXPECT_EQ(keys("text-layer"), all(kTextSourceKeys, kLayerKeys));
    EXPECT_EQ(keys("group-layer"), all(kGroupSourceKeys, kLayerKeys));
    EXPECT_EQ(keys("clip"), all(kClipKeys));
    EXPECT_EQ(keys("gradient"), all(kGradientKeys));
    EXPECT_EQ(keys("transform"), all(kTransformKeys));
    EXPECT_EQ(keys("shutter"), all(kShutterKeys));
    EXPECT_EQ(keys("matte-layer"), all(kMatteLayerKeys));
    EXPECT_EQ(keys("plug-in"), all(kPlugInKeys));
    EXPECT_EQ(object_keys("file"), all(kFileKeys));
    EXPECT_EQ(object_keys("mask"), all(kMaskKeys));
    EXPECT_EQ(object_keys("interpolation"), all(kBezierKeys));
    const auto& moving = schema_.at("definitions").at("moving-colour").at("anyOf").at(1);
    EXPECT_EQ(keys_of(moving), all(kTrackKeys));
    EXPECT_EQ(keys_of(moving.at("properties").at("keys").at("items")), all(kKeyKeys));
}

TEST_F(Schema, HasTheKeysOfEffects) {
    for (const EffectKind& kind : effect_kinds()) {
        Set known{"effect", "comment"};
        const auto effect = kind.make();
        for (const Key& key : effect->keys()) known.insert(key.name);
        EXPECT_EQ(keys(std::string("effect-") + kind.name), known) << kind.name;
    }
    Set known{"comment"};
    const auto matte = new_effect("matte");
    const Keys keys_of_matte = matte->keys();
    for (const Key& key : std::get<ListKey>(keys_of_matte.front().kind).next()) known.insert(key.name);
    EXPECT_EQ(keys("matte-mask"), known);
}

}  // namespace
