// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/Movie.h"

#include <dlfcn.h>

#include <algorithm>

#include "tools/qx/io/Picture.h"

namespace qx::tool {
namespace {

/// Loaded once and kept: its libraries do not stand being unloaded.
const movie::Routines* load(const std::string& path) {
    void* module = ::dlopen(movie::kFileName, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) throw io::Failure(path, std::string("movies need the module ") + ::dlerror());
    const auto entry = reinterpret_cast<movie::Entry>(::dlsym(module, movie::kEntryName));
    const movie::Routines* routines = entry != nullptr ? entry() : nullptr;
    if (routines != nullptr && routines->version == movie::kVersion) return routines;
    throw io::Failure(path, std::string(movie::kFileName) + " is of another version than this command");
}

}  // namespace

bool is_movie(const std::string& path) {
    const std::string ending = io::extension_of(path);
    const std::string known[] = {"mp4", "mov", "mkv", "webm", "avi"};
    return std::find(std::begin(known), std::end(known), ending) != std::end(known);
}

MovieFile::MovieFile(const std::string& path, int width, int height, const Rate& rate)
    : file_(path), routines_(load(path)), movie_(nullptr) {
    file_.check();
    if (width % 2 != 0 || height % 2 != 0) {
        const std::string size = std::to_string(width) + " x " + std::to_string(height);
        throw io::Failure(path, "frames of " + size + ": a movie needs even sides");
    }
    const movie::Settings settings{path.c_str(), file_.temporary().c_str(), width, height, rate.number, rate.per};
    movie::Words words{};
    movie_ = routines_->open(&settings, &words);
    check(movie_ != nullptr, words);
}

MovieFile::~MovieFile() {
    if (movie_ != nullptr) routines_->drop(movie_);
}

void MovieFile::check(bool done, const movie::Words& words) const {
    if (!done) throw io::Failure(file_.path(), words.text);
}

void MovieFile::add(const QX_World& frame) {
    movie::Words words{};
    check(routines_->add(movie_, static_cast<const unsigned char*>(frame.data), frame.rowbytes, &words), words);
}

void MovieFile::commit() {
    movie::Words words{};
    check(routines_->finish(movie_, &words), words);
    file_.commit();
}

}  // namespace qx::tool
