// SPDX-License-Identifier: Apache-2.0
// Preferences: none is kept; a program or a test sets what it wants.
#include <map>
#include <utility>

#include "platform/OPT_Preferences.h"
#include "platform/standalone/Standalone.h"

namespace standalone {
namespace {

int preference_error = 0;

auto& preferences() {
    static std::map<std::pair<std::string, std::string>, std::string> all;
    return all;
}

}  // namespace

void SetPreference(const char* section, const char* key, const std::string& value) {
    preferences()[{section, key}] = value;
}
void ForgetPreferences() { preferences().clear(); }
void SetPreferenceError(int code) { preference_error = code; }

}  // namespace standalone

int OPT_GetTextPrefData(const char* section, const char* key, const char* standard, std::string* value) {
    if (standalone::preference_error != 0) return standalone::preference_error;
    const auto& all = standalone::preferences();
    const auto found = all.find({section, key});
    *value = found != all.end() ? found->second : standard;
    return 0;
}
