#include <plist/plist.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <system_error>
#include <vector>

#include "tools/ztreport/commands/InputOutput.h"
#include "tools/ztreport/commands/UserBus.h"
#include "tools/ztreport/doctor/Checks.h"

namespace zt::tools {

namespace {

namespace fs = std::filesystem;

struct FreeList {
  void operator()(void* list) const { plist_free(list); }
};
using PropertyList = std::unique_ptr<void, FreeList>;

bool isFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

/// The nearest bundle above `executable`.
std::optional<fs::path> bundleAbove(const fs::path& executable) {
  for (fs::path folder = executable.parent_path(); folder.has_relative_path();
       folder = folder.parent_path()) {
    if (isFile(folder / "Contents" / "Info.plist")) return folder;
  }
  return std::nullopt;
}

bool isCompanion(const fs::path& bundle) {
  const auto content = contentOf((bundle / "Contents" / "Info.plist").string());
  if (!content || content->size() > std::numeric_limits<std::uint32_t>::max()) return false;
  plist_t parsed = nullptr;
  plist_from_memory(content->data(), static_cast<std::uint32_t>(content->size()), &parsed);
  const PropertyList list(parsed);
  if (plist_get_node_type(parsed) != PLIST_DICT) return false;
  plist_t identifier = plist_dict_get_item(parsed, "CFBundleIdentifier");
  if (plist_get_node_type(identifier) != PLIST_STRING) return false;
  return GHOST_BUNDLE_IDENT == plist_get_string_ptr(identifier, nullptr);
}

/// A companion application that is running.
struct Companion {
  std::string path;  // of its bundle
  bool hasList;      // whether it has the property list "ghost", which can switch test mode on
};

/// The bundles of the companions among the processes whose executable (proc(5)) this user may see.
std::vector<Companion> runningCompanions() {
  std::set<fs::path> bundles;
  std::error_code error;
  fs::directory_iterator process("/proc", error);
  for (; !error && process != fs::directory_iterator(); process.increment(error)) {
    std::error_code unseen;
    const fs::path executable = fs::read_symlink(process->path() / "exe", unseen);
    if (unseen) continue;
    if (const auto bundle = bundleAbove(executable)) bundles.insert(*bundle);
  }
  std::vector<Companion> companions;
  for (const fs::path& bundle : bundles) {
    if (!isCompanion(bundle)) continue;
    const bool hasList = isFile(bundle / "Contents" / "Resources" / "ghost.plist");
    companions.push_back({bundle.string(), hasList});
  }
  return companions;
}

}  // namespace

Finding checkSessionBus(Subject& /*subject*/) {
  std::string reason;
  if (openUserBus(reason) != nullptr) return ok("available");
  return warning("none: " + reason + "; reports are sent anyway, but no companion sees them",
                 "run the program in the user's desktop session if a companion should see them");
}

Finding checkCompanion(Subject& /*subject*/) {
  const std::vector<Companion> companions = runningCompanions();
  if (companions.empty()) return ok("none is running");
  for (const Companion& companion : companions) {
    if (companion.hasList) continue;
    return warning(companion.path +
                       " is running, but has no Contents/Resources/ghost.plist, so it cannot "
                       "switch test mode on",
                   "reinstall the companion if you need test mode");
  }
  std::string paths;
  for (const Companion& companion : companions) {
    paths.append(paths.empty() ? "" : ", ").append(companion.path);
  }
  return ok(paths + " is running");
}

Finding checkTestMode(Subject& subject) {
  if (!subject.document) return skipped("no document could be created");
  if (!subject.isInTestMode) return ok("off");
  return warning(
      "on: every report of this user is a test: its customer ends in _Test, and it goes "
      "to the test URL",
      "quit the companion or switch its test mode off before sending real reports");
}

}  // namespace zt::tools
