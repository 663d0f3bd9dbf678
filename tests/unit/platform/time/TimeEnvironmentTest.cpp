#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include "tests/support/ScopedEnvironment.h"
#include "ztportal/platform/locale/PosixLocale.h"
#include "ztportal/platform/time/TimeEnvironment.h"

namespace {

using zt::test::ScopedEnvironment;

TEST(TimeEnvironmentTest, TakesTheFirstLocaleThatIsSetAndNotEmpty) {
  struct Row {
    const char* all;
    const char* time;
    const char* lang;
    const char* name;
  };
  const Row rows[] = {
      {"de_DE", "fr_FR", "ja_JP", "de_DE"}, {nullptr, "fr_FR", "ja_JP", "fr_FR"},
      {nullptr, nullptr, "ja_JP", "ja_JP"}, {"", "", "ja_JP", "ja_JP"},
      {"", "fr_FR", "", "fr_FR"},           {"de_DE", nullptr, nullptr, "de_DE"},
      {nullptr, nullptr, nullptr, "C"},     {"", "", "", "C"},
      {"POSIX", "fr_FR", "ja_JP", "POSIX"},
  };
  for (const Row& row : rows) {
    const ScopedEnvironment all("LC_ALL", row.all);
    const ScopedEnvironment time("LC_TIME", row.time);
    const ScopedEnvironment lang("LANG", row.lang);
    EXPECT_EQ(zt::timeEnvironment().localeName, row.name);
    EXPECT_EQ(zt::userLocaleName("LC_TIME"), row.name);
  }
}

TEST(TimeEnvironmentTest, AVariableWithALongerOrShorterNameIsAnother) {
  const ScopedEnvironment zone("TZ", nullptr);
  const ScopedEnvironment all("LC_ALL", nullptr);
  const ScopedEnvironment time("LC_TIME", nullptr);
  const ScopedEnvironment lang("LANG", nullptr);
  const ScopedEnvironment others[] = {{"TZX", "a"},      {"T", "b"},  {"TZDIR", "c"},
                                      {"LANGUAGE", "d"}, {"L", "e"},  {"LC_", "f"},
                                      {"LC_ALLX", "g"},  {"LA", "h"}, {"LC_TIMES", "i"}};
  EXPECT_EQ(zt::timeEnvironment().zone, nullptr);
  EXPECT_EQ(zt::timeEnvironment().localeName, "C");
}

TEST(TimeEnvironmentTest, TellsAnUnsetZoneFromAnEmptyOne) {
  {
    const ScopedEnvironment zone("TZ", nullptr);
    EXPECT_EQ(zt::timeEnvironment().zone, nullptr);
  }
  {
    const ScopedEnvironment zone("TZ", "");
    EXPECT_STREQ(zt::timeEnvironment().zone, "");
  }
  const ScopedEnvironment zone("TZ", "Europe/Berlin");
  EXPECT_STREQ(zt::timeEnvironment().zone, "Europe/Berlin");
}

/// Puts another environment in the place of the process's for a scope.
class ReplacedEnvironment {
 public:
  explicit ReplacedEnvironment(char** entries) : _before(environ) { environ = entries; }
  ReplacedEnvironment(const ReplacedEnvironment&) = delete;
  ReplacedEnvironment& operator=(const ReplacedEnvironment&) = delete;
  ~ReplacedEnvironment() { environ = _before; }

 private:
  char** _before;
};

TEST(TimeEnvironmentTest, OfSeveralEntriesTheFirstCountsAsForGetenv) {
  char first[] = "TZ=Europe/Berlin";
  char second[] = "TZ=UTC";
  char language[] = "LANG=de_DE";
  char otherLanguage[] = "LANG=fr_FR";
  char empty[] = "";
  char* entries[] = {empty, first, language, second, otherLanguage, nullptr};
  const ReplacedEnvironment replaced(entries);
  EXPECT_STREQ(zt::timeEnvironment().zone, getenv("TZ"));
  EXPECT_STREQ(zt::timeEnvironment().zone, "Europe/Berlin");
  EXPECT_EQ(zt::timeEnvironment().localeName, "de_DE");
}

TEST(TimeEnvironmentTest, AProcessWithoutEnvironmentHasTheCLocale) {
  const ReplacedEnvironment replaced(nullptr);
  EXPECT_EQ(zt::timeEnvironment().zone, nullptr);
  EXPECT_EQ(zt::timeEnvironment().localeName, "C");
}

}  // namespace
