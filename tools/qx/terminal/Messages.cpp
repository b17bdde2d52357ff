// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/terminal/Messages.h"

#include <unistd.h>

#include <cstdio>
#include <exception>

#include "pictures/Failure.h"

namespace qx::tool {
namespace {

Talk level = Talk::normal;
bool line_shown = false;

void say(const std::string& words) {
    show_line("");
    std::fprintf(stderr, "qx: %s\n", pictures::one_line(words).c_str());
}

}  // namespace

void set_talk(Talk talk) { level = talk; }
Talk talk() { return level; }

void say_error(const std::string& words) { say(words); }
void say_note(const std::string& words) {
    if (level != Talk::quiet) say("note: " + words);
}
void say_detail(const std::string& words) {
    if (level == Talk::verbose) say(words);
}

void show_line(const std::string& words) {
    if (line_shown) std::fputs("\r\x1B[K", stderr);
    line_shown = !words.empty();
    if (!line_shown) return;
    std::fputs(words.c_str(), stderr);
    std::fflush(stderr);
}

void install_terminate_handler() noexcept {
    std::set_terminate([] {
        constexpr char words[] = "qx: the work failed, most likely for want of memory\n";
        static_cast<void>(!::write(STDERR_FILENO, words, sizeof words - 1));
        ::_exit(kWorkFailed);
    });
}

}  // namespace qx::tool
