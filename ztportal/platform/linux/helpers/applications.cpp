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

namespace {

constexpr int kNoApplication = 1;
constexpr int kWrongUsage = 2;
constexpr int kMachineFailed = 3;

using AppInfo = std::unique_ptr<GDesktopAppInfo, zt::Free<g_object_unref>>;
using Text = std::unique_ptr<char, zt::Free<g_free>>;
using Texts = std::unique_ptr<char*, zt::Free<g_strfreev>>;

bool isProgram(const char* name) { return Text(g_find_program_in_path(name)) != nullptr; }

/// A desktop entry, judged as GIO does. GIO's own class would look into all folders of entries and
/// watch them, only to read this one: that takes longer than all else here.
class Entry {
 public:
  explicit Entry(const char* file)
      : _keys(g_key_file_new()),
        _isThere(g_key_file_load_from_file(_keys.get(), file, G_KEY_FILE_NONE, nullptr) != FALSE) {}

  bool isHidden() const {
    return _isThere && g_key_file_get_boolean(_keys.get(), kGroup, "Hidden", nullptr) != FALSE;
  }

  bool isUsable() const {
    if (!_isThere || text("Type") != "Application") return false;
    const std::string tried = text("TryExec");
    if (!tried.empty() && !isProgram(tried.c_str())) return false;
    const std::vector<std::string> words = command();
    return text("Exec").empty() || (!words.empty() && isProgram(words.front().c_str()));
  }

  std::string name() const {
    return owned(g_key_file_get_locale_string(_keys.get(), kGroup, "Name", nullptr, nullptr));
  }

  std::vector<std::string> command() const {
    char** words = nullptr;
    if (g_shell_parse_argv(text("Exec").c_str(), nullptr, &words, nullptr) == FALSE) return {};
    const Texts texts(words);
    std::vector<std::string> all;
    for (; *words != nullptr; ++words) all.emplace_back(*words);
    return all;
  }

 private:
  static constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;

  static std::string owned(char* text) {
    const Text value(text);
    return value == nullptr ? "" : value.get();
  }
  std::string text(const char* key) const {
    return owned(g_key_file_get_string(_keys.get(), kGroup, key, nullptr));
  }

  std::unique_ptr<GKeyFile, zt::Free<g_key_file_unref>> _keys;
  bool _isThere;
};

int answer(const std::string& file, const Entry& entry) {
  std::cout << file << '\0' << entry.name() << '\0';
  for (const std::string& word : entry.command()) std::cout << word << '\0';
  std::cout << std::flush;
  if (std::cout) return 0;
  std::cerr << "ztportal-applications: cannot write the answer\n";
  return kMachineFailed;
}

int answerFirstUsable(const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    const Entry entry(file.c_str());
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
