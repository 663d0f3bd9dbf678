// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>

#include "ztportal/base/ZtBOOL.h"
#include "ztportal/base/ZtDate.h"
#include "ztportal/base/ZtExport.h"
#include "ztportal/base/ZtString.h"
#include "ztportal/pools/ZtLanguage.h"

/// Kinds of a step of an execution. Numbers beyond these are kept, and written as an empty value.
enum ZtPortalStepType : std::uint64_t {
  ZtPortalStepEnter = 0,
  ZtPortalStepLeave = 1,
  ZtPortalStepExit = 2,
  ZtPortalStepInfo = 3,
  ZtPortalStepError = 4
};

/// Kinds of a step of a diagnose run. Numbers beyond these are kept, and written as an empty value.
enum ZtPortalDiagnoseType : std::uint64_t {
  ZtPortalDiagnoseManual = 0,
  ZtPortalDiagnoseAutomatic = 1,
  ZtPortalDiagnoseRIS = 2
};

/// Writers of single fields, and the strings for dates and enumerations.
///
/// A writer appends one field to `xml`: four lines that start with `prefix` (usually spaces) and
/// end with CR LF. With `soap` the start tags have SOAP 1.1 types. Names and values are written as
/// they are, without any escaping; missing ones as "(null)".
///
///     std::string xml;
///     ZtPortalDef::addStringFieldToXml("", xml, "Result", "OK", false);
///     // <Field FieldType="string">
///     //   <Name>Result</Name>
///     //   <Value>OK</Value>
///     // </Field>
///
/// Thread-safe, if each thread uses its own `xml`.
class ZT_EXPORT ZtPortalDef {
 public:
  ZtPortalDef() = delete;

  /// An attribute for a start tag: with `soap` a space and `params`, otherwise the empty string.
  static ZtString appendSOAPParams(bool soap, const ZtString& params);

  /// `date` in the format "yyyy-MM-dd'T'HH:mm:ss.SSSz" (Unicode TR 35) in the process's time zone
  /// and the user's locale at the time of the call, for example "2026-11-21T13:00:00.000GMT+1"; in
  /// the `addToXml` of a field, those of the report's text. Missing for a missing date.
  static ZtString stringFromDate(const ZtDate& date);

  static void addStringFieldToXml(const ZtString& prefix, std::string& xml, const ZtString& name,
                                  const ZtString& value, bool soap);
  /// The value in decimal digits.
  static void addIntegerFieldToXml(const ZtString& prefix, std::string& xml, const ZtString& name,
                                   std::int32_t value, bool soap);
  /// The value with two digits after a point, whatever the locale.
  static void addFloatFieldToXml(const ZtString& prefix, std::string& xml, const ZtString& name,
                                 float value, bool soap);
  /// "TRUE" for a byte of exactly 1, "FALSE" for every other byte, deliberately also for 2 or 255:
  /// servers rely on it.
  static void addBOOLFieldToXml(const ZtString& prefix, std::string& xml, const ZtString& name,
                                ZtBOOL value, bool soap);

  /// "ENTER", "LEAVE", "EXIT", "INFO" or "ERROR"; the empty string for any other number.
  static ZtString stepTypeToString(std::uint64_t stepType);
  /// "MANUAL", "AUTOMATIC" or "RIS"; the empty string for any other number.
  static ZtString diagnoseTypeToString(std::uint64_t diagnoseType);
  /// The name of a `ZtLanguage`, "GERMAN" for example; the empty string for any other number and,
  /// deliberately, for Serbian: servers have never had a name for it.
  static ZtString languageToString(std::uint64_t language);
};
