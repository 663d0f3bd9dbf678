// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <string>
#include <utility>

#include "tools/ztreport/commands/Commands.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

constexpr std::array<std::pair<ZtConsent, const char*>, 3> kConsents{
    {{ZtConsent::Given, "given"}, {ZtConsent::Revoked, "revoked"}, {ZtConsent::Unset, "unset"}}};

void change(const std::string& name) {
  for (const auto& [consent, known] : kConsents) {
    if (name != known) continue;
    if (ZtHost::setConsent(consent)) return;
    throw Failure(Exit::MachineFailed, "the consent cannot be kept in the user's data folder");
  }
  throw WrongUsage("CONSENT: \"" + name + "\" is none of given, revoked and unset");
}

std::string current() {
  const ZtConsent now = ZtHost::consent();
  for (const auto& [consent, name] : kConsents) {
    if (consent == now) return name;
  }
  return {};
}

}  // namespace

Exit consent(const std::string& wanted, bool deleteStored, Output output) {
  if (!wanted.empty()) change(wanted);
  const std::string now = current();
  Json result{{"consent", now}};
  std::string words = now;
  if (deleteStored) {
    const ZtReportStore store;
    const std::size_t deleted = store.removeAll();
    const std::size_t left = store.list().size() + store.listUnsendable().size();
    if (left != 0) {
      throw Failure(Exit::MachineFailed, std::to_string(left) + " saved reports cannot be deleted");
    }
    result["deleted"] = deleted;
    words += "; saved reports deleted: " + std::to_string(deleted);
  }
  tell(output, words, result);
  return Exit::Done;
}

void requireConsent() {
  if (ZtHost::consent() != ZtConsent::Revoked) return;
  throw Failure(Exit::NotAccepted,
                "the user has revoked the consent to reports (see ztreport consent)");
}

}  // namespace zt::tools
