#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "tools/ztinbox/http/Answer.h"
#include "tools/ztinbox/soap/ReportIdentity.h"

namespace zt::inbox {

/// What came, and what was answered: everything about one report but its bytes.
struct Report {
  std::uint64_t number = 0;  ///< counts from 1, never given twice
  std::chrono::system_clock::time_point received;
  bool test = false;   ///< came to the test address
  std::string sender;  ///< address and port of the client
  Answer answer;
  std::size_t size = 0;  ///< bytes of the body
  ReportIdentity identity;
  std::optional<std::string> result;  ///< of its run: succeeded, failed or cancelled
  std::optional<std::chrono::milliseconds> duration;  ///< of its run
  std::optional<std::uint64_t> duplicateOf;  ///< the first kept report with the same report ID
  bool read = false;                         ///< a person marked it as read
};

/// The bytes as they came.
struct ReportBytes {
  std::string head;  ///< request line and headers
  std::string body;
};

}  // namespace zt::inbox
