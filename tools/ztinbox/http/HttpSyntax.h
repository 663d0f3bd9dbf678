// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "tools/ztinbox/http/Exchange.h"
#include "tools/ztinbox/http/MemoryBudget.h"

namespace zt::inbox {

/// The largest request body and the largest request head that are accepted.
inline constexpr std::size_t kLargestRequest = 64UL * 1024 * 1024;
inline constexpr std::size_t kLargestHead = 256UL * 1024;

/// Reads the requests of a connection one after another (HTTP/1.1, RFC 9112), from bytes that come
/// in any portions. Bodies are passed on as received, whatever their media type; trailers are
/// dropped.
///
///     switch (reader.read(bytes)) {
///       case Step::kMore: …                      // receive more bytes
///       case Step::kHead: …                      // look at request(), then call read({})
///       case Step::kComplete: …                  // respond, call next(), then read({})
///       case Step::kRefused: …                   // respond with refusal(), end the connection
///     }
class RequestReader {
 public:
  enum class Step { kMore, kHead, kComplete, kRefused };

  /// Bodies count as part of `memory`.
  explicit RequestReader(MemoryBudget::Share& memory);
  RequestReader(const RequestReader&) = delete;
  RequestReader& operator=(const RequestReader&) = delete;
  ~RequestReader();

  /// Reads on in `bytes`, which follow those of the last call.
  Step read(std::string_view bytes);
  /// Begins with the next request.
  void next();

  /// Whether a part of the current request has arrived.
  bool hasBegun() const;
  bool isHeadComplete() const;
  bool isComplete() const;
  /// How much of the body has arrived.
  std::size_t bodySize() const;

  // Valid from the head on

  HttpRequest& request();
  /// The head as it was received.
  std::string& head() { return _head; }
  bool isVersion10() const;
  /// Whether the client wants to send another request.
  bool keepsAlive() const;
  /// Whether the client waits for "100 Continue" before it sends the body.
  bool expectsContinue() const;

  /// Why the request cannot be read.
  const Refusal& refusal() const { return _refusal; }
  /// The path, as far as it is known: for the response to a request that cannot be read.
  std::string path() const;

 private:
  class Parser;

  Step parse(std::string_view& bytes);
  Step refuse(Refusal refusal);

  MemoryBudget::Share& _memory;
  std::unique_ptr<Parser> _parser;
  std::string _pending;  ///< received, but not parsed yet
  std::string _head;
  Refusal _refusal;
  bool _mayBeginEmpty = true;  ///< with an empty line
};

/// The head of a response. `connection` is one or more header lines.
std::string responseHead(const HttpResponse& response, bool isChunked, std::string_view connection);

bool mayHaveBody(int status);
/// "Not Found" (RFC 9110, section 15).
std::string_view statusPhrase(int status);

}  // namespace zt::inbox
