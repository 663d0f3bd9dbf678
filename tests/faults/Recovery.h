#pragma once

#include "tests/faults/FolderContent.h"
#include "tests/faults/Scene.h"

namespace zt::torture {

/// Sends again what a killed host left in the store. `cutShort` is the file that it was writing,
/// empty when there is none. Throws a Failure unless all in front of that file goes to the server,
/// that file and those behind it stay, and after it was taken away these go to the server, too.
void judgeRecovery(Scene& scene, const std::string& cutShort);

}  // namespace zt::torture
