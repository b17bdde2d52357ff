// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "pictures/Picture.h"
#include "tools/qx/options/Options.h"
#include "tools/qx/terminal/Messages.h"

// The pictures of a job: read, brought to one depth, written, with what is lost on the way told.
namespace qx::tool {

/// Names, and what they are read into. The first is the one that the result comes from.
using Files = std::vector<std::pair<const std::string*, pictures::Picture*>>;

/// Behind the file's name; a file that is named twice has the same ones.
void tell_losses(NotesOnce& once, const std::string& file, const std::vector<std::string>& notes);

/// Several at once, which makes no difference to what is told.
void read_all(const Files& files, NotesOnce& once, const pictures::ReadOptions& options);

int deepest_of(const Files& files);

/// Brings all pictures to one depth, 0 standing for the deepest of them. @return it
int unify(const Files& files, int depth, NotesOnce& once);

/// What a picture that was made at `depth` loses in its file.
std::vector<std::string> lost_in_file(const std::string& path, const pictures::Picture& picture, int depth,
                                      const EncodingOptions& encoding);

void write_result(const std::string& path, const pictures::Picture& picture, int depth,
                  const EncodingOptions& encoding);

/// The same for all names of a file, be it there or not.
std::string place_of(const std::string& path);

}  // namespace qx::tool
