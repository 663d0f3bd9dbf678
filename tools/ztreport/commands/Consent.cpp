// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "tools/ztreport/commands/Commands.h"
#include "ztportal/ztportal.h"

namespace zt::tools {

namespace {

constexpr std::array<std::string_view, 3> kConsents{"unset", "given", "revoked"};  // `ZtConsent`

void change(const std::string& name) {
  const auto* const known = std::ranges::find(kConsents, name);
  if (known == kConsents.end()) {
    throw WrongUsage("CONSENT: \"" + name + "\" is none of given, revoked and unset");
  }
  if (ZtHost::setConsent(static_cast<ZtConsent>(known - kConsents.begin()))) return;
  throw Failure(Exit::MachineFailed, "the consent cannot be kept in the user's data folder");
}

}  // namespace

Exit consent(const std::string& wanted, bool deleteStored, Output output) {
  if (!wanted.empty()) change(wanted);
  std::string words(kConsents.at(static_cast<std::size_t>(ZtHost::consent())));
  Json result{{"consent", words}};
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
