// SPDX-License-Identifier: Apache-2.0
#include <stdlib.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>

#include "fuzz/FuzzTarget.h"
#include "ztportal/c/ztportal.h"

// Calls of the C interface, one in each line: a name, a key, a number and a text, such as
// "string startPoint 0 setup". No call reaches a network or a session bus, and none writes outside
// the data folder.

namespace {

/// The arguments of the next call, and what the calls before it returned.
struct State {
  std::string key;
  std::int64_t number = 0;
  std::string text;
  zt_report* report = nullptr;
  zt_pool* pool = nullptr;
  zt_store* store = nullptr;
  const char* string = nullptr;
  std::size_t size = 0;
  std::int64_t integer = 0;

  const char* k() const { return key.c_str(); }
  const char* t() const { return text.c_str(); }
  auto bits() const { return static_cast<std::uint32_t>(number); }
  zt_report** newReport() {
    zt_report_destroy(report);
    report = nullptr;
    pool = nullptr;
    return &report;
  }
};

/// The host's transport: responds to every request with the text of the call.
void respond(void* user, const zt_request* /*request*/, zt_response* response) {
  const State& s = *static_cast<State*>(user);
  zt_response_set(response, 200, s.t(), s.text.size(), s.number);
}

/// Options of any size, which a host of another version may have.
zt_status sendStore(State& s) {
  std::array<zt_send_options, 2> options{};
  options[0].size = s.bits() % sizeof(options);
  options[0].configuration_url = s.k();
  return zt_store_send(s.store, options.data(), nullptr);
}

const std::map<std::string, zt_status (*)(State&)> kCalls{
    {"create",
     [](State& s) {
       return zt_report_create(s.t(), s.k(), s.k(), s.k(), s.bits(), s.newReport());
     }},
    {"json",
     [](State& s) { return zt_report_from_json(s.t(), s.text.size(), s.bits(), s.newReport()); }},
    {"get", [](State& s) { return zt_report_get(s.report, s.k(), &s.string); }},
    {"render",
     [](State& s) { return zt_report_render(s.report, s.number != 0, &s.string, &s.size); }},
    {"send", [](State& s) { return zt_report_send(s.report); }},
    {"save", [](State& s) { return zt_report_save(s.report, nullptr); }},
    {"resend", [](State& s) { return zt_report_resend(s.report, s.t()); }},
    {"pool", [](State& s) { return zt_report_add_pool(s.report, s.k(), s.number, &s.pool); }},
    {"record", [](State& s) { return zt_pool_add_record(s.pool, s.k(), s.number, &s.pool); }},
    {"string", [](State& s) { return zt_pool_set_string(s.pool, s.k(), s.t()); }},
    {"bytes", [](State& s) { return zt_pool_set_string_n(s.pool, s.k(), s.t(), s.text.size()); }},
    {"integer", [](State& s) { return zt_pool_set_integer(s.pool, s.k(), s.number); }},
    {"boolean", [](State& s) { return zt_pool_set_boolean(s.pool, s.k(), s.number != 0); }},
    {"date", [](State& s) { return zt_pool_set_date(s.pool, s.k(), s.number); }},
    {"null", [](State& s) { return zt_pool_set_null(s.pool, s.k()); }},
    {"float",
     [](State& s) { return zt_pool_set_float(s.pool, s.k(), static_cast<float>(s.number)); }},
    {"getString", [](State& s) { return zt_pool_get_string(s.pool, s.k(), &s.string, &s.size); }},
    {"getInteger", [](State& s) { return zt_pool_get_integer(s.pool, s.k(), &s.integer); }},
    {"fields", [](State& s) { return zt_pool_fields(s.pool, &s.pool); }},
    {"check", [](State& s) { return zt_store_check(s.store, s.t(), &s.string, nullptr); }},
    {"sendStore", sendStore},
    {"escape", [](State& s) { return zt_host_set_value_escaping(s.number != 0); }},
};

/// The data folder, which is removed when the process ends.
struct DataFolder {
  char path[32] = "/tmp/zt_fuzz_XXXXXX";
  DataFolder() { setenv("XDG_DATA_HOME", mkdtemp(path), 1); }
  ~DataFolder() { std::filesystem::remove_all(path); }
};

void run(State& s, const std::string& line) {
  std::istringstream words(line);
  std::string name;
  words >> name >> s.key >> s.number >> std::ws;
  std::getline(words, s.text);
  const auto call = kCalls.find(name);
  if (call == kCalls.end()) return;
  s.string = "";
  const zt_status status = call->second(s);
  zt::fuzz::require(status >= ZT_OK && status <= ZT_FAILED);
  zt::fuzz::require((status == ZT_OK) || *zt_last_error() != '\0');
  zt::fuzz::require(s.string == nullptr || std::strlen(s.string) < line.max_size());
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const DataFolder folder;
  State s;
  zt_transport_options options{};
  options.size = sizeof(options);
  options.transport = respond;
  options.transport_user = &s;
  zt_host_set_transport(&options);
  zt_host_set_broadcast_enabled(false);
  zt_host_set_value_escaping(false);
  zt_store_create(&s.store);
  std::istringstream lines{std::string(zt::fuzz::textOf(data, size))};
  for (std::string line; std::getline(lines, line);) run(s, line);
  zt_store_remove_all(s.store, nullptr);
  zt_store_destroy(s.store);
  zt_report_destroy(s.report);
  return 0;
}
