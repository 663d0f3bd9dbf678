// SPDX-License-Identifier: Apache-2.0
#include "tools/ztinbox/soap/SoapService.h"

#include <string>

#include "tools/ztinbox/soap/SoapMessages.h"

namespace zt::inbox {

namespace {

constexpr std::chrono::milliseconds kForever{-1};

/// Announces the length of an acceptance, but sends only a beginning of it without the accepting
/// words.
void answerTruncated(Exchange& exchange) {
  const std::string whole = reportAnswer(true);
  exchange.response.setBody(whole.substr(0, harmlessLength(whole)), kXmlType);
  exchange.response.announcedSize = whole.size();
}

bool mayHaveText(int status) { return status != 204 && status != 205 && status != 304; }

void answerError(Exchange& exchange, int status) {
  exchange.response.status = status;
  if (!mayHaveText(status)) return;
  exchange.response.setBody("error " + std::to_string(status) + ", on purpose\n", kTextType);
}

void perform(const Answer& answer, Exchange& exchange) {
  switch (answer.kind) {
    case AnswerKind::kAccept:
      exchange.response.setBody(reportAnswer(true), kXmlType);
      return;
    case AnswerKind::kRefuse:
      exchange.response.setBody(reportAnswer(false), kXmlType);
      return;
    case AnswerKind::kGarbage:
      exchange.response.setBody(std::string(kGarbage), kHtmlType);
      return;
    case AnswerKind::kError:
      answerError(exchange, answer.status);
      return;
    case AnswerKind::kHang:
      exchange.connection.isLeftWithin(kForever);
      exchange.connection.endSilently();
      return;
    case AnswerKind::kDrop:
      exchange.connection.reset();
      return;
    case AnswerKind::kTruncate:
      answerTruncated(exchange);
      return;
  }
}

}  // namespace

void SoapService::respond(Exchange& exchange, bool test) {
  const std::string& body = exchange.request.body;
  switch (soapRequest(body)) {
    case SoapRequest::kVersion:
      exchange.response.setBody(versionDocument(), kXmlType);
      return;
    case SoapRequest::kReport: {
      const Connection& connection = exchange.connection;
      const Reaction reaction =
          _intake.receive({body, connection.head(), connection.sender(), test});
      if (!exchange.connection.staysOpenFor(reaction.slow)) {
        exchange.connection.endSilently();
        return;
      }
      perform(reaction.answer, exchange);
      return;
    }
    case SoapRequest::kOther:
      refuse(exchange, {status::kBadRequest, "neither a report nor a version request"});
      return;
  }
}

}  // namespace zt::inbox
