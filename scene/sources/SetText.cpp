// SPDX-License-Identifier: Apache-2.0
#include "scene/sources/SetText.h"

#include <dlfcn.h>

#include "pictures/OwnModule.h"
#include "pictures/Picture.h"
#include "scene/Words.h"

namespace qx::scene {
namespace {

/// Throws pictures::Failure in the name of what needs it.
const text::Routines& module_for(const std::string& subject) {
    void* const module = pictures::open_own_module(text::kFileName);
    if (module == nullptr) throw pictures::Failure(subject, std::string("text needs the module ") + ::dlerror());
    const auto entry = reinterpret_cast<text::Entry>(::dlsym(module, text::kEntryName));
    const text::Routines* const routines = entry != nullptr ? entry() : nullptr;
    if (routines != nullptr && routines->version == text::kVersion) return *routines;
    throw pictures::Failure(subject, std::string(text::kFileName) + " is of another version than this command");
}

}  // namespace

SetText::SetText(const TextChoice& choice) : font_(choice.font), text_(nullptr, module_for(choice.font).drop) {
    const text::Settings settings{.text = choice.text.c_str(),
                                  .font = choice.font.c_str(),
                                  .size = choice.size,
                                  .line_height = choice.line_height,
                                  .width = choice.width,
                                  .align = choice.align,
                                  .most_side = pictures::kMostSide};
    text::Words words{};
    text_.reset(module_for(font_).set(&settings, &box_, &words));
    if (!text_) throw pictures::Failure(font_, words.text);
    note_ = words.text;
}

std::vector<unsigned char> SetText::coverage() const {
    std::vector<unsigned char> coverage(static_cast<std::size_t>(box_.width) * static_cast<std::size_t>(box_.height));
    text::Words words{};
    const bool drawn = module_for(font_).draw(text_.get(), coverage.data(), box_.width, &words);
    if (!drawn) throw pictures::Failure(font_, words.text);
    return coverage;
}

std::string file_of_font(const std::string& name) {
    const text::Routines& module = module_for(name);
    text::Words words{};
    const std::unique_ptr<char, void (*)(char*)> file(module.find_font(name.c_str(), &words), module.free_name);
    if (!file) throw BadText(name, words.text);
    return file.get();
}

}  // namespace qx::scene
