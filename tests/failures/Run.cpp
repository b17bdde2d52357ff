// SPDX-License-Identifier: Apache-2.0
#include "tests/failures/Run.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>

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
    if (file < 0 || ::dup2(file, STDERR_FILENO) < 0 || ::chdir(folder) != 0) ::_exit(126);
    ::execve(words[0], words, environment);
    ::_exit(126);
}

}  // namespace

std::string bytes_of(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

Room::Room(std::string folder, std::string inputs, std::string preload)
    : folder_(std::move(folder)), inputs_(std::move(inputs)), preload_(std::move(preload)) {}

Outcome Room::run(const Words& words, const std::string& failure) const {
    const std::string out = folder_ + "/out", said = folder_ + "/said", report = folder_ + "/report";
    std::filesystem::remove_all(folder_);
    std::filesystem::create_directories(out);
    Words named, environment{"LD_PRELOAD=" + preload_, "QX_FAIL_REPORT=" + report, failure};
    for (const std::string& word : words) named.push_back(word.rfind("OUT/", 0) == 0 ? out + word.substr(3) : word);
    std::vector<char*> arguments = pointers(named), variables = pointers(environment);
    const pid_t child = ::fork();
    if (child == 0) become(arguments.data(), variables.data(), inputs_.c_str(), said.c_str());
    int state = 0;
    ::waitpid(child, &state, 0);

    Outcome outcome;
    outcome.hung = WIFSIGNALED(state) && WTERMSIG(state) == SIGALRM;
    outcome.status = WIFSIGNALED(state) ? 128 + WTERMSIG(state) : WEXITSTATUS(state);
    outcome.said = bytes_of(said);
    outcome.report = bytes_of(report);
    for (const auto& entry : std::filesystem::directory_iterator(out)) {
        outcome.files[entry.path().filename().string()] = bytes_of(entry.path().string());
    }
    return outcome;
}

}  // namespace failures
