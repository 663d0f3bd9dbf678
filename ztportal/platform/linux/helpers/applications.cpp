// Answers what only GLib and GIO know of the desktop, in a process of its own: GIO starts threads,
// which a host must not get from the library.
//
//     ztportal-applications default SCHEME    the user's default application for a URL scheme
//     ztportal-applications entry FILE...     the application of the first usable desktop entry;
//                                             one that says it is hidden is the end of the list
//
// An answer is a list of texts, each followed by a NUL byte: the entry's path, the name in the
// user's language (empty when the entry has none) and the words of its command. Without an
// application nothing is written, and the exit status is 1.

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "ztportal/platform/Free.h"
#include "ztportal/platform/linux/helpers/DesktopEntry.h"

namespace {

constexpr int kNoApplication = 1;
constexpr int kWrongUsage = 2;
constexpr int kMachineFailed = 3;

using AppInfo = std::unique_ptr<GDesktopAppInfo, zt::Free<g_object_unref>>;

int answer(const std::string& file, const zt::DesktopEntry& entry) {
  std::cout << file << '\0' << entry.name() << '\0';
  for (const std::string& word : entry.command()) std::cout << word << '\0';
  std::cout << std::flush;
  if (std::cout) return 0;
  std::cerr << "ztportal-applications: cannot write the answer\n";
  return kMachineFailed;
}

int answerFirstUsable(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    const zt::DesktopEntry entry = zt::DesktopEntry::inFile(file.c_str());
    if (entry.isHidden()) return kNoApplication;
    if (entry.isUsable()) return answer(file, entry);
  }
  return kNoApplication;
}

int answerDefault(const char* scheme) {
  GAppInfo* const found = g_app_info_get_default_for_uri_scheme(scheme);
  if (found == nullptr) return kNoApplication;
  const AppInfo application(G_DESKTOP_APP_INFO(found));
  const char* const file = g_desktop_app_info_get_filename(application.get());
  return file == nullptr ? kNoApplication : answerFirstUsable({file});
}

}  // namespace

int main(int count, char** words) {
  const std::string_view question = count >= 3 ? words[1] : "";
  const bool hasScheme = count == 3 && *words[2] != '\0';
  if (question == "default" && hasScheme) return answerDefault(words[2]);
  if (question == "entry") return answerFirstUsable({words + 2, words + count});
  std::cerr << "ztportal-applications: usage: ztportal-applications default SCHEME\n"
               "                              ztportal-applications entry FILE...\n";
  return kWrongUsage;
}
