// SPDX-License-Identifier: Apache-2.0
#include "pictures/Movie.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>

#include "pictures/Picture.h"

namespace qx::pictures {
namespace {

/// The module lies in a folder of libraries beside that of the command, or where the system looks.
void* open_module() {
    std::error_code ignored;
    const auto command = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const auto root = command.parent_path().parent_path();
    for (const char* folder : {"lib", QX_LIBRARY_FOLDER}) {
        const auto file = root / folder / movie::kFileName;
        if (!std::filesystem::exists(file, ignored)) continue;
        if (void* module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) return module;
    }
    return ::dlopen(movie::kFileName, RTLD_NOW | RTLD_LOCAL);
}

/// Kept once it is loaded: its libraries do not stand being unloaded.
const movie::Routines* load(const std::string& path) {
    void* module = open_module();
    if (module == nullptr) throw Failure(path, std::string("movies need the module ") + ::dlerror());
    const auto entry = reinterpret_cast<movie::Entry>(::dlsym(module, movie::kEntryName));
    const movie::Routines* routines = entry != nullptr ? entry() : nullptr;
    if (routines != nullptr && routines->version == movie::kVersion) return routines;
    throw Failure(path, std::string(movie::kFileName) + " is of another version than this command");
}

}  // namespace

bool is_movie(const std::string& path) {
    const std::string ending = extension_of(path);
    const std::string known[] = {"mp4", "mov", "mkv", "webm", "avi"};
    return std::find(std::begin(known), std::end(known), ending) != std::end(known);
}

MovieFile::MovieFile(const std::string& path, int width, int height, const Rate& rate, const MovieColours& colours)
    : file_(path), routines_(load(path)), movie_(nullptr) {
    file_.check();
    if (width % 2 != 0 || height % 2 != 0) {
        const std::string size = std::to_string(width) + " x " + std::to_string(height);
        throw Failure(path, "frames of " + size + ": a movie needs even sides");
    }
    const movie::Settings settings{path.c_str(), file_.temporary().c_str(), width,           height, rate.number,
                                   rate.per,     colours.primaries,         colours.transfer};
    movie::Words words{};
    movie_ = routines_->open(&settings, &words);
    check(movie_ != nullptr, words);
}

MovieFile::~MovieFile() {
    if (movie_ != nullptr) routines_->drop(movie_);
}

void MovieFile::check(bool done, const movie::Words& words) const {
    if (!done) throw Failure(file_.path(), words.text);
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

}  // namespace qx::pictures
