#include "tools/ztreport/doctor/Asking.h"

#include <curl/curl.h>
#include <netdb.h>
#include <netinet/in.h>

#include <array>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <utility>

namespace zt::tools {

namespace {

constexpr std::chrono::seconds kPatience{2};
constexpr const char* kTooSlow = "no answer within two seconds";

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

/// A handle with the library's time limit; libcurl's own text for an error comes into `error`.
Handle newHandle(std::array<char, CURL_ERROR_SIZE>& error) {
  Handle handle(curl_easy_init());
  curl_easy_setopt(handle.get(), CURLOPT_ERRORBUFFER, error.data());
  curl_easy_setopt(handle.get(), CURLOPT_TIMEOUT_MS,
                   static_cast<long>(std::chrono::milliseconds(kPatience).count()));
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

}  // namespace

Answer ask(const std::string& url, const std::optional<std::string>& body) {
  Answer answer;
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
  curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &answer.body);
  if (body) {
    curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDSIZE_LARGE,
                     static_cast<curl_off_t>(body->size()));
    curl_easy_setopt(handle.get(), CURLOPT_POSTFIELDS, body->c_str());
  }
  answer.failure = failureOf(curl_easy_perform(handle.get()), error);
  curl_easy_getinfo(handle.get(), CURLINFO_RESPONSE_CODE, &answer.status);
  return answer;
}

std::string lookUp(const std::string& host, std::string& addresses) {
  // A look-up cannot be broken off; one that hangs is left behind.
  std::packaged_task<LookedUp()> task([host] { return lookUpNow(host); });
  std::future<LookedUp> future = task.get_future();
  std::thread(std::move(task)).detach();
  if (future.wait_for(kPatience) != std::future_status::ready) return kTooSlow;
  LookedUp result = future.get();
  addresses = std::move(result.addresses);
  return result.failure;
}

std::string knock(const std::string& host, int port) {
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

}  // namespace zt::tools
