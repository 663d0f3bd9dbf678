#include "ztportal/platform/http/CurlHttpTransport.h"

#include <curl/curl.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iterator>
#include <limits>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include "ztportal/platform/Free.h"

namespace zt {

namespace {

constexpr std::size_t kBodyLimit = std::size_t{16} << 20U;
constexpr std::size_t kHeaderLimit = std::size_t{1} << 20U;
constexpr long kRedirects = 10;

using Url = std::unique_ptr<CURLU, Free<curl_url_cleanup>>;
using Text = std::unique_ptr<char, Free<curl_free>>;

class HeaderList {
 public:
  HeaderList() = default;
  HeaderList(const HeaderList&) = delete;
  HeaderList& operator=(const HeaderList&) = delete;
  ~HeaderList() { curl_slist_free_all(_first); }

  void add(const std::string& line) {
    curl_slist* first = curl_slist_append(_first, line.c_str());
    if (first == nullptr) throw std::bad_alloc();
    _first = first;
  }
  curl_slist* get() const { return _first; }

 private:
  curl_slist* _first = nullptr;
};

/// The libcurl handle of a thread, with its open connections.
struct ThreadHandle {
  CURL* handle = nullptr;
  pid_t process = 0;
};
// Without a destructor, so that a host may still send from its own static destructors.
constinit thread_local ThreadHandle threadHandle;

struct ThreadHandleCloser {
  ~ThreadHandleCloser() {
    if (threadHandle.process == getpid()) {
      // libcurl ignores SIGPIPE meanwhile, for the whole process. Two threads that did so at once
      // could leave it ignored.
      static std::mutex mutex;
      const std::lock_guard lock(mutex);
      curl_easy_cleanup(threadHandle.handle);
    }
    threadHandle = {};
  }
};

/// The pairs of sockets that programs which the host starts would inherit.
std::vector<int> inheritedPairs() {
  std::vector<int> found;
  std::error_code error;
  for (std::filesystem::directory_iterator entry("/proc/self/fd", error), end;
       !error && entry != end; entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    int number = -1;
    std::from_chars(name.data(), name.data() + name.size(), number);
    int domain = 0;
    socklen_t size = sizeof(domain);
    if (getsockopt(number, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 && domain == AF_UNIX &&
        fcntl(number, F_GETFD) == 0) {
      found.push_back(number);
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

/// A handle makes a pair of sockets with its first transfer, which libcurl leaves open to the
/// programs that the host starts. This is a transfer to nowhere, so that the pair can be told from
/// others by being the only new one. Where a thread of the host opens sockets just then, nothing is
/// changed.
void closePairInPrograms(CURL* handle) {
  const std::vector<int> before = inheritedPairs();
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
  curl_easy_perform(handle);
  const std::vector<int> after = inheritedPairs();
  std::vector<int> added;
  std::set_difference(after.begin(), after.end(), before.begin(), before.end(),
                      std::back_inserter(added));
  if (added.size() != 2) return;
  for (const int number : added) fcntl(number, F_SETFD, FD_CLOEXEC);
}

CURL* newHandle() {
  CURL* handle = curl_easy_init();
  if (handle != nullptr) closePairInPrograms(handle);
  return handle;
}

/// The handle of this thread, set back to libcurl's defaults; null when libcurl has none to give.
CURL* freshHandle() {
  static const bool kReady = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  static thread_local const ThreadHandleCloser kCloser;
  static_cast<void>(kCloser);
  if (!kReady) return nullptr;

  // A child shares its parent's connections. To close them in good order would end the parent's
  // as well, so the child leaves the handle as it is.
  const pid_t process = getpid();
  if (threadHandle.process != process) threadHandle = {nullptr, process};
  if (threadHandle.handle == nullptr) threadHandle.handle = newHandle();
  if (threadHandle.handle != nullptr) curl_easy_reset(threadHandle.handle);
  return threadHandle.handle;
}

/// What has arrived of an answer.
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

/// `text` as a URL; null unless it is one of http or https.
Url httpUrl(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return nullptr;
  Url url(curl_url());
  if (!url) return nullptr;
  // Without flags libcurl does not guess a missing scheme.
  if (curl_url_set(url.get(), CURLUPART_URL, std::string(text).c_str(), 0) != CURLUE_OK) {
    return nullptr;
  }
  char* part = nullptr;
  if (curl_url_get(url.get(), CURLUPART_SCHEME, &part, 0) != CURLUE_OK) return nullptr;
  const Text scheme(part);
  const std::string_view name = scheme.get();
  return name == "http" || name == "https" ? std::move(url) : nullptr;
}

bool isOneLine(std::string_view text) {
  return text.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

bool isContentType(const HttpHeader& header) {
  constexpr std::string_view kName = "Content-Type";
  return header.name.size() == kName.size() &&
         curl_strnequal(header.name.data(), kName.data(), kName.size()) != 0;
}

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
  explicit Options(CURL* handle) : _handle(handle) {}

  template <class T>
  void set(CURLoption option, T value) {
    if (curl_easy_setopt(_handle, option, value) != CURLE_OK) _accepted = false;
  }
  bool accepted() const { return _accepted; }

 private:
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
  // A name look-up that hangs is left behind; otherwise libcurl waits for it beyond the time-out.
  options.set(CURLOPT_QUICK_EXIT, 1L);
  options.set(CURLOPT_PROTOCOLS_STR, "http,https");
  options.set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  options.set(CURLOPT_FOLLOWLOCATION, 1L);
  options.set(CURLOPT_MAXREDIRS, kRedirects);
  options.set(CURLOPT_OPENSOCKETFUNCTION, openSocket);
  // Of redirects alone, since the first address is given as a CURLU: no server has the library log
  // in to another with a name and a password of its choice.
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

HttpResponse exchangeOrThrow(const HttpRequest& request) {
  if (request.method != "GET" && request.method != "POST") return {};
  if (request.timeout <= std::chrono::milliseconds::zero()) return {};
  const Url url = httpUrl(request.url);
  HeaderList headers;
  if (!url || !addHeaders(headers, request.headers)) return {};
  CURL* handle = freshHandle();
  if (handle == nullptr) return {};

  Arrival arrival;
  Options options(handle);
  setLimits(options, request.timeout);
  setMethod(options, request);
  options.set(CURLOPT_CURLU, url.get());
  options.set(CURLOPT_HTTPHEADER, headers.get());
  options.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  options.set(CURLOPT_HEADERFUNCTION, takeHeader);
  options.set(CURLOPT_HEADERDATA, &arrival);
  options.set(CURLOPT_WRITEFUNCTION, takeBody);
  options.set(CURLOPT_WRITEDATA, &arrival);

  const bool whole = options.accepted() && curl_easy_perform(handle) == CURLE_OK;
  long status = 0;
  curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
  // Nothing of this exchange stays behind in the handle, which outlives it.
  curl_easy_reset(handle);
  // libcurl takes headers that end in their midst for an answer.
  if (!whole || !arrival.headersComplete) return {};
  return {static_cast<int>(status), std::move(arrival.body)};
}

}  // namespace

HttpResponse CurlHttpTransport::exchange(const HttpRequest& request) noexcept {
  try {
    return exchangeOrThrow(request);
  } catch (const std::bad_alloc&) {
    return {};
  }
}

}  // namespace zt
