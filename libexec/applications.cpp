// SPDX-License-Identifier: Apache-2.0
// Looks up desktop applications with GIO, in a separate process: GIO starts threads, which the
// library must not do in a host.
//
//     ztportal-applications default SCHEME [FOLDER...]
//                                             the user's default application for a URL scheme; the
//                                             folders replace $XDG_DATA_DIRS
//     ztportal-applications entry FILE...     the application of the first usable desktop entry;
//                                             a hidden one ends the list
//     ztportal-applications several [COUNT QUESTION]...
//                                             several of these, each preceded by the number of its
//                                             words; only for the library
//
// An answer is a list of strings, each followed by a NUL byte: the entry's path, its name without a
// language (empty if the entry has none) and the words of its command. Without an
// application nothing is written, and the exit status is 1. For several questions each answer is
// preceded by the number of its strings, and the exit status is 0.

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "libexec/DesktopEntry.h"
#include "ztportal/base/Free.h"
#include "ztportal/base/RegularFile.h"

namespace {

constexpr int kNoApplication = 1;
constexpr int kWrongUsage = 2;
constexpr int kMachineFailed = 3;

namespace fs = std::filesystem;

using AppInfo = std::unique_ptr<GDesktopAppInfo, zt::Free<g_object_unref>>;

/// The strings of an answer; none without an application.
using Answer = std::vector<std::string>;
using Words = std::span<char* const>;

Answer firstUsable(Words files) {
  for (const char* file : files) {
    const zt::DesktopEntry entry = zt::DesktopEntry::inFile(file);
    if (entry.isHidden()) return {};
    if (!entry.isUsable()) continue;
    Answer texts{file, entry.name()};
    for (std::string& word : entry.command()) texts.push_back(std::move(word));
    return texts;
  }
  return {};
}

enum class Folder {
  Settings,      ///< with `mimeapps.list`, for a desktop also `gnome-mimeapps.list`
  Applications,  ///< with desktop entries, caches of them and older lists, also in its folders
  Types,         ///< with the types of files, which GIO looks through for a URL scheme, too
};

bool isReadByGio(const std::string& name, Folder kind) {
  if (kind == Folder::Types || name.ends_with("mimeapps.list")) return true;
  return kind == Folder::Applications &&
         (name.ends_with(".desktop") || name == "mimeinfo.cache" || name == "defaults.list");
}

/// Whether what GIO would read in `folder` are regular files of a usual size.
bool isReadable(const std::string& folder, Folder kind) {
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    if (kind != Folder::Applications) entry.disable_recursion_pending();
    struct stat status {};
    if (!isReadByGio(entry->path().filename(), kind)) continue;
    if (::stat(entry->path().c_str(), &status) != 0 || S_ISDIR(status.st_mode)) continue;
    if (!S_ISREG(status.st_mode)) return false;
    if (static_cast<std::size_t>(status.st_size) > zt::kSettingsFileLimit) return false;
  }
  return true;
}

bool isDataReadable(const std::string& folder) {
  return isReadable(folder + "/applications", Folder::Applications) &&
         isReadable(folder + "/mime", Folder::Types);
}

/// GIO waits for the writer of a FIFO and reads files of any size.
bool canAskGio() {
  for (const char* const* each = g_get_system_config_dirs(); *each != nullptr; ++each) {
    if (!isReadable(*each, Folder::Settings)) return false;
  }
  for (const char* const* each = g_get_system_data_dirs(); *each != nullptr; ++each) {
    if (!isDataReadable(*each)) return false;
  }
  return isReadable(g_get_user_config_dir(), Folder::Settings) &&
         isDataReadable(g_get_user_data_dir());
}

/// GLib reads the variable at the first question about a default, so only the folders of that
/// count.
Answer defaultFor(const char* scheme, Words folders) {
  std::string list;
  for (const char* folder : folders) list.append(list.empty() ? "" : ":").append(folder);
  if (!list.empty()) g_setenv("XDG_DATA_DIRS", list.c_str(), TRUE);
  if (!canAskGio()) return {};
  GAppInfo* const found = g_app_info_get_default_for_uri_scheme(scheme);
  if (found == nullptr) return {};
  const AppInfo application(G_DESKTOP_APP_INFO(found));
  const char* const file = g_desktop_app_info_get_filename(application.get());
  if (file == nullptr) return {};
  std::string path = file;
  char* const word = path.data();
  return firstUsable({&word, 1});
}

/// Nullopt for words that are not a question.
std::optional<Answer> answerTo(Words question) {
  const std::string_view kind = question.size() >= 2 ? question[0] : "";
  const bool hasScheme = question.size() >= 2 && *question[1] != '\0';
  if (kind == "default" && hasScheme) return defaultFor(question[1], question.subspan(2));
  if (kind == "entry") return firstUsable(question.subspan(1));
  return std::nullopt;
}

std::string written(const Answer& texts) {
  std::string bytes;
  for (const std::string& text : texts) bytes.append(text).append(1, '\0');
  return bytes;
}

/// The answers to several questions, up to the first that is invalid.
std::string answersTo(Words questions) {
  std::string bytes;
  while (!questions.empty()) {
    const std::size_t count = std::strtoul(questions[0], nullptr, 10);
    questions = questions.subspan(1);
    if (count > questions.size()) break;
    const std::optional<Answer> texts = answerTo(questions.first(count));
    if (!texts) break;
    bytes.append(std::to_string(texts->size())).append(1, '\0').append(written(*texts));
    questions = questions.subspan(count);
  }
  return bytes;
}

int write(const std::string& bytes) {
  std::fwrite(bytes.data(), 1, bytes.size(), stdout);
  if (std::fflush(stdout) == 0) return 0;
  std::fputs("ztportal-applications: cannot write the answer\n", stderr);
  return kMachineFailed;
}

}  // namespace

int main(int count, char** words) {
  const Words arguments(words + 1, count > 0 ? static_cast<std::size_t>(count - 1) : 0);
  if (arguments.size() > 1 && std::string_view(arguments[0]) == "several") {
    return write(answersTo(arguments.subspan(1)));
  }
  const std::optional<Answer> texts = answerTo(arguments);
  if (texts) return texts->empty() ? kNoApplication : write(written(*texts));
  std::fputs(
      "ztportal-applications: usage: ztportal-applications default SCHEME [FOLDER...]\n"
      "                              ztportal-applications entry FILE...\n",
      stderr);
  return kWrongUsage;
}
