// SPDX-License-Identifier: Apache-2.0
#include "tools/qx/view/Source.h"

#include "tools/qx/terminal/Messages.h"
#include "tools/qx/view/Stamp.h"

namespace qx::tool {

Source::Source(std::string path, const SubjectOptions& options, std::mutex& reading)
    : path_(std::move(path)), kind_(kind_of_subject(path_)), options_(options), reading_(reading) {
    const std::lock_guard lock(reading_);
    read();
    const auto& faults = subject_->facts().faults;
    if (kind_ != SubjectKind::scene && !faults.empty()) throw WorkFailed(faults.front());
}

/// A file that is saved while it is read is read once more with the next look: no stamp is that of the one before.
void Source::read() {
    ++readings_;
    const std::string before = stamp_of({path_});
    subject_ = open_subject(path_, kind_, options_);
    stamp_ = before == stamp_of({path_}) ? stamp_of(subject_->facts().files) : "";
}

void Source::refresh() {
    if (stamp_ != stamp_of(subject_->facts().files)) read();
}

std::shared_ptr<Subject> Source::subject() {
    const std::lock_guard lock(reading_);
    refresh();
    return subject_;
}

Source::Look Source::look(int number) {
    const std::lock_guard lock(reading_);
    refresh();
    return {subject_, std::to_string(readings_) + "-" + stamp_of(subject_->files_of(number))};
}

}  // namespace qx::tool
