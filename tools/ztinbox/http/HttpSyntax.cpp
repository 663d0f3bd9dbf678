// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/http/HttpSyntax.h"

#include <algorithm>
#include <boost/beast/http/basic_parser.hpp>
#include <boost/beast/http/error.hpp>
#include <boost/beast/http/field.hpp>
#include <boost/beast/http/status.hpp>
#include <cstdint>
#include <optional>

#include "tools/ztinbox/http/RequestTarget.h"
#include "ztportal/base/Text.h"

namespace zt::inbox {

namespace {

namespace http = boost::beast::http;
using boost::beast::error_code;
// Not std::string_view in this version of Boost.
using BeastText = boost::beast::string_view;

constexpr std::size_t kMostHeaders = 1'000;
/// The longest line before a chunk, and the longest trailers.
constexpr std::size_t kLongestChunkLine = 16UL * 1024;
/// Memory for an announced body is reserved up to this size before anything of it has arrived.
constexpr std::uint64_t kReserved = 1024UL * 1024;

/// Makes a browser load and run only the inbox's own files, whatever a report contains, and
/// prevents other sites from embedding the inbox.
constexpr std::string_view kEveryResponse =
    "Content-Security-Policy: default-src 'none'; script-src 'self'; style-src 'self'; img-src "
    "'self'; font-src 'self'; connect-src 'self'; base-uri 'none'; form-action 'none'; "
    "frame-ancestors 'none'\r\n"
    "Cross-Origin-Resource-Policy: same-origin\r\n"
    "Referrer-Policy: no-referrer\r\n"
    "X-Content-Type-Options: nosniff\r\n";

std::string_view viewOf(BeastText text) { return {text.data(), text.size()}; }

Refusal syntaxRefusal(const error_code& error) {
  if (error == http::error::bad_content_length) return {status::kBadRequest, "bad Content-Length"};
  if (error == http::error::bad_transfer_encoding) {
    return {status::kBadRequest, "bad Transfer-Encoding"};
  }
  if (error == http::error::bad_chunk || error == http::error::bad_chunk_extension) {
    return {status::kBadRequest, "bad chunk"};
  }
  if (error == http::error::body_limit) return {status::kTooLarge, "request over 64 MiB"};
  if (error == http::error::header_limit) {
    return {status::kHeadTooLarge, "request head over 256 KiB"};
  }
  return {status::kBadRequest, "bad request"};
}

/// The target in the beginning of a request line, which may be cut off.
std::string_view targetIn(std::string_view line) {
  line = line.substr(0, line.find('\r'));
  const std::size_t begin = std::min(line.find(' '), line.size() - 1) + 1;
  return line.substr(begin, line.find(' ', begin) - begin);
}

}  // namespace

/// Beast finds the parts of a request; this class collects them, and is stricter about its framing:
/// a request whose end a proxy could find elsewhere is refused.
class RequestReader::Parser final : public http::basic_parser<true> {
 public:
  explicit Parser(MemoryBudget::Share& memory) : _memory(memory) {
    header_limit(kLargestHead);
    body_limit(kLargestRequest);
  }

  HttpRequest request;
  std::optional<Refusal> refusal;
  int version = 0;
  std::size_t bodySize = 0;

 private:
  void on_request_impl(http::verb /*known*/, BeastText method, BeastText target, int httpVersion,
                       error_code& /*error*/) override {
    request.method = viewOf(method);
    RequestTarget parts = readTarget(viewOf(target));
    request.path = std::move(parts.path);
    request.authority = std::move(parts.authority);
    request.parameters = std::move(parts.parameters);
    version = httpVersion;
  }

  void on_field_impl(http::field field, BeastText name, BeastText value,
                     error_code& error) override {
    if (is_header_done()) return;  // a trailer
    if (request.headers.size() == kMostHeaders) {
      return refuse({status::kHeadTooLarge, "over 1000 headers"}, error);
    }
    if (field == http::field::content_length) {
      if (_hasLength || value.find(',') != BeastText::npos) error = http::error::bad_content_length;
      _hasLength = true;
    }
    if (field == http::field::transfer_encoding) {
      if (_hasCoding || version < 11) error = http::error::bad_transfer_encoding;
      if (!_hasCoding && !equalsAnyCase(viewOf(value), "chunked")) {
        refuse({status::kNotImplemented, "transfer encoding not supported"}, error);
      }
      _hasCoding = true;
    }
    request.headers.emplace_back(viewOf(name), viewOf(value));
  }

  void on_body_init_impl(const boost::optional<std::uint64_t>& length,
                         error_code& /*error*/) override {
    request.body.reserve(std::min(length.value_or(0), kReserved));
  }

  std::size_t on_body_impl(BeastText bytes, error_code& error) override {
    if (!_memory.grow(bytes.size())) {
      refuse({status::kUnavailable, "too much is being received"}, error);
      return 0;
    }
    request.body.append(bytes.data(), bytes.size());
    bodySize += bytes.size();
    return bytes.size();
  }

  std::size_t on_chunk_body_impl(std::uint64_t /*left*/, BeastText bytes,
                                 error_code& error) override {
    return on_body_impl(bytes, error);
  }

  void on_response_impl(int /*status*/, BeastText /*reason*/, int /*httpVersion*/,
                        error_code& /*error*/) override {}
  void on_header_impl(error_code& /*error*/) override {}
  void on_chunk_header_impl(std::uint64_t /*size*/, BeastText /*extensions*/,
                            error_code& /*error*/) override {}
  void on_finish_impl(error_code& /*error*/) override {}

  void refuse(Refusal reason, error_code& error) {
    refusal = std::move(reason);
    error = http::error::bad_value;
  }

  MemoryBudget::Share& _memory;
  bool _hasLength = false;
  bool _hasCoding = false;
};

RequestReader::RequestReader(MemoryBudget::Share& memory) : _memory(memory) { next(); }

RequestReader::~RequestReader() = default;

void RequestReader::next() {
  _parser = std::make_unique<Parser>(_memory);
  _head.clear();
  _mayBeginEmpty = true;
}

RequestReader::Step RequestReader::read(std::string_view bytes) {
  std::string joined;
  if (!_pending.empty()) {
    joined = std::move(_pending);
    joined += bytes;
    bytes = joined;
  }
  const Step step = parse(bytes);
  _pending = bytes;
  return step;
}

RequestReader::Step RequestReader::parse(std::string_view& bytes) {
  constexpr std::string_view kLineEnd = "\r\n";
  // No chunked body ends with less. Beast expects at least that many bytes.
  constexpr std::string_view kLastChunk = "0\r\n\r\n";
  while (!isComplete()) {
    if (_mayBeginEmpty && bytes.size() > 1) {
      if (bytes.starts_with(kLineEnd)) bytes.remove_prefix(kLineEnd.size());
      _mayBeginEmpty = false;
    }
    if (bytes.empty() || _mayBeginEmpty) return Step::kMore;
    const bool wasHead = !isHeadComplete();
    if (!wasHead && _parser->chunked() && bytes.size() < kLastChunk.size()) return Step::kMore;
    error_code error;
    const std::size_t used = _parser->put({bytes.data(), bytes.size()}, error);
    if (wasHead) _head.append(bytes.substr(0, used));
    if (error && error != http::error::need_more) {
      return refuse(_parser->refusal ? *_parser->refusal : syntaxRefusal(error));
    }
    bytes.remove_prefix(used);
    const std::size_t headSize = _head.size() + (isHeadComplete() ? 0 : bytes.size());
    if (headSize > kLargestHead) return refuse(syntaxRefusal(http::error::header_limit));
    if (wasHead && isHeadComplete()) {
      _parser->eager(true);
      return Step::kHead;
    }
    if (error == http::error::need_more) {
      if (!wasHead && bytes.size() > kLongestChunkLine) {
        return refuse(syntaxRefusal(http::error::bad_chunk));
      }
      return Step::kMore;
    }
  }
  return Step::kComplete;
}

RequestReader::Step RequestReader::refuse(Refusal refusal) {
  _refusal = std::move(refusal);
  return Step::kRefused;
}

std::string RequestReader::path() const {
  return _parser->version == 0 ? readTarget(targetIn(_pending)).path : _parser->request.path;
}

bool RequestReader::hasBegun() const { return _parser->got_some() || !_pending.empty(); }
bool RequestReader::isHeadComplete() const { return _parser->is_header_done(); }
bool RequestReader::isComplete() const { return _parser->is_done(); }
std::size_t RequestReader::bodySize() const { return _parser->bodySize; }
HttpRequest& RequestReader::request() { return _parser->request; }
bool RequestReader::isVersion10() const { return _parser->version == 10; }
bool RequestReader::keepsAlive() const { return _parser->keep_alive(); }

bool RequestReader::expectsContinue() const {
  const auto expected = _parser->request.header("expect");
  return !isVersion10() && !isComplete() && _pending.empty() && expected.size() == 1 &&
         equalsAnyCase(expected.front(), "100-continue");
}

std::string_view statusPhrase(int status) {
  return viewOf(http::obsolete_reason(http::int_to_status(static_cast<unsigned>(status))));
}

bool mayHaveBody(int status) { return status >= 200 && status != 204 && status != 304; }

std::string responseHead(const HttpResponse& response, bool isChunked,
                         std::string_view connection) {
  std::string head = "HTTP/1.1 ";
  head.append(std::to_string(response.status)).append(" ");
  head.append(statusPhrase(response.status)).append("\r\n");
  head.append(kEveryResponse);
  for (const auto& [name, value] : response.headers) {
    head.append(name).append(": ").append(value).append("\r\n");
  }
  if (!response.type.empty()) head.append("Content-Type: ").append(response.type).append("\r\n");
  if (isChunked) {
    head.append("Transfer-Encoding: chunked\r\n");
  } else if (mayHaveBody(response.status) && !response.stream) {
    const std::size_t length = std::max(response.announcedSize, response.body.size());
    head.append("Content-Length: ").append(std::to_string(length)).append("\r\n");
  }
  return head.append(connection).append("\r\n");
}

}  // namespace zt::inbox
