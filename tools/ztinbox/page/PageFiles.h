#pragma once

#include <span>
#include <string_view>

namespace zt {

/// A file that the build put into the program.
struct EmbeddedFile {
  std::string_view name;
  std::string_view bytes;
};

}  // namespace zt

namespace zt::inbox {

/// The files of the folder tools/inbox/page/.
extern const std::span<const EmbeddedFile> kPageFiles;

}  // namespace zt::inbox
