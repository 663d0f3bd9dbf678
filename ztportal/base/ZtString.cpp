// SPDX-License-Identifier: Apache-2.0
#include "ztportal/base/ZtString.h"

#include <cstring>
#include <ostream>

#ifdef _GLIBCXX_DEBUG
const char ZtBuildTheLibraryWithGlibcxxDebugToo = 0;
#endif

ZtString::ZtString(std::string_view text) {
  void* memory = ::operator new(sizeof(Text) + text.size());
  _text = new (memory) Text{1, text.size()};
  if (!text.empty()) std::memcpy(static_cast<void*>(_text + 1), text.data(), text.size());
}

ZtString::ZtString(const char* text)
    : ZtString(text == nullptr ? ZtString() : ZtString(std::string_view(text))) {}

ZtString::ZtString(const std::string& text) : ZtString(std::string_view(text)) {}

std::ostream& operator<<(std::ostream& stream, const ZtString& text) {
  return stream << text.printed();
}

void ZtString::release() noexcept {
  if (_text->holders.load(std::memory_order_relaxed) == kConstant) return;
  if (_text->holders.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  _text->~Text();
  ::operator delete(_text);
}
