#include "tests/faults/DeliveryCampaign.h"

#include <stdlib.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/faults/DeliveryPlan.h"
#include "tests/faults/Failure.h"
#include "tests/faults/FolderContent.h"
#include "tests/faults/Host.h"
#include "tests/faults/ServerRecords.h"
#include "tests/support/Inbox.h"
#include "tests/support/LoopbackPort.h"
#include "tests/support/TemporaryFolder.h"

namespace zt::torture {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kConfigurationUrl = "http://config.kelvane.example/reporting/kelvane.xml";

/// One share of the reports, with a server, a network and a store of its own.
class Delivery {
 public:
  Delivery()
      : _inbox(std::make_unique<test::Inbox>(inboxOptions())),
        _relay(_inbox->port(), [this] { _inbox->child().signal(SIGKILL); }) {
    becomeHost({_data.path("home"), _relay.url(), ""});
  }

  void send(std::uint64_t seed, std::uint64_t number);
  void resend();
  const Figures& figures() const { return _figures; }

 private:
  std::vector<std::string> inboxOptions() const { return {"--data", _data.path("inbox")}; }
  std::string store() const { return storeFolder(_data.path("home")); }
  void play(const DeliveryPlan& plan);
  void restart();
  void sendUntilNoneIsLeft();
  void judge(const ZtPortalData& document, const std::string& text, bool accepted,
             const DeliveryPlan& plan);

  test::TemporaryFolder _data;
  std::unique_ptr<test::Inbox> _inbox;
  FaultyRelay _relay;
  test::LoopbackPort _nobody{test::LoopbackPort::Refuses};
  std::map<std::string, std::string> _stored;  ///< texts as written, by report ID
  Figures _figures;
};

void Delivery::play(const DeliveryPlan& plan) {
  _inbox->behave(R"({"answer": ")" + plan.answer + R"(", "slow": )" + std::to_string(plan.slow) +
                 "}");
  _relay.setPlan(plan.relay);
  const std::string proxy = plan.unreachable ? _nobody.url() : _relay.url();
  ::setenv("http_proxy", proxy.c_str(), 1);
}

/// The same data, another port, as after a restart of the machine.
void Delivery::restart() {
  _inbox->child().signal(SIGKILL);
  _inbox->child().wait();
  _inbox = std::make_unique<test::Inbox>(inboxOptions());
  _relay.setServerPort(_inbox->port());
}

void Delivery::send(std::uint64_t seed, std::uint64_t number) {
  Random random(seed, number);
  DeliveryPlan plan = anyDeliveryPlan(random);
  play(plan);
  const auto document = makeDocument(kConfigurationUrl);
  fill(*document, random);
  const auto start = Clock::now();
  const bool accepted = document->reportToServer();
  plan.losesAnswer = plan.losesAnswer || Clock::now() - start >= kExchangeTimeout;
  if (plan.killsServer) restart();
  try {
    judge(*document, document->getSoapString(), accepted, plan);
  } catch (const Failure& failure) {
    throw Failure("report " + std::to_string(number) + ", " + plan.text() + ": " + failure.what() +
                  "\nrepeat it with: script/torture delivery --seed " + std::to_string(seed) +
                  " --first " + std::to_string(number) + " --reports 1");
  }
}

void Delivery::judge(const ZtPortalData& document, const std::string& text, bool accepted,
                     const DeliveryPlan& plan) {
  const std::string id = textOf(document.reportId());
  const std::optional<std::string> file = fileContent(store() + "/" + fileNameOf(document));
  if (file && *file != text) throw Failure("the file in the store is not what was written");
  bool withServer = false;
  for (const ServerRecord& record : newestRecordsOf(*_inbox, id)) {
    if (record.text != text) throw Failure("the server has another text than what was written");
    withServer = withServer || record.accepted;
  }
  if (accepted && !withServer) throw Failure("confirmed, but the server does not have it");
  if (accepted && file) throw Failure("confirmed, and in the store all the same");
  if (!accepted && !file) throw Failure("lost: neither confirmed nor in the store");
  if (file && withServer && !plan.losesAnswer) throw Failure("accepted, and stored all the same");

  ++_figures["reports"];
  ++_figures[accepted ? "accepted" : withServer ? "both" : "stored"];
  ++_figures["fault: " + std::string(plan.name)];
  if (file) _stored.emplace(id, text);
}

/// Sending again stops at the first time-out, which happens on a busy machine.
void Delivery::sendUntilNoneIsLeft() {
  for (std::size_t left = folderContent(store()).size(); left > 0;) {
    const auto start = Clock::now();
    makeDocument(kConfigurationUrl)->sendSavedReports();
    const std::size_t now = folderContent(store()).size();
    if (now == left && Clock::now() - start < kExchangeTimeout) {
      throw Failure("the server takes all, and some stay stored");
    }
    left = now;
  }
}

void Delivery::resend() {
  play({"no fault"});
  const std::size_t files = folderContent(store()).size();
  if (files != _stored.size()) {
    throw Failure(std::to_string(files) + " files in the store for " +
                  std::to_string(_stored.size()) + " reports");
  }
  sendUntilNoneIsLeft();

  std::map<std::string, bool> arrived;
  for (const ServerRecord& record : allRecordsOf(*_inbox)) {
    const auto written = _stored.find(record.id);
    if (written == _stored.end() || !record.accepted) continue;
    if (record.text == resentText(written->second)) arrived[record.id] = true;
  }
  if (arrived.size() != _stored.size()) {
    throw Failure("of " + std::to_string(_stored.size()) + " stored reports " +
                  std::to_string(arrived.size()) + " are with the server after sending again");
  }
  _figures["resent"] += arrived.size();
}

}  // namespace

Figures runDeliveryCampaign(const Options& options, Budget& budget) {
  return inShares(options.jobs, budget, [&](unsigned share) {
    Delivery delivery;
    for (std::uint64_t i = share; i < options.reports && !budget.isSpent(); i += options.jobs) {
      delivery.send(options.seed, options.first + i);
    }
    delivery.resend();
    return delivery.figures();
  });
}

}  // namespace zt::torture
