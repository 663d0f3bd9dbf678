#include "tools/ztreport/doctor/Companion.h"

#include <plist/plist.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <system_error>

#include "tools/ztreport/commands/InputOutput.h"
#include "ztportal/ztportal.h"

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

/// The nearest folder above `executable` that is a bundle.
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

}  // namespace

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

}  // namespace zt::tools
