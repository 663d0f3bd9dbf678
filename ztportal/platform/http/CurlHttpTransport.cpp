#include "ztportal/platform/http/CurlHttpTransport.h"

#include <curl/curl.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "ztportal/base/Text.h"

namespace zt {

namespace {

constexpr std::size_t kBodyLimit = std::size_t{16} << 20U;
constexpr std::size_t kHeaderLimit = std::size_t{1} << 20U;
constexpr long kRedirects = 10;
/// The first version with all options that are set below (CURLOPT_QUICK_EXIT).
constexpr unsigned kOldestVersion = 0x075700;

}  // namespace

/// The functions of libcurl. The library stays loaded as long as the process runs: connections and
/// what libcurl itself loads may be in use until then.
struct CurlHttpTransport::Library {
  explicit Library(const std::vector<const char*>& names) {
    for (const char* name : names) {
      const std::string failure = load(name);
      if (failure.empty()) {
        error.clear();
        return;
      }
      appendText(error, error.empty() ? "" : "; ", failure);
    }
  }

  decltype(&curl_easy_cleanup) easyCleanup = nullptr;
  decltype(&curl_easy_getinfo) easyGetinfo = nullptr;
  decltype(&curl_easy_init) easyInit = nullptr;
  decltype(&curl_easy_perform) easyPerform = nullptr;
  decltype(&curl_easy_reset) easyReset = nullptr;
  decltype(&curl_easy_setopt) easySetopt = nullptr;
  decltype(&curl_free) free = nullptr;
  decltype(&curl_global_init) globalInit = nullptr;
  decltype(&curl_slist_append) slistAppend = nullptr;
  decltype(&curl_slist_free_all) slistFreeAll = nullptr;
  decltype(&curl_url) url = nullptr;
  decltype(&curl_url_cleanup) urlCleanup = nullptr;
  decltype(&curl_url_get) urlGet = nullptr;
  decltype(&curl_url_set) urlSet = nullptr;
  decltype(&curl_version_info) versionInfo = nullptr;

  std::string error;  ///< why the functions cannot be called; empty if they can

 private:
  /// Empty on success, otherwise what is wrong with the library `name`.
  std::string load(const char* name) {
    void* const library = ::dlopen(name, RTLD_LAZY | RTLD_LOCAL);
    bool isComplete = library != nullptr;
    const auto find = [&](const char* symbol, auto& function) {
      if (!isComplete) return;
      function =
          reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, symbol));
      isComplete = function != nullptr;
    };
    find("curl_easy_cleanup", easyCleanup);
    find("curl_easy_getinfo", easyGetinfo);
    find("curl_easy_init", easyInit);
    find("curl_easy_perform", easyPerform);
    find("curl_easy_reset", easyReset);
    find("curl_easy_setopt", easySetopt);
    find("curl_free", free);
    find("curl_global_init", globalInit);
    find("curl_slist_append", slistAppend);
    find("curl_slist_free_all", slistFreeAll);
    find("curl_url", url);
    find("curl_url_cleanup", urlCleanup);
    find("curl_url_get", urlGet);
    find("curl_url_set", urlSet);
    find("curl_version_info", versionInfo);
    if (!isComplete) {
      const char* const reason = ::dlerror();
      return reason == nullptr ? name : reason;
    }
    const curl_version_info_data& version = *versionInfo(CURLVERSION_NOW);
    if (version.version_num < kOldestVersion) {
      return std::string(name) + ": version " + version.version + " is too old";
    }
    if (globalInit(CURL_GLOBAL_DEFAULT) != CURLE_OK) return std::string(name) + ": not initialized";
    return {};
  }
};

namespace {

using Curl = CurlHttpTransport::Library;
using Url = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;
using Text = std::unique_ptr<char, decltype(&curl_free)>;

class HeaderList {
 public:
  explicit HeaderList(const Curl& curl) : _curl(curl) {}
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
  const Curl& _curl;
  curl_slist* _first = nullptr;
};

/// The libcurl handle of a thread, with its open connections.
struct ThreadHandle {
  CURL* handle = nullptr;
  decltype(&curl_easy_cleanup) cleanup = nullptr;
  pid_t process = 0;
};
// Without a destructor, so that a host may still send from its own static destructors.
constinit thread_local ThreadHandle threadHandle;

/// Closes the connections of this thread. A forked process leaves those of its parent alone.
void closeThreadHandle() {
  if (threadHandle.handle != nullptr && threadHandle.process == getpid()) {
    // libcurl ignores SIGPIPE meanwhile, for the whole process. Two threads that did so at once
    // could leave it ignored.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    threadHandle.cleanup(threadHandle.handle);
  }
  threadHandle = {};
}

struct ThreadHandleCloser {
  ~ThreadHandleCloser() { closeThreadHandle(); }
};

/// The handle of this thread, set back to libcurl's defaults; null if libcurl returns none.
CURL* freshHandle(const Curl& curl) {
  static thread_local const ThreadHandleCloser kCloser;
  static_cast<void>(kCloser);

  // A forked process shares its parent's connections. To close them in good order would end the
  // parent's as well, so it leaves the parent's handle as it is.
  const pid_t process = getpid();
  if (threadHandle.process != process) threadHandle = {nullptr, curl.easyCleanup, process};
  if (threadHandle.handle == nullptr) threadHandle.handle = curl.easyInit();
  if (threadHandle.handle != nullptr) curl.easyReset(threadHandle.handle);
  return threadHandle.handle;
}

/// The part of a response that has arrived.
struct Arrival {
  std::string body;
  std::size_t headerBytes = 0;
  bool headersComplete = false;
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
  if (size > kBodyLimit - arrived.body.size()) return 0;
  try {
    arrived.body.append(bytes, size);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return size;
}

/// Keeps connections out of the programs that the host starts, and away from the numbers of the
/// standard streams: a host that has closed those may still write to them.
curl_socket_t openSocket(void* /*context*/, curlsocktype /*purpose*/, curl_sockaddr* address) {
  const int opened = ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
  if (opened < 0 || opened > STDERR_FILENO) return opened;
  const int moved = fcntl(opened, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  ::close(opened);
  return moved < 0 ? CURL_SOCKET_BAD : moved;
}

/// `text` as a URL; null unless its scheme is http or https.
Url httpUrl(const Curl& curl, std::string_view text) {
  Url none(nullptr, curl.urlCleanup);
  if (text.find('\0') != std::string_view::npos) return none;
  Url url(curl.url(), curl.urlCleanup);
  if (!url) return url;
  // Without flags libcurl does not guess a missing scheme.
  char* part = nullptr;
  if (curl.urlSet(url.get(), CURLUPART_URL, std::string(text).c_str(), 0) != CURLUE_OK ||
      curl.urlGet(url.get(), CURLUPART_SCHEME, &part, 0) != CURLUE_OK) {
    return none;
  }
  const Text scheme(part, curl.free);
  const std::string_view name = scheme.get();
  if (name != "http" && name != "https") url.reset();
  return url;
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

class Options {
 public:
  Options(const Curl& curl, CURL* handle) : _curl(curl), _handle(handle) {}

  template <class T>
  void set(CURLoption option, T value) {
    if (_curl.easySetopt(_handle, option, value) != CURLE_OK) _accepted = false;
  }
  bool accepted() const { return _accepted; }

 private:
  const Curl& _curl;
  CURL* _handle;
  bool _accepted = true;
};

void setLimits(Options& options, std::chrono::milliseconds timeout) {
  using Milliseconds = std::chrono::milliseconds::rep;
  constexpr Milliseconds kLongest = std::numeric_limits<int>::max();
  const long milliseconds = static_cast<long>(std::min(timeout.count(), kLongest));
  options.set(CURLOPT_TIMEOUT_MS, milliseconds);
  options.set(CURLOPT_CONNECTTIMEOUT_MS, milliseconds);
  options.set(CURLOPT_NOSIGNAL, 1L);
  // Abandons a name look-up that hangs; libcurl would wait for it beyond the time-out.
  options.set(CURLOPT_QUICK_EXIT, 1L);
  options.set(CURLOPT_PROTOCOLS_STR, "http,https");
  options.set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  options.set(CURLOPT_FOLLOWLOCATION, 1L);
  options.set(CURLOPT_MAXREDIRS, kRedirects);
  options.set(CURLOPT_OPENSOCKETFUNCTION, openSocket);
  // Applies to redirects only, since the first address is passed as a CURLU: no server can make the
  // library log in to another one with a name and a password of its choice.
  options.set(CURLOPT_DISALLOW_USERNAME_IN_URL, 1L);
}

void setMethod(Options& options, const HttpRequest& request) {
  if (request.method == "GET") {
    options.set(CURLOPT_HTTPGET, 1L);
    return;
  }
  const std::string_view body = request.body.value_or("");
  options.set(CURLOPT_POST, 1L);
  options.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  // libcurl reads from standard input for a null pointer.
  options.set(CURLOPT_POSTFIELDS, body.empty() ? "" : body.data());
}

HttpResponse exchangeOrThrow(const Curl& curl, const HttpRequest& request) {
  if (request.method != "GET" && request.method != "POST") return {};
  if (request.timeout <= std::chrono::milliseconds::zero()) return {};
  const Url url = httpUrl(curl, request.url);
  HeaderList headers(curl);
  if (!url || !addHeaders(headers, request.headers)) return {};
  CURL* handle = freshHandle(curl);
  if (handle == nullptr) return {};

  Arrival arrival;
  Options options(curl, handle);
  setLimits(options, request.timeout);
  setMethod(options, request);
  options.set(CURLOPT_CURLU, url.get());
  options.set(CURLOPT_HTTPHEADER, headers.get());
  options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  options.set(CURLOPT_HEADERFUNCTION, takeHeader);
  options.set(CURLOPT_HEADERDATA, &arrival);
  options.set(CURLOPT_WRITEFUNCTION, takeBody);
  options.set(CURLOPT_WRITEDATA, &arrival);

  const bool whole = options.accepted() && curl.easyPerform(handle) == CURLE_OK;
  long status = 0;
  curl.easyGetinfo(handle, CURLINFO_RESPONSE_CODE, &status);
  // The handle outlives this exchange and must not refer to it.
  curl.easyReset(handle);
  // libcurl accepts a response whose headers are cut off.
  if (!whole || !arrival.headersComplete) return {};
  return {static_cast<int>(status), std::move(arrival.body)};
}

}  // namespace

CurlHttpTransport::CurlHttpTransport(std::vector<const char*> libraries)
    : _names(std::move(libraries)) {}

CurlHttpTransport::~CurlHttpTransport() = default;

HttpResponse CurlHttpTransport::exchange(const HttpRequest& request) noexcept {
  try {
    const Library& curl = library();
    return curl.error.empty() ? exchangeOrThrow(curl, request) : HttpResponse{};
  } catch (const std::bad_alloc&) {
    return {};
  }
}

void CurlHttpTransport::closeConnections() { closeThreadHandle(); }

const std::string& CurlHttpTransport::loadError() { return library().error; }

const CurlHttpTransport::Library& CurlHttpTransport::library() {
  std::call_once(_loading, [this] { _library = std::make_unique<const Library>(_names); });
  return *_library;
}

}  // namespace zt
