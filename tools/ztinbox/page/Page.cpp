// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/page/Page.h"

#include <algorithm>
#include <array>
#include <string>

namespace zt::inbox {

namespace {

constexpr std::string_view kFolder = "/page/";
constexpr std::string_view kDocument = "index.html";

struct MediaType {
  std::string_view extension;
  const char* name;
};

constexpr std::array<MediaType, 4> kMediaTypes{{
    {".html", "text/html; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".mjs", "text/javascript; charset=utf-8"},
    {".svg", "image/svg+xml"},
}};

const char* mediaTypeOf(std::string_view name) {
  const auto* const type = std::ranges::find_if(
      kMediaTypes, [name](const MediaType& row) { return name.ends_with(row.extension); });
  return type == kMediaTypes.end() ? "application/octet-stream" : type->name;
}

std::string_view nameOf(std::string_view path) {
  return path == "/" ? kDocument : path.substr(kFolder.size());
}

}  // namespace

bool Page::owns(std::string_view path) { return path == "/" || path.starts_with(kFolder); }

void Page::respond(Exchange& exchange) {
  const auto file =
      std::ranges::find(kPageFiles, nameOf(exchange.request.path), &EmbeddedFile::name);
  if (file == kPageFiles.end()) {
    return refuse(exchange, {status::kNotFound, "no such address"});
  }
  if (!exchange.request.isRead()) return refuseMethod(exchange, "GET, HEAD");
  // Another version of the program may serve the same address later.
  exchange.response.headers.emplace_back("Cache-Control", "no-store");
  exchange.response.setBody(std::string(file->bytes), mediaTypeOf(file->name));
}

}  // namespace zt::inbox
