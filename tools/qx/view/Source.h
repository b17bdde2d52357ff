// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "tools/qx/view/Subject.h"

namespace qx::tool {

/// One name of the command line, and what stands behind it as its files are now. For any number of threads.
class Source {
public:
    /// Throws pictures::Failure for what is not there, WorkFailed for what is no scene and cannot be read.
    /// @param reading  held while a subject is read: sources share the effects
    Source(std::string path, const SubjectOptions& options, std::mutex& reading);

    const std::string& path() const { return path_; }
    SubjectKind kind() const { return kind_; }
    /// Both read it again when one of its files has been saved.
    std::shared_ptr<Subject> subject();
    /// The stamp is of all that a frame is made from, so that it is another one when a file of that has been saved.
    struct Look {
        std::shared_ptr<Subject> subject;
        std::string stamp;
    };
    Look look(int number);

private:
    void read();
    void refresh();
    const std::string path_;
    const SubjectKind kind_;
    const SubjectOptions options_;
    std::mutex& reading_;
    std::string stamp_;  ///< of the subject's files
    int readings_ = 0;
    std::shared_ptr<Subject> subject_;
};

}  // namespace qx::tool
