// SPDX-License-Identifier: Apache-2.0
#include "host/EffectModule.h"

#include <dlfcn.h>

#include <filesystem>

#include "host/Calls.h"
#include "host/Description.h"
#include "pictures/Failure.h"
#include "scene/Words.h"

namespace qx::host {
namespace {

constexpr QXE_Version kVersion{QXE_VERSION_MAJOR, QXE_VERSION_MINOR};

std::string words(const QXE_Version& version) {
    return std::to_string(version.major) + "." + std::to_string(version.minor);
}

/// Twice, since the loader has other words where it was short of memory.
void* open(const std::string& path) {
    void* const module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    return module != nullptr ? module : ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
}

/// The loader's words, without the file's name, which stands before them.
std::string loader_words(const std::string& path) {
    const char* const told = ::dlerror();
    const std::string text = told == nullptr ? "unknown fault" : told;
    return text.rfind(path + ": ", 0) == 0 ? text.substr(path.size() + 2) : text;
}

}  // namespace

EffectModule::EffectModule(const std::string& path) : path_(path), module_(open(path)) {
    if (module_ == nullptr) throw pictures::Failure(path, "cannot be loaded as an effect: " + loader_words(path));
}

EffectModule::~EffectModule() { ::dlclose(module_); }

std::shared_ptr<const EffectModule> EffectModule::load(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) throw pictures::Failure(path, "no such file");
    const std::string file = std::filesystem::absolute(path).string();  // a name without a / is looked for elsewhere
    const std::shared_ptr<EffectModule> made(new EffectModule(file));
    made->path_ = path;
    const auto describe = reinterpret_cast<QXE_DescribeEffectFunc>(::dlsym(made->module_, "QXE_DescribeEffect"));
    if (describe == nullptr) throw pictures::Failure(path, "is no effect: it exports no QXE_DescribeEffect");
    QXE_EffectInfo& info = made->info_;
    info.size = sizeof info;
    const Outcome outcome = called([&] { return describe(kVersion, &info); });
    const bool is_other = info.version.major != kVersion.major || info.version.minor > kVersion.minor;
    if (is_other && (outcome.code == 0 || info.version.major != 0)) {
        throw pictures::Failure(
            path, "is made for version " + words(info.version) + " of effects; this is " + words(kVersion));
    }
    if (outcome.code != 0) throw pictures::Failure(path, "does not describe itself: " + outcome.words());
    try {
        made->parameters_ = checked_parameters(info);
    } catch (const scene::BadText& bad) {
        throw pictures::Failure(path, bad.what());
    }
    return made;
}

}  // namespace qx::host
