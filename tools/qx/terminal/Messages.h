// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qx::tool {

inline constexpr int kDone = 0, kWorkFailed = 1, kWrongUsage = 2, kInterruptedStatus = 130;

/// What the user asked for makes no sense. The text names the option.
struct WrongUsage : std::runtime_error {
    using std::runtime_error::runtime_error;
};
/// The work could not be done.
struct WorkFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Ends the command with a status when all has been said: that pictures differ is no failure.
struct EndedWith {
    int status;
};

inline constexpr const char* kNoStandardOutput = "standard output cannot be written";

enum class Talk { quiet, normal, verbose };
void set_talk(Talk talk);
Talk talk();

/// One line `qx: words` on standard error. Notes are kept back when quiet, details of a file unless verbose. They take
/// no memory: what has been done is told where there is none left. From any thread.
void say_error(std::string_view words);
void say_note(std::string_view words);
void say_detail(std::string_view file, std::string_view words);

/// Notes of a job, each said once. One thread at a time.
struct Note {
    std::string key, words;  ///< the key is what is said once, in these words
};
class NotesOnce {
public:
    void say(const std::vector<Note>& notes) {
        for (const Note& note : notes) {
            if (said_.insert(note.key).second) say_note(note.words);
        }
    }

private:
    std::set<std::string> said_;
};

/// Shows a line on the terminal that the next one, or a message, takes the place of. An empty one takes it away.
void show_line(const std::string& words);

/// From now on a fault that nobody catches, such as memory that is missing where nothing may be thrown, ends the
/// command with a line and kWorkFailed. It takes nothing for that but a write to standard error.
void install_terminate_handler() noexcept;

}  // namespace qx::tool
