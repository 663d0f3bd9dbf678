// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

/// The numbers of the languages of a system and its user. Other numbers are kept, and written as an
/// empty value.
enum ZtLanguage : std::uint64_t {
  ZtLanguageNeutral = 1,
  ZtLanguageAfrikaans = 2,
  ZtLanguageAlbanian = 3,
  ZtLanguageArabic = 4,
  ZtLanguageBasque = 5,
  ZtLanguageBelarusian = 6,
  ZtLanguageBulgarian = 7,
  ZtLanguageCatalan = 8,
  ZtLanguageChinese = 9,
  ZtLanguageCroatian = 10,
  ZtLanguageCzech = 11,
  ZtLanguageDanish = 12,
  ZtLanguageDutch = 13,
  ZtLanguageEnglish = 14,
  ZtLanguageEstonian = 15,
  ZtLanguageFaroese = 16,
  ZtLanguageFinnish = 17,
  ZtLanguageFrench = 18,
  ZtLanguageGerman = 19,
  ZtLanguageGreek = 20,
  ZtLanguageHebrew = 21,
  ZtLanguageHungarian = 22,
  ZtLanguageIcelandic = 23,
  ZtLanguageIndonesian = 24,
  ZtLanguageItalian = 25,
  ZtLanguageJapanese = 26,
  ZtLanguageKorean = 27,
  ZtLanguageLatvian = 28,
  ZtLanguageLithuanian = 29,
  ZtLanguageNorwegian = 30,
  ZtLanguagePolish = 31,
  ZtLanguagePortuguese = 32,
  ZtLanguageRomanian = 33,
  ZtLanguageRussian = 34,
  ZtLanguageSerbian = 35,
  ZtLanguageSlovak = 36,
  ZtLanguageSlovenian = 37,
  ZtLanguageSpanish = 38,
  ZtLanguageSwedish = 39,
  ZtLanguageThai = 40,
  ZtLanguageTurkish = 41,
  ZtLanguageUkrainian = 42,
  ZtLanguageVietnamese = 43
};
