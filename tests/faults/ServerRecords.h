#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/Inbox.h"

namespace zt::torture {

/// A report as the inbox has it.
struct ServerRecord {
  std::string id;
  std::string text;
  bool accepted = false;  ///< the inbox answered, or meant to answer, that it accepts it
};

inline ServerRecord recordOf(test::Inbox& inbox, const nlohmann::json& entry) {
  return {entry.at("reportId"), inbox.raw(entry.at("number")), entry.at("answer") == "accepted"};
}

/// The records of one report among the newest: each attempt to send it left one.
inline std::vector<ServerRecord> newestRecordsOf(test::Inbox& inbox, const std::string& id) {
  auto client = inbox.newClient();
  const auto answer = client.Get("/api/v1/reports?limit=1000");
  if (!answer || answer->status != 200) throw std::runtime_error("the inbox does not answer");
  std::vector<ServerRecord> records;
  for (const auto& entry : nlohmann::json::parse(answer->body)) {
    if (entry.at("reportId") == id) records.push_back(recordOf(inbox, entry));
  }
  return records;
}

inline std::vector<ServerRecord> allRecordsOf(test::Inbox& inbox) {
  std::vector<ServerRecord> records;
  for (const auto& entry : inbox.reports()) records.push_back(recordOf(inbox, entry));
  return records;
}

}  // namespace zt::torture
