// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/view/Browser.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "tools/qx/terminal/Messages.h"

namespace qx::tool {
namespace {

constexpr const char* kOpener = "xdg-open";
constexpr const char* kOpenYourself = ": open the address in a browser";

bool has_display() {
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        const char* const value = std::getenv(name);
        if (value != nullptr && *value != '\0') return true;
    }
    return false;
}

/// In a session of its own, with nothing to read and nowhere to write. @return 0 or an error of the system
int spawn(const std::string& address, pid_t* process) {
    std::string words[] = {kOpener, address};
    char* const arguments[] = {words[0].data(), words[1].data(), nullptr};
    posix_spawn_file_actions_t files;
    posix_spawnattr_t ways;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawnattr_init(&ways);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::posix_spawn_file_actions_addopen(&files, stream, "/dev/null", O_RDWR, 0);
    }
    ::posix_spawnattr_setflags(&ways, POSIX_SPAWN_SETSID);
    const int fault = ::posix_spawnp(process, kOpener, &files, &ways, arguments, environ);
    ::posix_spawnattr_destroy(&ways);
    ::posix_spawn_file_actions_destroy(&files);
    return fault;
}

}  // namespace

Browser::Browser(const std::string& address) {
    if (!has_display()) {
        say_note(std::string("there is no display") + kOpenYourself);
    } else if (spawn(address, &process_) != 0) {
        process_ = 0;
        say_note(std::string(kOpener) + " cannot be started" + kOpenYourself);
    }
}

void Browser::look() {
    int status = 0;
    if (process_ == 0 || ::waitpid(process_, &status, WNOHANG) == 0) return;
    process_ = 0;
    if (status != 0) say_note(std::string(kOpener) + " has opened no browser" + kOpenYourself);
}

}  // namespace qx::tool
