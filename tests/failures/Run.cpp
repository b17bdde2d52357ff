// SPDX-License-Identifier: Apache-2.0
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/failures/Failures.h"
#include "tests/pictures/Support.h"

namespace failures {
namespace {

constexpr unsigned kSeconds = 20;  // of one run; what takes longer hangs

std::vector<char*> pointers(Words& words) {
    std::vector<char*> all;
    for (std::string& word : words) all.push_back(word.data());
    all.push_back(nullptr);
    return all;
}

/// What a child does between fork and exec: nothing that allocates.
[[noreturn]] void become(char** words, char** environment, const char* folder, const char* said) {
    ::alarm(kSeconds);  // holds beyond exec
    const int file = ::open(said, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (file >= 0 && ::dup2(file, STDERR_FILENO) >= 0 && ::chdir(folder) == 0) ::execve(words[0], words, environment);
    ::_exit(126);
}

}  // namespace

Outcome Room::run(const Words& words, const std::string& failure) const {
    namespace fs = std::filesystem;
    const std::string out = folder + "/out", said = folder + "/said", report = folder + "/report";
    fs::remove_all(folder);
    fs::create_directories(out);
    Words named, environment{"LD_PRELOAD=" + preload, "QX_FAIL_REPORT=" + report, failure};
    for (const std::string& word : words) named.push_back(word.starts_with("OUT/") ? out + word.substr(3) : word);
    std::vector<char*> arguments = pointers(named), variables = pointers(environment);
    const pid_t child = ::fork();
    if (child == 0) become(arguments.data(), variables.data(), inputs.c_str(), said.c_str());
    int state = 0;
    ::waitpid(child, &state, 0);

    using qx::test::contents;
    Outcome outcome{WIFSIGNALED(state) ? 128 + WTERMSIG(state) : WEXITSTATUS(state),
                    WIFSIGNALED(state) && WTERMSIG(state) == SIGALRM, contents(said), contents(report)};
    for (const auto& entry : fs::directory_iterator(out)) {
        outcome.files[entry.path().filename().string()] = contents(entry.path().string());
    }
    return outcome;
}

}  // namespace failures
