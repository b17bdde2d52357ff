// SPDX-License-Identifier: Apache-2.0
#include "scene/text/FontNames.h"

#include <fontconfig/fontconfig.h>

#include <memory>
#include <new>

#include "scene/text/Failure.h"

namespace qx::text {
namespace {

template <class Thing> using Owner = std::unique_ptr<Thing, void (*)(Thing*)>;

std::string text_of(const FcPattern* pattern, const char* key, int index = 0) {
    FcChar8* text = nullptr;
    if (FcPatternGetString(pattern, key, index, &text) != FcResultMatch) return {};
    return reinterpret_cast<const char*>(text);
}

bool are_one(const std::string& a, const std::string& b) {
    return FcStrCmpIgnoreCase(reinterpret_cast<const FcChar8*>(a.c_str()),
                              reinterpret_cast<const FcChar8*>(b.c_str())) == 0;
}

/// Whether a font has the name, or the name is one that stands for whatever font there is of a kind.
bool has_name(const FcPattern* font, const std::string& family) {
    for (const char* kind : {"sans", "sans-serif", "serif", "mono", "monospace"}) {
        if (are_one(family, kind)) return true;
    }
    for (int i = 0; !text_of(font, FC_FAMILY, i).empty(); ++i) {
        if (are_one(family, text_of(font, FC_FAMILY, i))) return true;
    }
    return false;
}

}  // namespace

std::string file_of_font(const std::string& name) {
    const Owner<FcConfig> config(FcInitLoadConfigAndFonts(), FcConfigDestroy);
    const Owner<FcPattern> pattern(FcNameParse(reinterpret_cast<const FcChar8*>(name.c_str())), FcPatternDestroy);
    if (!config || !pattern) throw std::bad_alloc();
    const std::string family = text_of(pattern.get(), FC_FAMILY);
    FcConfigSubstitute(config.get(), pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    FcResult result = FcResultMatch;
    const Owner<FcPattern> font(FcFontMatch(config.get(), pattern.get(), &result), FcPatternDestroy);
    if (!font) throw Failure("there is no font on this machine");
    if (has_name(font.get(), family)) return text_of(font.get(), FC_FILE);
    throw Failure("no such font; the nearest is " + text_of(font.get(), FC_FAMILY));
}

}  // namespace qx::text
