// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <span>
#include <string_view>

#include "tools/ztinbox/http/Exchange.h"

namespace zt {

/// A file that the build embedded in the program.
struct EmbeddedFile {
  std::string_view name;
  std::string_view bytes;
};

}  // namespace zt

namespace zt::inbox {

/// The files of the folder tools/ztinbox/page/.
extern const std::span<const EmbeddedFile> kPageFiles;

/// The web page that shows the reports: its document at / and its other files below /page/. The
/// page reads and changes everything through the JSON API.
class Page {
 public:
  static bool owns(std::string_view path);
  static void respond(Exchange& exchange);
};

}  // namespace zt::inbox
