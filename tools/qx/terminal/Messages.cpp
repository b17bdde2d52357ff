// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/terminal/Messages.h"

#include <unistd.h>

#include <cstdio>
#include <exception>
#include <initializer_list>
#include <mutex>

#include "pictures/Files.h"

namespace qx::tool {
namespace {

Talk level = Talk::normal;
std::mutex speaking;  // of standard error and of what follows
bool line_shown = false;

void replace_line(const std::string& words) {
    if (line_shown) std::fputs("\r\x1B[K", stderr);
    line_shown = !words.empty();
    if (!line_shown) return;
    std::fputs(words.c_str(), stderr);
    std::fflush(stderr);
}

/// A message is one line whatever a file's name or a library's text contains.
void say(std::initializer_list<std::string_view> parts) {
    const std::lock_guard lock(speaking);
    replace_line("");
    std::fputs("qx: ", stderr);
    for (const std::string_view part : parts) {
        for (const unsigned char c : part) std::fputc(c < ' ' || c == 127 ? ' ' : c, stderr);
    }
    std::fputc('\n', stderr);
}

}  // namespace

void set_talk(Talk talk) { level = talk; }
Talk talk() { return level; }

void say_error(std::string_view words) { say({words}); }
void say_note(std::string_view words) {
    if (level != Talk::quiet) say({"note: ", words});
}
void say_detail(std::string_view file, std::string_view words) {
    if (level == Talk::verbose) say({file, ": ", words});
}

void show_line(const std::string& words) {
    const std::lock_guard lock(speaking);
    replace_line(words);
}

void install_terminate_handler() noexcept {
    std::set_terminate([] {
        constexpr char words[] = "qx: the work failed, most likely for want of memory\n";
        pictures::remove_unfinished();
        static_cast<void>(!::write(STDERR_FILENO, words, sizeof words - 1));
        ::_exit(kWorkFailed);
    });
}

}  // namespace qx::tool
