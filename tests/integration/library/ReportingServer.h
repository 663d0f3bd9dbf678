#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/unit/platform/http/RawHttpServer.h"

namespace zt::test {

/// The three requests of a document.
enum class Asked { Configuration, Version, Report };

inline const char* nameOf(Asked asked) {
  switch (asked) {
    case Asked::Configuration:
      return "configuration";
    case Asked::Version:
      return "version";
    default:
      return "report";
  }
}

inline Asked whatIsAsked(std::string_view request) {
  if (request.starts_with("GET ")) return Asked::Configuration;
  return request.find("<getVersionInfo") != std::string_view::npos ? Asked::Version : Asked::Report;
}

/// A response of status 200, and what happens to the connection afterwards.
inline RawAnswer success(std::string_view body, RawAnswer::Then then = RawAnswer::Then::Keep) {
  std::string bytes = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(body.size()) +
                      "\r\nContent-Type: text/xml\r\n\r\n";
  bytes += body;
  return {std::move(bytes), then};
}

inline constexpr std::string_view kAcceptance =
    "<Envelope><Body><ns1:postPoolDatasResponse><return>true</return>"
    "</ns1:postPoolDatasResponse></Body></Envelope>";

/// A reporting server that is healthy except for the responses set by `misanswer`.
class ReportingServer {
 public:
  /// `beforeAnswer` is called on the server's thread when a request has arrived.
  explicit ReportingServer(std::function<void(Asked)> beforeAnswer = [](Asked) {})
      : _beforeAnswer(std::move(beforeAnswer)),
        _server([this](const std::string& request) { return answer(request); }) {}

  std::string configurationUrl() const { return _server.url("/reporting/kelvane.xml"); }
  std::string host() const { return _server.host(); }
  std::vector<std::string> requests() const { return _server.requests(); }

  /// The body of a healthy response.
  std::string healthyBody(Asked asked) const {
    if (asked == Asked::Version) return "<versioninfo>7.3</versioninfo>";
    if (asked == Asked::Report) return std::string(kAcceptance);
    return "<configuration><defSOAP>" + _server.url("/soap") + "</defSOAP><defTestSOAP>" +
           _server.url("/soap-test") + "</defTestSOAP></configuration>";
  }

  void misanswer(Asked asked, RawAnswer answer) {
    const std::lock_guard lock(_mutex);
    _answers[asked] = std::move(answer);
  }
  /// Only for the next request of the kind.
  void misanswerOnce(Asked asked, RawAnswer answer) {
    const std::lock_guard lock(_mutex);
    _firstAnswers[asked] = std::move(answer);
  }

 private:
  RawAnswer answer(const std::string& request) {
    const Asked asked = whatIsAsked(request);
    _beforeAnswer(asked);
    const std::lock_guard lock(_mutex);
    if (auto first = _firstAnswers.extract(asked)) return std::move(first.mapped());
    const auto found = _answers.find(asked);
    return found != _answers.end() ? found->second : success(healthyBody(asked));
  }

  const std::function<void(Asked)> _beforeAnswer;
  std::mutex _mutex;
  std::map<Asked, RawAnswer> _answers;
  std::map<Asked, RawAnswer> _firstAnswers;
  RawHttpServer _server;
};

}  // namespace zt::test
