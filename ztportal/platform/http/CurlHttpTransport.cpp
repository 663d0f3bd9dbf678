// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/http/CurlHttpTransport.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/platform/http/CurlFailure.h"
#include "ztportal/platform/http/CurlLibrary.h"
#include "ztportal/platform/http/CurlNames.h"
#include "ztportal/platform/http/CurlSession.h"
#include "ztportal/platform/http/CurlUrl.h"

namespace zt {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kBodyLimit = std::size_t{16} << 20U;
constexpr std::size_t kHeaderLimit = std::size_t{1} << 20U;
constexpr int kRedirects = 5;

using HeaderList = std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)>;

/// The part of a response that has arrived.
struct Arrival {
  std::string body;
  std::size_t headerBytes = 0;
  bool headersComplete = false;
  bool isCut = false;
};

// For both callbacks any other result than `size` ends the transfer.
std::size_t takeHeader(char* line, std::size_t /*one*/, std::size_t size, void* arrival) {
  auto& arrived = *static_cast<Arrival*>(arrival);
  const std::string_view text(line, size);
  arrived.headerBytes += size;
  if (text.starts_with("HTTP/")) arrived.headersComplete = false;
  if (text == "\r\n" || text == "\n") arrived.headersComplete = true;
  return arrived.headerBytes > kHeaderLimit ? 0 : size;
}

std::size_t takeBody(char* bytes, std::size_t /*one*/, std::size_t size, void* arrival) {
  auto& arrived = *static_cast<Arrival*>(arrival);
  const std::size_t capacity = kBodyLimit - arrived.body.size();
  try {
    arrived.body.append(bytes, std::min(size, capacity));
  } catch (const std::bad_alloc&) {
    return 0;
  }
  arrived.isCut = size > capacity;
  return arrived.isCut ? 0 : size;
}

template <class Value>
Value infoOf(const CurlLibrary& curl, CURL* handle, CURLINFO info) {
  Value value{};
  curl.easyGetinfo(handle, info, &value);
  return value;
}

/// Adds what libcurl measured. It counts each time from the start of the transfer and leaves 0 for
/// what was not reached.
void addTimes(const CurlLibrary& curl, CURL* handle, HttpTimes& times) {
  const auto at = [&](CURLINFO info) {
    return std::chrono::microseconds(infoOf<curl_off_t>(curl, handle, info));
  };
  const auto between = [](std::chrono::microseconds start, std::chrono::microseconds end) {
    return std::max(end - start, std::chrono::microseconds::zero());
  };
  const auto lookup = at(CURLINFO_NAMELOOKUP_TIME_T);
  const auto connect = at(CURLINFO_CONNECT_TIME_T);
  const auto request = at(CURLINFO_PRETRANSFER_TIME_T);
  times.lookup += lookup;
  times.connect += between(lookup, connect);
  times.tls += between(connect, at(CURLINFO_APPCONNECT_TIME_T));
  if (request.count() > 0) times.response += between(request, at(CURLINFO_TOTAL_TIME_T));
}

/// What libcurl may do by itself within a transfer, and what it wanted to do.
struct Restraint {
  bool mayLookUp = false;
  bool wantsLookUp = false;
  bool hasBegun = false;
};

int beginLookUp(void* /*resolver*/, void* /*reserved*/, void* restraint) {
  auto& restrained = *static_cast<Restraint*>(restraint);
  restrained.wantsLookUp = !restrained.mayLookUp;
  return restrained.wantsLookUp ? 1 : 0;
}

/// libcurl repeats a request when a kept connection ends without a response. But the server may
/// have read the first one, and a report must not be posted twice.
int beginPost(void* restraint, char* /*remoteAddress*/, char* /*localAddress*/, int /*remotePort*/,
              int /*localPort*/) {
  const bool isFirst = !std::exchange(static_cast<Restraint*>(restraint)->hasBegun, true);
  return isFirst ? CURL_PREREQFUNC_OK : CURL_PREREQFUNC_ABORT;
}

bool isInOneLine(const HttpHeader& header) {
  constexpr std::string_view kEnds("\r\n\0", 3);
  return header.name.find_first_of(kEnds) == std::string_view::npos &&
         header.value.find_first_of(kEnds) == std::string_view::npos;
}

/// A header in libcurl's notation, in which a semicolon marks a header without a value.
std::string lineOf(std::string_view name, std::string_view value) {
  std::string line(name);
  if (value.empty()) return line += ';';
  appendText(line, ": ", value);
  return line;
}

/// The headers of a request.
HeaderList headersOf(const CurlLibrary& curl, std::span<const HttpHeader> headers,
                     const std::vector<std::pair<std::string, std::string>>& more = {}) {
  HeaderList list(nullptr, curl.slistFreeAll);
  const auto add = [&](const std::string& line) {
    curl_slist* const first = curl.slistAppend(list.get(), line.c_str());
    if (first == nullptr) throw std::bad_alloc();
    static_cast<void>(list.release());
    list.reset(first);
  };
  // A name alone suppresses what libcurl would send by itself.
  add("Expect:");
  add("Proxy-Connection:");
  bool hasType = false;
  for (const HttpHeader& header : headers) {
    add(lineOf(header.name, header.value));
    hasType |= equalsAnyCase(header.name, "content-type");
  }
  if (!hasType) add("Content-Type:");
  for (const auto& [name, value] : more) add(lineOf(name, value));
  return list;
}

void setMethod(CurlOptions& options, const HttpRequest& request, Restraint& restraint) {
  if (request.method == "GET") {
    options.set(CURLOPT_HTTPGET, 1L);
    return;
  }
  const std::string_view body = request.body.value_or("");
  options.set(CURLOPT_POST, 1L);
  options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  // libcurl reads from standard input for a null pointer.
  options.set(CURLOPT_POSTFIELDS, body.empty() ? "" : body.data());
  options.set(CURLOPT_PREREQFUNCTION, beginPost);
  options.set(CURLOPT_PREREQDATA, &restraint);
}

const char* orNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

/// The authorities of the host, or else those of OpenSSL's variables, which libcurl itself does not
/// read.
void setAuthorities(CurlOptions& options, const ZtTransportOptions& wanted) {
  if (!wanted.authorityFile.empty() || !wanted.authorityFolder.empty()) {
    // Null takes the system's away.
    options.set(CURLOPT_CAINFO, orNull(wanted.authorityFile));
    options.set(CURLOPT_CAPATH, orNull(wanted.authorityFolder));
    options.set(CURLOPT_PROXY_CAINFO, orNull(wanted.authorityFile));
    options.set(CURLOPT_PROXY_CAPATH, orNull(wanted.authorityFolder));
    return;
  }
  for (const auto& [option, variable] :
       {std::pair(CURLOPT_CAINFO, "SSL_CERT_FILE"), std::pair(CURLOPT_CAPATH, "SSL_CERT_DIR")}) {
    const char* const path = std::getenv(variable);
    if (path != nullptr && *path != '\0') options.set(option, path);
  }
}

void setTls(CurlOptions& options, const ZtTransportOptions& wanted, bool isFirstOrigin) {
  setAuthorities(options, wanted);
  // In the order of `ZtTlsVersion`.
  constexpr std::array<long, 3> kVersions{CURL_SSLVERSION_DEFAULT, CURL_SSLVERSION_TLSv1_2,
                                          CURL_SSLVERSION_TLSv1_3};
  options.set(CURLOPT_SSLVERSION, kVersions.at(static_cast<std::size_t>(wanted.minimumTlsVersion)));
  if (wanted.clientCertificate.empty() || !isFirstOrigin) return;
  options.set(CURLOPT_SSLCERT, wanted.clientCertificate.c_str());
  options.set(CURLOPT_SSLKEY, orNull(wanted.clientKey));
  // Without a password OpenSSL would ask for one on the terminal.
  options.set(CURLOPT_KEYPASSWD, wanted.clientKeyPassword.c_str());
}

/// A request to one URL, redirects not followed.
struct Hop {
  const CurlUrl& url;
  const ZtTransportOptions& wanted;
  bool isFirstOrigin;
  const CurlCredentials& credentials;
  curl_slist* headers;
  Clock::time_point deadline;
  HttpTimes& times;  ///< those of this hop are added
};

/// When the hop gives up to connect.
Clock::time_point connectDeadline(const Hop& hop) {
  const std::chrono::milliseconds limit =
      hop.wanted.connectTimeout.count() > 0 ? hop.wanted.connectTimeout : hop.wanted.idleTimeout;
  if (limit.count() <= 0 || limit.count() > kMostCurlMilliseconds) return hop.deadline;
  return std::min(hop.deadline, Clock::now() + limit);
}

long millisecondsUntil(Clock::time_point deadline) {
  return static_cast<long>(
      std::chrono::floor<std::chrono::milliseconds>(deadline - Clock::now()).count());
}

/// `redirect` is where the response sends the request; it stays empty if nowhere.
HttpResponse makeHop(const CurlLibrary& curl, const HttpRequest& request, const Hop& hop,
                     std::string& redirect) {
  CurlSession& session = CurlSession::begin(curl);
  CURL* const handle = session.handle();
  CurlNames& names = CurlNames::ofThisProcess(curl);
  Arrival arrival;
  CurlRoute route{hop.wanted.proxy ? hop.wanted.proxy->c_str() : nullptr,
                  hop.wanted.noProxy ? hop.wanted.noProxy->c_str() : nullptr};
  Restraint restraint{hasOnlyAddresses(curl, hop.url, route)};
  std::array<char, CURL_ERROR_SIZE> reason{};

  CurlOptions options(curl, handle);
  setMethod(options, request, restraint);
  setTls(options, hop.wanted, hop.isFirstOrigin);
  route.setIn(options);
  options.set(CURLOPT_CURLU, hop.url.get());
  if (!hop.credentials.isEmpty()) {
    options.set(CURLOPT_USERNAME, hop.credentials.user.c_str());
    options.set(CURLOPT_PASSWORD, hop.credentials.password.c_str());
  }
  if (hop.wanted.idleTimeout.count() > 0) {
    const auto seconds = std::chrono::ceil<std::chrono::seconds>(hop.wanted.idleTimeout).count();
    options.set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    options.set(CURLOPT_LOW_SPEED_TIME,
                static_cast<long>(std::min<std::int64_t>(seconds, kMostCurlMilliseconds / 1000)));
  }
  options.set(CURLOPT_ERRORBUFFER, reason.data());
  options.set(CURLOPT_NOSIGNAL, 1L);
  options.set(CURLOPT_MAXAGE_CONN, static_cast<long>(CurlSession::kIdleLimit.count()) - 1);
  options.set(CURLOPT_OPENSOCKETFUNCTION, CurlSockets::open);
  options.set(CURLOPT_OPENSOCKETDATA, &session.sockets());
  options.set(CURLOPT_CLOSESOCKETFUNCTION, CurlSockets::close);
  options.set(CURLOPT_CLOSESOCKETDATA, &session.sockets());
  options.set(CURLOPT_SHARE, names.found());
  options.set(CURLOPT_RESOLVER_START_FUNCTION, beginLookUp);
  options.set(CURLOPT_RESOLVER_START_DATA, &restraint);
  options.set(CURLOPT_HTTPHEADER, hop.headers);
  options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  options.set(CURLOPT_HEADERFUNCTION, takeHeader);
  options.set(CURLOPT_HEADERDATA, &arrival);
  options.set(CURLOPT_WRITEFUNCTION, takeBody);
  options.set(CURLOPT_WRITEDATA, &arrival);

  const Clock::time_point connected = connectDeadline(hop);
  const auto perform = [&] {
    const long left = millisecondsUntil(hop.deadline);
    const long leftToConnect = millisecondsUntil(connected);
    if (left <= 0 || leftToConnect <= 0) return CURLE_OPERATION_TIMEDOUT;
    restraint.wantsLookUp = false;
    options.set(CURLOPT_TIMEOUT_MS, left);
    options.set(CURLOPT_CONNECTTIMEOUT_MS, leftToConnect);
    return options.accepted() ? curl.easyPerform(handle) : CURLE_UNKNOWN_OPTION;
  };
  CURLcode end = perform();
  // The second one is for SOCKS proxies to which libcurl passes the address of the host.
  for (const char* noProxy : {route.noProxy, "*"}) {
    if (!restraint.wantsLookUp) break;
    route.noProxy = noProxy;
    const Clock::time_point start = Clock::now();
    const bool isFound = names.find(hop.url.get(), route, connected);
    hop.times.lookup += std::chrono::floor<std::chrono::microseconds>(Clock::now() - start);
    end = isFound                    ? perform()
          : Clock::now() < connected ? CURLE_COULDNT_RESOLVE_HOST
                                     : CURLE_OPERATION_TIMEDOUT;
    if (!isFound) break;
  }

  addTimes(curl, handle, hop.times);
  HttpResponse response;
  // libcurl accepts a response whose headers are cut off.
  if ((end == CURLE_OK || arrival.isCut) && arrival.headersComplete) {
    if (arrival.isCut) removeHalfCharacter(arrival.body);
    response.status = static_cast<int>(infoOf<long>(curl, handle, CURLINFO_RESPONSE_CODE));
    response.body = std::move(arrival.body);
    // Negative for a date in the past.
    const auto seconds = infoOf<curl_off_t>(curl, handle, CURLINFO_RETRY_AFTER);
    response.retryAfter = std::chrono::seconds(std::max<curl_off_t>(seconds, 0));
    const auto* const target = infoOf<const char*>(curl, handle, CURLINFO_REDIRECT_URL);
    if (target != nullptr) redirect = target;
  } else {
    const long tunnelStatus = infoOf<long>(curl, handle, CURLINFO_HTTP_CONNECTCODE);
    response =
        failure(tunnelStatus >= 300 ? ZtDeliveryError::Proxy : deliveryErrorOf(end), reason.data());
  }
  // The handle outlives this exchange and must not refer to it.
  curl.easyReset(handle);
  CurlSession::keep();
  return response;
}

HttpResponse exchangeOrThrow(const CurlLibrary& curl, const HttpRequest& request) {
  if (request.method != "GET" && request.method != "POST") return {};
  if (request.timeout <= std::chrono::milliseconds::zero()) return {};
  const auto deadline =
      Clock::now() + std::min(request.timeout, std::chrono::milliseconds(kMostCurlMilliseconds));
  const ZtTransportOptions none;
  const ZtTransportOptions& wanted = request.options != nullptr ? *request.options : none;
  CurlUrl url = httpUrl(curl, request.url);
  if (!url) return failure(ZtDeliveryError::Address);
  if (!std::all_of(request.headers.begin(), request.headers.end(), isInOneLine)) {
    return failure(ZtDeliveryError::Host, "a header has a line end");
  }
  const HeaderList headers = headersOf(curl, request.headers);
  const HeaderList firstHeaders = headersOf(curl, request.headers, wanted.headers);

  std::optional<CurlCredentials> credentials = takeCredentials(curl, url);
  if (!credentials) return failure(ZtDeliveryError::Address);

  // libcurl could follow redirects, but would also go from http over https back to http.
  HttpTimes times;
  bool isFirstOrigin = true;
  for (int redirects = 0; redirects <= kRedirects; ++redirects) {
    // Before the request: without memory for it later, an accepted report would count as lost.
    std::string target = partOf(curl, url, CURLUPART_URL);
    std::string redirect;
    HttpResponse response =
        makeHop(curl, request,
                {url, wanted, isFirstOrigin, *credentials,
                 isFirstOrigin ? firstHeaders.get() : headers.get(), deadline, times},
                redirect);
    if (redirect.empty()) {
      response.times = times;
      response.url = std::move(target);
      return response;
    }
    // No server can make the library log in to another one with credentials of its choice. libcurl
    // writes those of the request into a URL that is relative to it.
    CurlUrl next = httpUrl(curl, redirect, CURLU_URLENCODE);
    const std::optional<CurlCredentials> given = next ? takeCredentials(curl, next) : std::nullopt;
    if (!given || (!given->isEmpty() && *given != *credentials)) {
      return failure(ZtDeliveryError::Redirect, "to a URL that is not followed");
    }
    const auto origin = originOf(curl, url);
    const auto nextOrigin = originOf(curl, next);
    if (origin.front() == "https" && nextOrigin.front() != "https") {
      return failure(ZtDeliveryError::Redirect, "from https to http");
    }
    if (nextOrigin != origin) {
      credentials = CurlCredentials();
      isFirstOrigin = false;
    }
    url = std::move(next);
  }
  return failure(ZtDeliveryError::Redirect, "too many");
}

}  // namespace

CurlHttpTransport::CurlHttpTransport(std::vector<const char*> libraries)
    : _names(std::move(libraries)) {}

CurlHttpTransport::~CurlHttpTransport() = default;

HttpResponse CurlHttpTransport::exchange(const HttpRequest& request) noexcept {
  try {
    // A document without a server must not cost the loading of libcurl.
    if (request.url.empty()) return failure(ZtDeliveryError::Address);
    const CurlLibrary& curl = library();
    if (!curl.error.empty()) return failure(ZtDeliveryError::Library, curl.error);
    const Clock::time_point start = Clock::now();
    HttpResponse response = exchangeOrThrow(curl, request);
    response.times.total = std::chrono::floor<std::chrono::microseconds>(Clock::now() - start);
    return response;
  } catch (const std::bad_alloc&) {
    return {.error = ZtDeliveryError::Memory};
  }
}

void CurlHttpTransport::closeConnections() { CurlSession::end(); }

const std::string& CurlHttpTransport::loadError() { return library().error; }

const CurlLibrary& CurlHttpTransport::library() {
  std::call_once(_loading, [this] { _library = std::make_unique<const CurlLibrary>(_names); });
  return *_library;
}

}  // namespace zt
