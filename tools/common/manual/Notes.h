#pragma once

#include <vector>

#include "tools/common/manual/Program.h"

namespace zt::manual {

/// What the manual pages of the programs say beside what `--help` says.
std::vector<Note> reportNotes();
std::vector<Note> inboxNotes();

}  // namespace zt::manual
