#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace zt::bench {

// The parts of a delivery, each done by its library and nothing else.

/// Posts with libcurl over a connection that is kept.
class BarePost {
 public:
  BarePost();
  BarePost(const BarePost&) = delete;
  BarePost& operator=(const BarePost&) = delete;
  ~BarePost();

  /// Raises std::runtime_error when there is no answer.
  void post(const std::string& url, const std::string& body);

 private:
  void* _handle;
};

/// Opens the session bus, sends one signal with `text` and goes once it is sent.
void sendBareSignal(const std::string& text);

/// Reads the process table and each process's link to its executable; how many there were.
std::size_t walkBareProcessTable();

/// What libxml2 writes of what it parsed.
std::string parseAndWriteBarely(const std::string& text);

}  // namespace zt::bench
