#include "tools/ztinbox/soap/SoapRequest.h"

#include <cstddef>

namespace zt::inbox {

namespace {

constexpr auto kNowhere = std::string_view::npos;
/// An envelope says within this many bytes what it holds.
constexpr std::size_t kEnvelopeBytes = std::size_t{64} * 1024;

SoapRequest requestNamed(std::string_view element) {
  if (element == "postPoolDatas") return SoapRequest::kReport;
  if (element == "getVersionInfo") return SoapRequest::kVersion;
  return SoapRequest::kOther;
}

/// Walks over the elements of a text in the order of their start tags.
class StartTags {
 public:
  explicit StartTags(std::string_view text) : _text(text) {}

  /// The next element's name without its prefix; empty at the end of the text.
  std::string_view next() {
    for (;;) {
      _at = _text.find('<', _at);
      if (_at == kNowhere) return {};
      ++_at;
      if (_text.substr(_at).starts_with("!--")) {
        _at = _text.find("-->", _at);
        continue;
      }
      const std::string_view name = nameHere();
      if (!name.empty()) return name;
    }
  }

 private:
  std::string_view nameHere() const {
    const std::string_view rest = _text.substr(_at);
    const std::size_t end = rest.find_first_of(" \t\r\n/>?!<");
    if (end == kNowhere) return {};
    const std::string_view name = rest.substr(0, end);
    return name.substr(name.rfind(':') + 1);
  }

  std::string_view _text;
  std::size_t _at = 0;
};

}  // namespace

SoapRequest soapRequest(std::string_view body) {
  StartTags tags(body.substr(0, kEnvelopeBytes));
  std::string_view name = tags.next();
  if (name != "Envelope") return requestNamed(name);
  while (!name.empty() && name != "Body") name = tags.next();
  return requestNamed(tags.next());
}

}  // namespace zt::inbox
