#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/ztinbox/http/HttpServer.h"

namespace zt::inbox {

// The ways in which the API answers.

inline constexpr const char* kNoSuchReport = "no such report";

/// Whether the request only reads: GET or HEAD.
bool reads(const Exchange& exchange);

void answerJson(Exchange& exchange, std::string json);
void answerBadRequest(Exchange& exchange, const std::string& reason);
void answerNotFound(Exchange& exchange, const std::string& reason);
/// `allowed` are the methods that would do: "GET, HEAD".
void answerNotAllowed(Exchange& exchange, const char* allowed);
void answerTimedOut(Exchange& exchange, std::uint64_t arrivals);
/// A body of more than a megabyte, which no request of the API needs.
void answerTooLarge(Exchange& exchange);

/// Reads {"read":true}. Throws InputFault.
bool readMark(std::string_view body);

}  // namespace zt::inbox
