#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zt::inbox {

enum class AnswerKind { kAccept, kRefuse, kGarbage, kError, kHang, kDrop, kTruncate };

/// How a report is answered.
struct Answer {
  AnswerKind kind = AnswerKind::kAccept;
  int status = 0;  ///< of kError alone: the HTTP status, 200 to 599

  friend bool operator==(const Answer&, const Answer&) = default;
};

/// The words of `--answer`, for messages.
inline constexpr std::string_view kAnswerWords =
    "accept, refuse, garbage, error:STATUS (200 to 599), hang, drop or truncate";

/// Reads a word of `--answer`; nothing for any other text. An interim status (100 to 199) is
/// none: the client would go on waiting for the answer proper.
///
///     parseAnswer("error:503")  ->  {kError, 503}
std::optional<Answer> parseAnswer(std::string_view word);

/// The word that parseAnswer() reads: "error:503".
std::string answerWord(const Answer& answer);

/// What the client got, in the words of the report list: "accepted", "error 503", "no answer".
std::string outcome(const Answer& answer);

}  // namespace zt::inbox
