// SPDX-License-Identifier: Apache-2.0
#include "scene/text/Module.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "scene/text/Failure.h"
#include "scene/text/FontNames.h"
#include "scene/text/Layout.h"

namespace qx::text {
namespace {

void put(Words* words, const std::string& text) { std::snprintf(words->text, sizeof words->text, "%s", text.c_str()); }

/// Runs the work of a routine; no exception leaves the module.
template <class Work> bool guarded(Words* words, const Work& work) {
    try {
        work();
        return true;
    } catch (const Failure& failure) {
        put(words, failure.what());
    } catch (const std::exception&) {
        put(words, "out of memory");
    }
    return false;
}

char* find_font(const char* name, Words* words) {
    char* found = nullptr;
    guarded(words, [&] {
        const std::string file = file_of_font(name);
        found = new char[file.size() + 1];
        std::memcpy(found, file.c_str(), file.size() + 1);
    });
    return found;
}

void free_name(char* name) { delete[] name; }

void* set(const Settings* settings, Box* box, Words* words) {
    Layout* layout = nullptr;
    guarded(words, [&] {
        layout = new Layout(*settings);
        *box = layout->box();
        put(words, layout->note());
    });
    return layout;
}

bool draw(void* text, unsigned char* coverage, std::ptrdiff_t rowbytes, Words* words) {
    return guarded(words, [&] { static_cast<const Layout*>(text)->draw(coverage, rowbytes); });
}

void drop(void* text) { delete static_cast<Layout*>(text); }

constexpr Routines kRoutines{kVersion, find_font, free_name, set, draw, drop};

}  // namespace
}  // namespace qx::text

extern "C" __attribute__((visibility("default"))) const qx::text::Routines* qx_text_routines() {
    return &qx::text::kRoutines;
}
