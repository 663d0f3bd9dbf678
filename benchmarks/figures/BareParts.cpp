#include "benchmarks/figures/BareParts.h"

#include <curl/curl.h>
#include <dirent.h>
#include <libxml/parser.h>
#include <libxml/tree.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <memory>
#include <stdexcept>

#include "ztportal/platform/Free.h"

namespace zt::bench {

namespace {

std::size_t takeBody(char* bytes, std::size_t /*one*/, std::size_t size, void* body) {
  static_cast<std::string*>(body)->append(bytes, size);
  return size;
}

}  // namespace

BarePost::BarePost() : _handle(curl_easy_init()) {
  curl_easy_setopt(_handle, CURLOPT_WRITEFUNCTION, takeBody);
}

BarePost::~BarePost() { curl_easy_cleanup(_handle); }

void BarePost::post(const std::string& url, const std::string& body) {
  std::string answer;
  curl_easy_setopt(_handle, CURLOPT_URL, url.c_str());
  curl_easy_setopt(_handle, CURLOPT_POSTFIELDSIZE, static_cast<long>(body.size()));
  curl_easy_setopt(_handle, CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(_handle, CURLOPT_WRITEDATA, &answer);
  if (curl_easy_perform(_handle) != CURLE_OK || answer.empty()) {
    throw std::runtime_error("libcurl got no answer");
  }
}

void sendBareSignal(const std::string& text) {
  sd_bus* opened = nullptr;
  if (sd_bus_open_user(&opened) < 0) throw std::runtime_error("no session bus");
  const std::unique_ptr<sd_bus, Free<sd_bus_flush_close_unref>> bus(opened);
  if (sd_bus_emit_signal(opened, "/com/kelvane/ZtPortal", "com.kelvane.ZtPortal",
                         "ZtPortalGhostNotification", "sa{ss}", "bench", 3, "version", "1", "date",
                         "21.11.26, 12:00", "request", text.c_str()) < 0) {
    throw std::runtime_error("the signal cannot be sent");
  }
}

std::size_t walkBareProcessTable() {
  std::size_t processes = 0;
  const std::unique_ptr<DIR, Free<closedir>> folder(opendir("/proc"));
  std::array<char, PATH_MAX> target;
  while (const dirent* entry = readdir(folder.get())) {
    if (entry->d_name[0] < '0' || entry->d_name[0] > '9') continue;
    const std::string link = std::string(entry->d_name) + "/exe";
    ++processes;
    if (readlinkat(dirfd(folder.get()), link.c_str(), target.data(), target.size()) < 0) continue;
  }
  return processes;
}

std::string parseAndWriteBarely(const std::string& text) {
  const std::unique_ptr<xmlDoc, Free<xmlFreeDoc>> document(
      xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, XML_PARSE_NONET));
  if (document == nullptr) throw std::runtime_error("libxml2 cannot parse a saved report");
  xmlChar* written = nullptr;
  int size = 0;
  xmlDocDumpMemory(document.get(), &written, &size);
  const std::unique_ptr<xmlChar, Free<free>> bytes(written);
  return {reinterpret_cast<const char*>(written), static_cast<std::size_t>(size)};
}

}  // namespace zt::bench
