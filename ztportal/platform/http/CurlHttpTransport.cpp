#include "ztportal/platform/http/CurlHttpTransport.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>

#include "ztportal/base/Text.h"
#include "ztportal/base/Utf8.h"
#include "ztportal/platform/http/CurlLibrary.h"
#include "ztportal/platform/http/CurlNames.h"
#include "ztportal/platform/http/CurlSession.h"

namespace zt {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kBodyLimit = std::size_t{16} << 20U;
constexpr std::size_t kHeaderLimit = std::size_t{1} << 20U;
constexpr int kRedirects = 5;

using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;
using Text = std::unique_ptr<char, decltype(&curl_free)>;

class HeaderList {
 public:
  explicit HeaderList(const CurlLibrary& curl) : _curl(curl) {}
  HeaderList(const HeaderList&) = delete;
  HeaderList& operator=(const HeaderList&) = delete;
  ~HeaderList() { _curl.slistFreeAll(_first); }

  void add(const std::string& line) {
    curl_slist* first = _curl.slistAppend(_first, line.c_str());
    if (first == nullptr) throw std::bad_alloc();
    _first = first;
  }
  curl_slist* get() const { return _first; }

 private:
  const CurlLibrary& _curl;
  curl_slist* _first = nullptr;
};

// URLs.

std::string partOf(const CurlLibrary& curl, const Url& url, CURLUPart part, unsigned flags = 0) {
  char* text = nullptr;
  if (curl.urlGet(url.get(), part, &text, flags) != CURLUE_OK) return {};
  const Text owner(text, curl.free);
  return text;
}

/// `text` as a URL; null unless its scheme is http or https.
Url httpUrl(const CurlLibrary& curl, std::string_view text, unsigned flags = 0) {
  Url none(nullptr, curl.urlCleanup);
  if (text.find('\0') != std::string_view::npos) return none;
  Url url(curl.url(), curl.urlCleanup);
  // Without CURLU_GUESS_SCHEME a missing scheme is an error.
  if (!url ||
      curl.urlSet(url.get(), CURLUPART_URL, std::string(text).c_str(), flags) != CURLUE_OK) {
    return none;
  }
  const std::string scheme = partOf(curl, url, CURLUPART_SCHEME);
  return scheme == "http" || scheme == "https" ? std::move(url) : std::move(none);
}

/// Scheme, host and port: what a user name and its password are meant for (RFC 6454).
std::array<std::string, 3> originOf(const CurlLibrary& curl, const Url& url) {
  return {partOf(curl, url, CURLUPART_SCHEME), partOf(curl, url, CURLUPART_HOST),
          partOf(curl, url, CURLUPART_PORT, CURLU_DEFAULT_PORT)};
}

/// Whether libcurl knows the address of `host` without asking anybody.
bool isAddress(const std::string& host) {
  in_addr address{};
  return host.starts_with('[') || equalsAnyCase(host, "localhost") ||
         ::inet_pton(AF_INET, host.c_str(), &address) == 1;
}

/// Whether a request for `url` needs no name look-up, whichever proxy it goes through.
bool hasOnlyAddresses(const CurlLibrary& curl, const Url& url) {
  if (!isAddress(partOf(curl, url, CURLUPART_HOST))) return false;
  for (const char* name : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
    const char* const value = std::getenv(name);
    if (value == nullptr || *value == '\0') continue;
    const Url proxy(curl.url(), curl.urlCleanup);
    constexpr unsigned kFlags = CURLU_NON_SUPPORT_SCHEME | CURLU_GUESS_SCHEME;
    if (!proxy || curl.urlSet(proxy.get(), CURLUPART_URL, value, kFlags) != CURLUE_OK ||
        !isAddress(partOf(curl, proxy, CURLUPART_HOST))) {
      return false;
    }
  }
  return true;
}

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

/// Removes the beginning of a UTF-8 character from the end.
void removeHalfCharacter(std::string& text) {
  std::size_t last = text.size();
  do {
    --last;
  } while (last > 0 && text.size() - last < 4 && (text[last] & 0xc0) == 0x80);
  if (!isUtf8(std::string_view(text).substr(last))) text.resize(last);
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

bool isOneLine(std::string_view text) {
  return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

bool isContentType(const HttpHeader& header) { return equalsAnyCase(header.name, "content-type"); }

/// Adds the lines for `headers` in libcurl's notation; false when one of them cannot be sent.
bool addHeaders(HeaderList& list, std::span<const HttpHeader> headers) {
  // A name alone suppresses what libcurl would send by itself.
  list.add("Expect:");
  list.add("Proxy-Connection:");
  if (std::none_of(headers.begin(), headers.end(), isContentType)) list.add("Content-Type:");

  for (const HttpHeader& header : headers) {
    if (!isOneLine(header.name) || !isOneLine(header.value)) return false;
    // A semicolon stands for a header without a value.
    list.add(header.value.empty() ? std::string(header.name) + ';'
                                  : std::string(header.name) + ": " + std::string(header.value));
  }
  return true;
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

/// OpenSSL's variables for private certificate authorities, which libcurl itself does not read.
void setAuthorities(CurlOptions& options) {
  const auto setPath = [&options](CURLoption option, const char* variable) {
    const char* const path = std::getenv(variable);
    if (path != nullptr && *path != '\0') options.set(option, path);
  };
  setPath(CURLOPT_CAINFO, "SSL_CERT_FILE");
  setPath(CURLOPT_CAPATH, "SSL_CERT_DIR");
}

struct Credentials {
  std::string user;
  std::string password;

  bool operator==(const Credentials&) const = default;
};

/// Removes the user name and the password from `url`. Nothing if they contain control characters,
/// which libcurl does not decode.
std::optional<Credentials> takeCredentials(const CurlLibrary& curl, const Url& url) {
  Credentials credentials;
  for (const auto& [part, value] : {std::pair(CURLUPART_USER, &credentials.user),
                                    std::pair(CURLUPART_PASSWORD, &credentials.password)}) {
    *value = partOf(curl, url, part, CURLU_URLDECODE);
    if (value->empty() != partOf(curl, url, part).empty()) return std::nullopt;
    curl.urlSet(url.get(), part, nullptr, 0);
  }
  return credentials;
}

/// A request to one URL, redirects not followed.
struct Hop {
  const Url& url;
  const Credentials& credentials;
  curl_slist* headers;
  Clock::time_point deadline;
};

struct HopResult {
  HttpResponse response;
  std::string redirect;  ///< where the response sends the request; empty if nowhere
};

HopResult makeHop(const CurlLibrary& curl, const HttpRequest& request, const Hop& hop) {
  CurlSession& session = CurlSession::begin(curl);
  CURL* const handle = session.handle();
  CurlNames& names = CurlNames::ofThisProcess(curl);
  Arrival arrival;
  Restraint restraint;
  restraint.mayLookUp = hasOnlyAddresses(curl, hop.url);

  CurlOptions options(curl, handle);
  setMethod(options, request, restraint);
  setAuthorities(options);
  options.set(CURLOPT_CURLU, hop.url.get());
  if (!hop.credentials.user.empty() || !hop.credentials.password.empty()) {
    options.set(CURLOPT_USERNAME, hop.credentials.user.c_str());
    options.set(CURLOPT_PASSWORD, hop.credentials.password.c_str());
  }
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

  const auto perform = [&] {
    const auto left = std::chrono::floor<std::chrono::milliseconds>(hop.deadline - Clock::now());
    if (left.count() <= 0) return false;
    restraint.wantsLookUp = false;
    options.set(CURLOPT_TIMEOUT_MS, static_cast<long>(left.count()));
    options.set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(left.count()));
    return options.accepted() && curl.easyPerform(handle) == CURLE_OK;
  };
  bool isWhole = perform();
  // The second one is for SOCKS proxies to which libcurl passes the address of the host.
  for (const char* noProxy : {static_cast<const char*>(nullptr), "*"}) {
    if (!restraint.wantsLookUp || !names.find(hop.url.get(), noProxy, hop.deadline)) break;
    isWhole = perform();
  }

  HopResult result;
  // libcurl accepts a response whose headers are cut off.
  if ((isWhole || arrival.isCut) && arrival.headersComplete) {
    long status = 0;
    curl.easyGetinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    const char* redirect = nullptr;
    curl.easyGetinfo(handle, CURLINFO_REDIRECT_URL, &redirect);
    if (arrival.isCut) removeHalfCharacter(arrival.body);
    result.response = {static_cast<int>(status), std::move(arrival.body)};
    if (redirect != nullptr) result.redirect = redirect;
  }
  // The handle outlives this exchange and must not refer to it.
  curl.easyReset(handle);
  CurlSession::keep();
  return result;
}

HttpResponse exchangeOrThrow(const CurlLibrary& curl, const HttpRequest& request) {
  if (request.method != "GET" && request.method != "POST") return {};
  if (request.timeout <= std::chrono::milliseconds::zero()) return {};
  const auto deadline =
      Clock::now() + std::min(request.timeout, std::chrono::milliseconds(kMostCurlMilliseconds));
  HeaderList headers(curl);
  Url url = httpUrl(curl, request.url);
  if (!url || !addHeaders(headers, request.headers)) return {};

  std::optional<Credentials> credentials = takeCredentials(curl, url);
  if (!credentials) return {};

  // libcurl could follow redirects, but would also go from http over https back to http.
  for (int redirects = 0; redirects <= kRedirects; ++redirects) {
    HopResult hop = makeHop(curl, request, {url, *credentials, headers.get(), deadline});
    if (hop.redirect.empty()) return std::move(hop.response);
    Url next = httpUrl(curl, hop.redirect, CURLU_URLENCODE);
    if (!next) return {};
    // No server can make the library log in to another one with credentials of its choice. Those of
    // the URL itself are libcurl's addition to a redirect that is relative to it.
    const std::optional<Credentials> named = takeCredentials(curl, next);
    if (!named || (*named != Credentials() && *named != *credentials)) return {};
    const auto origin = originOf(curl, url);
    const auto nextOrigin = originOf(curl, next);
    if (origin.front() == "https" && nextOrigin.front() != "https") return {};
    if (nextOrigin != origin) credentials = Credentials();
    url = std::move(next);
  }
  return {};
}

}  // namespace

CurlHttpTransport::CurlHttpTransport(std::vector<const char*> libraries)
    : _names(std::move(libraries)) {}

CurlHttpTransport::~CurlHttpTransport() = default;

HttpResponse CurlHttpTransport::exchange(const HttpRequest& request) noexcept {
  try {
    const CurlLibrary& curl = library();
    return curl.error.empty() ? exchangeOrThrow(curl, request) : HttpResponse{};
  } catch (const std::bad_alloc&) {
    return {};
  }
}

void CurlHttpTransport::closeConnections() { CurlSession::end(); }

const std::string& CurlHttpTransport::loadError() { return library().error; }

const CurlLibrary& CurlHttpTransport::library() {
  std::call_once(_loading, [this] { _library = std::make_unique<const CurlLibrary>(_names); });
  return *_library;
}

}  // namespace zt
