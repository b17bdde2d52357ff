// SPDX-License-Identifier: Apache-2.0
#include "pictures/movie/Module.h"

#include <cstdio>

#include "pictures/movie/Encoder.h"

namespace qx::movie {
namespace {

/// Runs the work of a routine; no exception leaves the module.
template <class Work> bool guarded(Words* words, const Work& work) {
    try {
        work();
        return true;
    } catch (const Failure& failure) {
        std::snprintf(words->text, sizeof words->text, "%s", failure.what());
        return false;
    } catch (const std::exception&) {
        std::snprintf(words->text, sizeof words->text, "out of memory");
        return false;
    }
}

void* open(const Settings* settings, Words* words) {
    Encoder* encoder = nullptr;
    guarded(words, [&] { encoder = new Encoder(*settings); });
    return encoder;
}

bool add(void* movie, const unsigned char* pixels, std::ptrdiff_t rowbytes, Words* words) {
    return guarded(words, [&] { static_cast<Encoder*>(movie)->add(pixels, rowbytes); });
}

bool finish(void* movie, Words* words) {
    return guarded(words, [&] { static_cast<Encoder*>(movie)->finish(); });
}

void drop(void* movie) { delete static_cast<Encoder*>(movie); }

}  // namespace
}  // namespace qx::movie

extern "C" __attribute__((visibility("default"))) const qx::movie::Routines* qx_movie_routines() {
    using namespace qx::movie;
    static const Routines routines{kVersion, &open, &add, &finish, &drop};
    return &routines;
}
