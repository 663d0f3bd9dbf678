#include "ztportal/platform/xml/TextEncoding.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <limits>

namespace zt {

std::optional<std::string> utf8From(std::string_view bytes, const std::string& encoding) {
  // ICU takes an empty name for the encoding of the process's locale.
  if (encoding.empty()) return std::nullopt;
  if (bytes.size() > std::numeric_limits<std::int32_t>::max()) return std::nullopt;

  UErrorCode status = U_ZERO_ERROR;
  const icu::LocalUConverterPointer converter(ucnv_open(encoding.c_str(), &status));
  ucnv_setToUCallBack(converter.getAlias(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                      &status);
  const icu::UnicodeString text(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                converter.getAlias(), status);
  if (U_FAILURE(status) || text.isBogus()) return std::nullopt;

  std::string utf8;
  text.toUTF8String(utf8);
  return utf8;
}

}  // namespace zt
