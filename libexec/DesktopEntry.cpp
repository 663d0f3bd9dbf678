// SPDX-License-Identifier: Apache-2.0
#include "libexec/DesktopEntry.h"

#include <optional>

#include "ztportal/base/RegularFile.h"

namespace zt {

namespace {

constexpr const char* kGroup = G_KEY_FILE_DESKTOP_GROUP;

using Text = std::unique_ptr<char, Free<g_free>>;
using Texts = std::unique_ptr<char*, Free<g_strfreev>>;

bool isProgram(const char* name) { return Text(g_find_program_in_path(name)) != nullptr; }

std::string owned(char* text) {
  const Text value(text);
  return value == nullptr ? "" : value.get();
}

}  // namespace

DesktopEntry::DesktopEntry() : _keys(g_key_file_new()) {}

DesktopEntry DesktopEntry::inFile(const char* path) {
  const std::optional<std::string> content = regularFile(path, kSettingsFileLimit);
  return content ? inText(*content) : DesktopEntry();
}

DesktopEntry DesktopEntry::inText(std::string_view text) {
  DesktopEntry entry;
  entry._isRead = g_key_file_load_from_data(entry._keys.get(), text.data(), text.size(),
                                            G_KEY_FILE_NONE, nullptr) != FALSE;
  return entry;
}

bool DesktopEntry::isHidden() const {
  return _isRead && g_key_file_get_boolean(_keys.get(), kGroup, "Hidden", nullptr) != FALSE;
}

bool DesktopEntry::isUsable() const {
  if (!_isRead || text("Type") != "Application") return false;
  const std::string tried = text("TryExec");
  if (!tried.empty() && !isProgram(tried.c_str())) return false;
  const std::vector<std::string> words = command();
  return text("Exec").empty() || (!words.empty() && isProgram(words.front().c_str()));
}

std::string DesktopEntry::name() const { return text("Name"); }

std::vector<std::string> DesktopEntry::command() const {
  char** words = nullptr;
  if (g_shell_parse_argv(text("Exec").c_str(), nullptr, &words, nullptr) == FALSE) return {};
  const Texts texts(words);
  std::vector<std::string> all;
  for (; *words != nullptr; ++words) all.emplace_back(*words);
  return all;
}

std::string DesktopEntry::text(const char* key) const {
  return owned(g_key_file_get_string(_keys.get(), kGroup, key, nullptr));
}

}  // namespace zt
