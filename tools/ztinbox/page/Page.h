#pragma once

#include <string_view>

#include "tools/ztinbox/http/HttpServer.h"

namespace zt::inbox {

/// The page that shows the reports: its document at / and all that it is made of below /page/, out
/// of the program itself. It reads and changes everything through the JSON API.
class Page {
 public:
  static bool owns(std::string_view path);
  static void answer(Exchange& exchange);
};

}  // namespace zt::inbox
