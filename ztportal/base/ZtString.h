// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <atomic>
#include <compare>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "ztportal/base/ZtExport.h"

/// A string that may be missing: UTF-8, immutable and shared.
///
/// Copies share their bytes, so copying allocates no memory. A missing string is not the empty
/// string: it equals only another missing one, and writers print it as "(null)".
///
///     ZtString edition = "Home";
///     ZtString same = edition;                 // shares the bytes
///     ZtString none = nullptr;                 // missing
///     bool known = !none.isNull();             // false
///     std::string line(edition);               // copies the bytes
///     std::cout << edition << '\n';
///     std::unordered_set<ZtString> editions{edition};
///
/// `ztportal/base/ZtFormat.h` makes it a value for {fmt}.
///
/// Threads: one object is used by one thread at a time; different threads may use copies that share
/// their bytes. Static initialisers of any file may create and use strings.
class ZT_EXPORT ZtString {
 private:
  /// The header with the reference count. The bytes follow it directly.
  struct Text {
    std::atomic<std::size_t> holders;  // kConstant: a static text, which is not counted
    std::size_t length;
  };
  static constexpr std::size_t kConstant = 0;

  /// A string literal as a template argument.
  template <std::size_t N>
  struct Literal {
    // NOLINTNEXTLINE(google-explicit-constructor): deduced from the literal.
    consteval Literal(const char (&literal)[N]) { std::copy_n(literal, N, bytes); }
    char bytes[N];
  };

  /// A string in the program's data segment, where the bytes follow the header as in allocated
  /// memory.
  template <Literal kLiteral>
  struct ConstantText {
    consteval ConstantText() : text{kConstant, sizeof(bytes) - 1} {
      std::copy_n(kLiteral.bytes, sizeof(bytes), bytes);
    }
    Text text;
    char bytes[sizeof(kLiteral.bytes)]{};
  };
  template <Literal kLiteral>
  struct ZT_LOCAL Constant {
    static inline constinit ConstantText<kLiteral> text{};
  };

 public:
  /// A missing string.
  constexpr ZtString() noexcept = default;
  constexpr ZtString(std::nullptr_t) noexcept {}  // NOLINT(google-explicit-constructor)
  /// A copy of the NUL-terminated `text`; missing for a null pointer.
  ZtString(const char* text);  // NOLINT(google-explicit-constructor)
  /// A copy of `text`, NUL bytes included; never missing.
  ZtString(std::string_view text);    // NOLINT(google-explicit-constructor)
  ZtString(const std::string& text);  // NOLINT(google-explicit-constructor)

  /// A compile-time string, for constants that other files' static initialisers may use:
  ///
  ///     constinit const ZtString GREETING = ZtString::constant<"hello">();
  template <Literal kLiteral>
  static constexpr ZtString constant() noexcept {
    return ZtString(&Constant<kLiteral>::text.text);
  }

  ZtString(const ZtString& other) noexcept : _text(other._text) { retain(); }
  ZtString(ZtString&& other) noexcept : _text(std::exchange(other._text, nullptr)) {}
  ZtString& operator=(const ZtString& other) noexcept {
    ZtString copy(other);
    std::swap(_text, copy._text);
    return *this;
  }
  ZtString& operator=(ZtString&& other) noexcept {
    std::swap(_text, other._text);
    return *this;
  }
  constexpr ~ZtString() {
    if (_text != nullptr) release();
  }

  bool isNull() const noexcept { return _text == nullptr; }
  /// Missing or without bytes.
  bool empty() const noexcept { return _text == nullptr || _text->length == 0; }

  /// The bytes, valid as long as any copy exists; empty for a missing string.
  std::string_view view() const noexcept {
    if (_text == nullptr) return {};
    return {reinterpret_cast<const char*>(_text + 1), _text->length};
  }

  /// A copy of the bytes; empty for a missing string.
  explicit operator std::string() const { return std::string(view()); }

  /// The bytes as writers print them: "(null)" for a missing string.
  std::string_view printed() const noexcept { return _text == nullptr ? "(null)" : view(); }

  friend bool operator==(const ZtString& left, const ZtString& right) noexcept {
    return left._text == right._text ||
           (left._text != nullptr && right._text != nullptr && left.view() == right.view());
  }
  friend bool operator==(const ZtString& left, std::string_view right) noexcept {
    return !left.isNull() && left.view() == right;
  }
  friend bool operator==(const ZtString& left, const std::string& right) noexcept {
    return left == std::string_view(right);
  }
  friend bool operator==(const ZtString& left, const char* right) noexcept {
    return right == nullptr ? left.isNull() : left == std::string_view(right);
  }
  friend bool operator==(const ZtString& left, std::nullptr_t) noexcept { return left.isNull(); }

  /// Byte order; a missing string comes before all others.
  friend std::strong_ordering operator<=>(const ZtString& left, const ZtString& right) noexcept {
    if (left.isNull() || right.isNull()) return right.isNull() <=> left.isNull();
    return left.view().compare(right.view()) <=> 0;  // libc++ 14 has no <=> for views
  }

  /// Writes `printed()`; width and fill of the stream apply.
  friend ZT_EXPORT std::ostream& operator<<(std::ostream& stream, const ZtString& text);

 private:
  constexpr explicit ZtString(Text* text) noexcept : _text(text) {}

  void retain() const noexcept {
    if (_text != nullptr && _text->holders.load(std::memory_order_relaxed) != kConstant) {
      _text->holders.fetch_add(1, std::memory_order_relaxed);
    }
  }
  void release() noexcept;

  Text* _text = nullptr;
};

template <>
struct std::hash<ZtString> {
  std::size_t operator()(const ZtString& text) const noexcept {
    return std::hash<std::string_view>{}(text.view());
  }
};
