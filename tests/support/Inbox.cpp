// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Inbox.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "TestPaths.h"

namespace zt::test {

namespace {

std::vector<std::string> commandOf(std::vector<std::string> options, const std::string& folder) {
  options.insert(options.begin(), {paths::kInboxProgram, "--listen", "127.0.0.1:0"});
  if (std::ranges::find(options, "--data") == options.end() &&
      std::ranges::find(options, "--store") == options.end()) {
    options.insert(options.end(), {"--data", folder});
  }
  return options;
}

std::string expectSuccess(const std::optional<HttpClient::Response>& response,
                          const std::string& request) {
  if (!response) throw std::runtime_error("no response from the inbox to " + request);
  if (response->status == 200) return response->body;
  throw std::runtime_error("the inbox fails to " + request + ": " + response->body);
}

InboxReport reportOf(const nlohmann::json& listed) {
  const auto text = [&](const char* key) {
    return listed.at(key).is_null() ? "" : listed.at(key).get<std::string>();
  };
  const auto& duplicateOf = listed.at("duplicateOf");
  return {.number = listed.at("number").get<std::uint64_t>(),
          .size = listed.at("size").get<std::uint64_t>(),
          .answer = text("answer"),
          .isTest = listed.at("test").get<bool>(),
          .reportId = text("reportId"),
          .machineId = text("machineId"),
          .customerId = text("customerId"),
          .applicationId = text("applicationId"),
          .applicationVersion = text("applicationVersion"),
          .pools = listed.at("pools").get<std::vector<std::string>>(),
          .duplicateOf = duplicateOf.is_null() ? 0 : duplicateOf.get<std::uint64_t>()};
}

constexpr const char* kList = "/api/v1/reports?limit=1000";

}  // namespace

Inbox::Inbox(std::vector<std::string> options)
    : _process(commandOf(std::move(options), _folder.path("data"))) {
  constexpr std::string_view kGreeting = "ztinbox: listening on ";
  const std::string line = _process.waitForLines(1);
  if (!line.starts_with(kGreeting)) {
    throw std::runtime_error("the inbox did not start: " + line + _process.waitForErrors());
  }
  _url = line.substr(kGreeting.size(), line.find('\n') - kGreeting.size());
}

int Inbox::port() const { return std::stoi(_url.substr(_url.rfind(':') + 1)); }

std::string Inbox::post(const std::string& report, const std::string& path) const {
  const auto response = newClient().post(path, report);
  return response ? response->body : "";
}

void Inbox::behave(const std::string& json) const {
  expectSuccess(newClient().put("/api/v1/behaviour", json), "change its behaviour");
}

std::string Inbox::reportList() const { return expectSuccess(newClient().get(kList), "list"); }

std::vector<InboxReport> Inbox::reports() const {
  std::vector<InboxReport> all;
  std::string before;
  for (;;) {
    const auto response = newClient().get(kList + before);
    const auto page = nlohmann::json::parse(expectSuccess(response, "list its reports"));
    if (page.empty()) return all;
    for (const auto& listed : page) all.push_back(reportOf(listed));
    before = "&before=" + std::to_string(all.back().number);
  }
}

std::string Inbox::raw(std::uint64_t number) const {
  return expectSuccess(newClient().get("/api/v1/reports/" + std::to_string(number) + "/raw"),
                       "show report " + std::to_string(number));
}

void Inbox::waitFor(std::uint64_t count, int seconds) const {
  HttpClient client = newClient();
  client.setTimeout(seconds + 5);
  expectSuccess(client.get("/api/v1/wait?count=" + std::to_string(count) +
                           "&timeout=" + std::to_string(seconds)),
                "wait for reports");
}

void Inbox::clear() const {
  expectSuccess(newClient().remove("/api/v1/reports"), "delete its reports");
}

}  // namespace zt::test
