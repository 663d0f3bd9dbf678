#include "tools/ztreport/doctor/Network.h"

#include <arpa/inet.h>
#include <curl/curl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <strings.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdlib>
#include <future>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <thread>
#include <utility>

namespace zt::tools {

namespace {

constexpr std::chrono::seconds kTimeout{2};
constexpr const char* kTooSlow = "no response within two seconds";

struct FreeHandle {
  void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};
using Handle = std::unique_ptr<CURL, FreeHandle>;

struct FreeList {
  void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using HeaderList = std::unique_ptr<curl_slist, FreeList>;

struct FreeAddresses {
  void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

std::size_t takeBody(char* bytes, std::size_t /*one*/, std::size_t size, void* body) {
  static_cast<std::string*>(body)->append(bytes, size);
  return size;
}

/// A handle with the library's time limit. libcurl writes its error messages into `error`.
Handle newHandle(std::array<char, CURL_ERROR_SIZE>& error) {
  Handle handle(curl_easy_init());
  curl_easy_setopt(handle.get(), CURLOPT_ERRORBUFFER, error.data());
  curl_easy_setopt(handle.get(), CURLOPT_TIMEOUT_MS,
                   static_cast<long>(std::chrono::milliseconds(kTimeout).count()));
  curl_easy_setopt(handle.get(), CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(handle.get(), CURLOPT_QUICK_EXIT, 1L);
  return handle;
}

std::string failureOf(CURLcode code, const std::array<char, CURL_ERROR_SIZE>& error) {
  if (code == CURLE_OK) return "";
  if (code == CURLE_OPERATION_TIMEDOUT) return kTooSlow;
  return error[0] != '\0' ? error.data() : curl_easy_strerror(code);
}

struct LookedUp {
  std::string failure;
  std::string addresses;
};

LookedUp lookUpNow(const std::string& host) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  const int error = ::getaddrinfo(host.c_str(), nullptr, &hints, &found);
  if (error != 0) return {::gai_strerror(error), ""};
  const Addresses list(found);
  LookedUp result;
  for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
    std::array<char, NI_MAXHOST> text{};
    if (::getnameinfo(entry->ai_addr, entry->ai_addrlen, text.data(), text.size(), nullptr, 0,
                      NI_NUMERICHOST) != 0) {
      continue;
    }
    if (!result.addresses.empty()) result.addresses += ", ";
    result.addresses += text.data();
  }
  return result;
}

struct FreeUrl {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using Url = std::unique_ptr<CURLU, FreeUrl>;

std::string part(const Url& url, CURLUPart which) {
  char* text = nullptr;
  if (curl_url_get(url.get(), which, &text, 0) != CURLUE_OK) return "";
  std::string result(text);
  curl_free(text);
  return result;
}

std::string withoutBrackets(const std::string& host) {
  return host.starts_with('[') ? host.substr(1, host.size() - 2) : host;
}

std::optional<WebAddress> parse(const std::string& text, unsigned flags, int plainPort) {
  const Url url(curl_url());
  if (curl_url_set(url.get(), CURLUPART_URL, text.c_str(), flags) != CURLUE_OK) return std::nullopt;
  WebAddress address;
  address.scheme = part(url, CURLUPART_SCHEME);
  address.host = withoutBrackets(part(url, CURLUPART_HOST));
  const std::string port = part(url, CURLUPART_PORT);
  const int usualPort = address.scheme == "https" ? 443 : plainPort;
  address.port = port.empty() ? usualPort : std::stoi(port);
  // The password is a secret, and the user name may be one.
  curl_url_set(url.get(), CURLUPART_USER, nullptr, 0);
  curl_url_set(url.get(), CURLUPART_PASSWORD, nullptr, 0);
  address.shown = part(url, CURLUPART_URL);
  return address;
}

using Address = std::array<unsigned char, sizeof(in6_addr)>;

std::optional<Address> addressOf(int family, const std::string& text) {
  Address address{};
  if (::inet_pton(family, text.c_str(), address.data()) != 1) return std::nullopt;
  return address;
}

bool haveSameStart(const Address& one, const Address& other, std::size_t bits) {
  for (std::size_t bit = 0; bit < bits; ++bit) {
    const unsigned mask = 0x80U >> (bit % 8);
    if (((one[bit / 8] ^ other[bit / 8]) & mask) != 0) return false;
  }
  return true;
}

/// `network` is an address, optionally with the number of its significant bits.
bool isInNetwork(int family, const Address& address, const std::string& network) {
  const std::size_t slash = network.find('/');
  const auto start = addressOf(family, network.substr(0, slash));
  if (!start) return false;
  const std::size_t all = family == AF_INET ? 32 : 128;
  std::size_t bits = 0;
  if (slash != std::string::npos) bits = std::strtoul(network.c_str() + slash + 1, nullptr, 10);
  if (bits > all) return false;
  return haveSameStart(address, *start, bits == 0 ? all : bits);
}

std::string_view withoutLastDot(std::string_view name) {
  if (name.ends_with('.')) name.remove_suffix(1);
  return name;
}

bool isInDomain(std::string_view host, std::string_view domain) {
  host = withoutLastDot(host);
  domain = withoutLastDot(domain);
  if (domain.starts_with('.')) domain.remove_prefix(1);
  if (domain.size() > host.size()) return false;
  const std::size_t before = host.size() - domain.size();
  return (before == 0 || host[before - 1] == '.') &&
         ::strncasecmp(host.data() + before, domain.data(), domain.size()) == 0;
}

bool matches(const std::string& entry, const std::string& host) {
  for (const int family : {AF_INET, AF_INET6}) {
    if (const auto address = addressOf(family, host)) return isInNetwork(family, *address, entry);
  }
  return isInDomain(host, entry);
}

/// The first of these variables that is set and not empty.
ProxyChoice firstOf(std::initializer_list<std::string> names, const Variables& variables) {
  for (const std::string& name : names) {
    const char* const value = variables(name.c_str());
    if (value != nullptr && *value != '\0') return {value, name};
  }
  return {};
}

}  // namespace

Response request(const std::string& url, const std::optional<std::string>& body) {
  Response response;
  std::array<char, CURL_ERROR_SIZE> error{};
  const Handle handle = newHandle(error);
  HeaderList headers;
  for (const char* line : {"Expect:", "Proxy-Connection:", "Content-Type: application/xml",
                           "User-Agent: Kelvane portal service (osx)"}) {
    headers.reset(curl_slist_append(headers.release(), line));
  }
  curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle.get(), CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(handle.get(), CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle.get(), CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(handle.get(), CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(handle.get(), CURLOPT_MAXREDIRS, 10L);
  curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, takeBody);
  curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &response.body);
  if (body) {
    curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDSIZE_LARGE,
                     static_cast<curl_off_t>(body->size()));
    curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS, body->c_str());
  }
  response.failure = failureOf(curl_easy_perform(handle.get()), error);
  curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &response.status);
  return response;
}

std::string lookUp(const std::string& host, std::string& addresses) {
  // A lookup cannot be cancelled; the thread of one that hangs is abandoned.
  std::packaged_task<LookedUp()> task([host] { return lookUpNow(host); });
  std::future<LookedUp> future = task.get_future();
  std::thread(std::move(task)).detach();
  if (future.wait_for(kTimeout) != std::future_status::ready) return kTooSlow;
  LookedUp result = future.get();
  addresses = std::move(result.addresses);
  return result.failure;
}

std::string connectTo(const std::string& host, int port) {
  std::array<char, CURL_ERROR_SIZE> error{};
  const Handle handle = newHandle(error);
  std::string url = "http://";
  const bool isAddress = host.find(':') != std::string::npos;
  if (isAddress) url += '[';
  url += host;
  if (isAddress) url += ']';
  url += ':';
  url += std::to_string(port);
  curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle.get(), CURLOPT_PROXY, "");
  curl_easy_setopt(handle.get(), CURLOPT_CONNECT_ONLY, 1L);
  return failureOf(curl_easy_perform(handle.get()), error);
}

std::optional<WebAddress> webAddress(const std::string& url) {
  constexpr int kHttpPort = 80;
  auto address = parse(url, 0, kHttpPort);
  if (!address || (address->scheme != "http" && address->scheme != "https")) return std::nullopt;
  return address;
}

std::optional<WebAddress> proxyAddress(const std::string& url) {
  const bool hasScheme = url.find("://") != std::string::npos;
  constexpr int kProxyPort = 1080;
  return parse(hasScheme ? url : "http://" + url, CURLU_NON_SUPPORT_SCHEME, kProxyPort);
}

bool isNamedIn(const std::string& list, const std::string& host) {
  constexpr const char* kBetween = ", \t";
  if (list == "*") return true;
  for (std::size_t begin = list.find_first_not_of(kBetween); begin != std::string::npos;) {
    const std::size_t end = list.find_first_of(kBetween, begin);
    if (matches(list.substr(begin, end - begin), host)) return true;
    begin = list.find_first_not_of(kBetween, end);
  }
  return false;
}

ProxyChoice proxyFor(const std::string& scheme, const std::string& host,
                     const Variables& variables) {
  const ProxyChoice excluded = firstOf({"no_proxy", "NO_PROXY"}, variables);
  if (isNamedIn(excluded.url, host)) return {"", excluded.variable};
  return scheme == "https"
             ? firstOf({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}, variables)
             : firstOf({"http_proxy", "all_proxy", "ALL_PROXY"}, variables);
}

}  // namespace zt::tools
