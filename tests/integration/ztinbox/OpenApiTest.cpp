#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/integration/ztinbox/RawClient.h"
#include "tests/support/Inbox.h"
#include "tests/unit/tools/ztinbox/SampleReport.h"

// Every response of the API is compared with its description, and every described response occurs.

namespace {

using nlohmann::json;
using zt::test::Inbox;
using zt::test::SampleReport;

bool hasType(const json& value, const std::string& type) {
  if (type == "null") return value.is_null();
  if (type == "boolean") return value.is_boolean();
  if (type == "integer") return value.is_number_integer();
  if (type == "number") return value.is_number();
  if (type == "string") return value.is_string();
  if (type == "array") return value.is_array();
  if (type == "object") return value.is_object();
  throw std::runtime_error("no such type in JSON: " + type);
}

bool hasOneType(const json& value, const json& types) {
  if (types.is_string()) return hasType(value, types);
  return std::ranges::any_of(types, [&value](const json& type) { return hasType(value, type); });
}

/// Checks a JSON value against a JSON schema (draft 2020-12) with the keywords of the project's own
/// schemas. Any other restricting keyword fails the check.
///
///     EXPECT_EQ(SchemaCheck(document).fault(value, schema), "");
class SchemaCheck {
 public:
  /// `document` resolves `$ref`; it must outlive the check.
  explicit SchemaCheck(const json& document) : _document(document) {}

  /// The error with its JSON pointer; empty if the value is valid.
  std::string fault(const json& value, const json& schema, const std::string& where = "") const;

  /// `schema` itself, or the target of its $ref.
  const json& resolved(const json& schema) const;

 private:
  std::string keywordFault(const std::string& keyword, const json& value, const json& schema,
                           const std::string& where) const;
  std::string objectFault(const std::string& keyword, const json& value, const json& schema,
                          const std::string& where) const;

  const json& _document;
};

const json& SchemaCheck::resolved(const json& schema) const {
  if (!schema.contains("$ref")) return schema;
  const std::string reference = schema.at("$ref");
  return resolved(_document.at(json::json_pointer(reference.substr(1))));
}

std::string SchemaCheck::fault(const json& value, const json& schema,
                               const std::string& where) const {
  const json& rules = resolved(schema);
  for (const auto& [keyword, rule] : rules.items()) {
    const std::string found = keywordFault(keyword, value, rules, where);
    if (!found.empty()) return found;
  }
  return "";
}

std::string SchemaCheck::keywordFault(const std::string& keyword, const json& value,
                                      const json& schema, const std::string& where) const {
  const json& rule = schema.at(keyword);
  const std::string fails = where + ": " + value.dump().substr(0, 100) + " fails " + keyword + " " +
                            rule.dump().substr(0, 100);
  if (keyword == "description" || keyword == "default") return "";
  if (keyword == "type") return hasOneType(value, rule) ? "" : fails;
  if (keyword == "const") return value == rule ? "" : fails;
  if (keyword == "enum") return std::ranges::find(rule, value) != rule.end() ? "" : fails;
  if (keyword == "not") return fault(value, rule, where).empty() ? fails : "";
  if (keyword == "minimum") return !value.is_number() || value >= rule ? "" : fails;
  if (keyword == "maximum") return !value.is_number() || value <= rule ? "" : fails;
  if (keyword == "pattern") {
    if (!value.is_string()) return "";
    const std::regex pattern(rule.get<std::string>());
    return std::regex_search(value.get_ref<const std::string&>(), pattern) ? "" : fails;
  }
  if (keyword == "allOf") {
    for (const json& part : rule) {
      const std::string found = fault(value, part, where);
      if (!found.empty()) return found;
    }
    return "";
  }
  if (keyword == "oneOf") {
    const auto fits = std::ranges::count_if(
        rule, [&](const json& part) { return fault(value, part, where).empty(); });
    return fits == 1 ? "" : fails;
  }
  return objectFault(keyword, value, schema, where);
}

std::string SchemaCheck::objectFault(const std::string& keyword, const json& value,
                                     const json& schema, const std::string& where) const {
  const json& rule = schema.at(keyword);
  if (keyword == "items") {
    if (!value.is_array()) return "";
    for (std::size_t i = 0; i < value.size(); ++i) {
      const std::string found = fault(value[i], rule, where + "/" + std::to_string(i));
      if (!found.empty()) return found;
    }
    return "";
  }
  if (keyword == "properties") {
    for (const auto& [name, part] : rule.items()) {
      if (!value.is_object() || !value.contains(name)) continue;
      const std::string found = fault(value.at(name), part, where + "/" + name);
      if (!found.empty()) return found;
    }
    return "";
  }
  if (keyword == "required") {
    for (const std::string name : rule) {
      if (value.is_object() && !value.contains(name)) return where + ": lacks " + name;
    }
    return "";
  }
  if (keyword == "additionalProperties" && rule == false) {
    if (!value.is_object()) return "";
    for (const auto& [name, part] : value.items()) {
      if (!schema.at("properties").contains(name)) return where + ": has " + name;
    }
    return "";
  }
  return where + ": the check does not know " + keyword;
}

/// A request and the expected status.
struct Request {
  const char* method;
  const char* path;   ///< as the description names it
  const char* query;  ///< what replaces {number}, a blank and the query: "1", " ?limit=2"
  int status;
  const char* body = "";
  const char* headers = "";
};

class OpenApiTest : public ::testing::Test {
 protected:
  OpenApiTest() {
    auto client = _inbox.newClient();
    _document = json::parse(client.Get("/api/v1/openapi.json")->body);
    for (const auto& [path, methods] : _document.at("paths").items()) {
      for (const auto& [method, operation] : methods.items()) {
        if (method == "parameters") continue;
        for (const auto& [status, answer] : operation.at("responses").items()) {
          _unseen.insert(method + " " + path + " " + status);
        }
      }
    }
  }

  void post(const std::string& path, const std::string& report) const {
    auto client = _inbox.newClient();
    ASSERT_TRUE(client.Post(path, report, "text/xml"));
  }

  void check(const Request& request) {
    std::string target = request.path;
    std::string query = request.query;
    const std::size_t placeholder = target.find("{number}");
    const std::size_t blank = std::min(query.find(' '), query.size());
    if (placeholder != std::string::npos) target.replace(placeholder, 8, query.substr(0, blank));
    target += query.substr(std::min(blank + 1, query.size()));
    const std::string name = std::string(request.method) + " " + target;
    SCOPED_TRACE(name);

    std::string text = request.method;
    text.append(" ").append(target).append(" HTTP/1.1\r\n").append(request.headers);
    if (text.find("Host:") == std::string::npos) {
      text.append("Host: ").append(_inbox.url().substr(7)).append("\r\n");
    }
    text.append("Content-Length: ").append(std::to_string(std::string(request.body).size()));
    text.append("\r\nConnection: close\r\n\r\n").append(request.body);
    zt::test::RawClient client(_inbox.port());
    ASSERT_TRUE(client.send(text));
    const bool stream = request.status == 200 && target.starts_with("/api/v1/events");
    const std::string answer = stream ? client.receiveSome() : client.receiveAll();
    compare(request, answer);
  }

  std::set<std::string> unseen() const { return _unseen; }

 private:
  void compare(const Request& request, const std::string& answer) {
    const std::string status = answer.substr(std::string("HTTP/1.1 ").size(), 3);
    EXPECT_EQ(status, std::to_string(request.status)) << answer.substr(0, 1'000);
    std::string method = request.method;
    for (char& letter : method) letter = static_cast<char>(letter - 'A' + 'a');
    _unseen.erase(method + " " + request.path + " " + status);

    const SchemaCheck schemas(_document);
    const json& operation = _document.at("paths").at(request.path).at(method);
    ASSERT_TRUE(operation.at("responses").contains(status)) << "not described: " << status;
    const json& described = schemas.resolved(operation.at("responses").at(status));
    const std::string head = answer.substr(0, answer.find("\r\n\r\n") + 2);
    const std::string body = answer.substr(head.size() + 2);
    if (described.contains("headers")) {
      for (const auto& [header, rule] : described.at("headers").items()) {
        EXPECT_NE(head.find("\r\n" + header + ": "), std::string::npos) << head;
      }
    }
    const auto& content = described.at("content").items().begin();
    EXPECT_NE(head.find("\r\nContent-Type: " + content.key() + "\r\n"), std::string::npos) << head;
    if (content.key() != "application/json") return;
    const json value = json::parse(body, nullptr, false);
    ASSERT_FALSE(value.is_discarded()) << body.substr(0, 1'000);
    EXPECT_EQ(schemas.fault(value, content.value().at("schema")), "");
  }

  Inbox _inbox;
  json _document;
  std::set<std::string> _unseen;
};

/// A run with two steps and a record of another list, and a generic array in an array.
SampleReport richReport() {
  SampleReport report;
  report.pools = {"EXECUTION", "DIAGNOSE", "CUSTOM"};
  const std::string tag = "               <Field xsi:type=\"com_Field\" FieldType=\"array\">\r\n";
  report.moreFields = SampleReport::field("START_TIME", "2026-11-21T12:00:00.000UTC") +
                      SampleReport::field("END_TIME", "2026-11-21T12:00:09.000UTC") +
                      SampleReport::field("SUCCESSFULL", "TRUE") + tag +
                      "                 <Name>INSTALLATIONSTEPS</Name>\r\n"
                      "                 <Fields>\r\n" +
                      SampleReport::field("STEP_NAME", "Copy") +
                      SampleReport::field("STEP_TYPE", "ENTER") +
                      SampleReport::field("STEP_TIMESTAMP", "2026-11-21T12:00:01.000UTC") +
                      "                 </Fields>\r\n               </Field>\r\n" + tag +
                      "                 <Name>EMPTY</Date>\r\n                 <Fields/>\r\n"
                      "               </Data>\r\n";
  // The steps' fields stand four deeper.
  const std::string flat = SampleReport::field("STEP_NAME", "Copy");
  std::size_t at = report.moreFields.find(flat);
  const std::size_t end = report.moreFields.find("                 </Fields>", at);
  std::string steps = report.moreFields.substr(at, end - at);
  std::string deeper;
  while (!steps.empty()) {
    const std::size_t line = steps.find('\n') + 1;
    deeper += "    " + steps.substr(0, line);
    steps.erase(0, line);
  }
  report.moreFields.replace(at, end - at, deeper);
  return report;
}

TEST_F(OpenApiTest, EveryResponseIsDescribedAndEveryDescribedResponseOccurs) {
  post("/soap", richReport().text());
  SampleReport hostile;
  hostile.customerId = "\xff<script>";
  hostile.value = std::string(100'000, '\xfe');
  post("/soap-test", hostile.text());
  post("/soap", "<postPoolDatas/>");

  const std::string large = "\"" + std::string(1'100'000, 'x') + "\"";
  const char* const foreign = "Host: evil.example\r\n";
  const char* const reports = "/api/v1/reports";
  const char* const one = "/api/v1/reports/{number}";
  const char* const raw = "/api/v1/reports/{number}/raw";
  const char* const readOne = "/api/v1/reports/{number}/read";
  const char* const readAll = "/api/v1/reports/read";
  const char* const events = "/api/v1/events";
  const char* const wait = "/api/v1/wait";
  const char* const stats = "/api/v1/stats";
  const char* const behaviour = "/api/v1/behaviour";
  const char* const openApi = "/api/v1/openapi.json";
  const std::vector<Request> requests{
      {"GET", reports, "", 200},
      {"GET", reports, " ?customer=Kelvane&limit=1&text=edition&pool=CUSTOM&before=9", 200},
      {"GET", reports, " ?limit=0", 400},
      {"GET", reports, " ?custommer=Kelvane", 400},
      {"GET", reports, "", 403, "", foreign},
      {"POST", reports, "", 405},
      {"DELETE", reports, " ?since=yesterday", 400},
      {"DELETE", reports, "", 403, "", foreign},
      {"PUT", readAll, " ?customer=Kelvane", 200, R"({"read": true})"},
      {"PUT", readAll, " ?test=perhaps", 400, R"({"read": true})"},
      {"PUT", readAll, "", 400, R"({"read": 1})"},
      {"PUT", readAll, "", 403, R"({"read": true})", foreign},
      {"PUT", readAll, "", 413, large.c_str()},
      {"GET", one, "1", 200},
      {"GET", one, "2", 200},
      {"GET", one, "3", 200},
      {"GET", one, "1 ?raw", 400},
      {"GET", one, "1", 403, "", foreign},
      {"GET", one, "4", 404},
      {"GET", raw, "2", 200},
      {"GET", raw, "2", 403, "", foreign},
      {"GET", raw, "9", 404},
      {"DELETE", raw, "1", 405},
      {"PUT", readOne, "1", 200, R"({"read": false})"},
      {"PUT", readOne, "1", 400, "read"},
      {"PUT", readOne, "1", 403, R"({"read": true})", foreign},
      {"PUT", readOne, "9", 404, R"({"read": true})"},
      {"GET", readOne, "1", 405},
      {"GET", events, " ?after=0", 200},
      {"GET", events, " ?after=-1", 400},
      {"GET", events, "", 400, "", "Last-Event-ID: x\r\n"},
      {"GET", events, "", 403, "", foreign},
      {"POST", events, "", 405},
      {"GET", wait, " ?count=3", 200},
      {"GET", wait, " ?count=x", 400},
      {"GET", wait, "", 403, "", foreign},
      {"GET", wait, " ?count=4&timeout=0", 408},
      {"PUT", wait, "", 405},
      {"GET", stats, "", 200},
      {"GET", stats, " ?customer=Kelvane&until=2100-01-01", 200},
      {"GET", stats, " ?until=", 400},
      {"GET", stats, "", 403, "", foreign},
      {"DELETE", stats, "", 405},
      {"GET", behaviour, "", 200},
      {"GET", behaviour, "", 403, "", foreign},
      {"PUT", behaviour, "", 200,
       R"({"answer": "error:503", "scenario": [{"answer": "drop", "slow": 1}]})"},
      {"PUT", behaviour, "", 400, "{"},
      {"PUT", behaviour, "", 403, "{}", foreign},
      {"PUT", behaviour, "", 413, large.c_str()},
      {"DELETE", behaviour, "", 405},
      {"GET", openApi, "", 200},
      {"GET", openApi, "", 403, "", foreign},
      {"PUT", openApi, "", 405},
      {"DELETE", one, "3", 200},
      {"DELETE", one, "3", 403, "", foreign},
      {"DELETE", one, "3", 404},
      {"DELETE", reports, " ?test=true", 200},
      {"DELETE", reports, "", 200},
  };
  for (const Request& request : requests) check(request);
  EXPECT_EQ(unseen(), std::set<std::string>());
}

}  // namespace
