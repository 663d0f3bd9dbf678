// SPDX-License-Identifier: Apache-2.0
// A host in C that calls every function of the interface. It reaches no network: its transport is a
// function. XDG_DATA_HOME has to be an empty folder of its own.

#define _GNU_SOURCE
#undef NDEBUG  // the checks are assertions

#include <assert.h>
#include <poll.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>
#include <ztportal/c/ztportal.h>

static const char kUrl[] = "http://config.test/kelvane.xml";
static const char kApplication[] = "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}";
static const char kAccepted[] = "<postPoolDatasResponse>true</postPoolDatasResponse>";

static bool isEqual(const char* text, const char* expected) {
  return text != NULL && strcmp(text, expected) == 0;
}

// ---- Callbacks

// A configuration host and a reporting server.
typedef struct Server {
  const char* answer;  // to a report; NULL: the connection fails
  int32_t status;
  int64_t retryAfter;
  atomic_int reports;
} Server;

static void serve(void* user, const zt_request* request, zt_response* response) {
  Server* const server = user;
  const char* answer = "<c><defSOAP>http://report.test/soap</defSOAP></c>";
  if (strcmp(request->method, "GET") == 0) {
    assert(strstr(request->url, "/kelvane.xml") != NULL);
  } else if (memmem(request->body, request->body_length, "getVersionInfo", 14) != NULL) {
    answer = "<versioninfo>7.1</versioninfo>";
  } else {
    atomic_fetch_add(&server->reports, 1);
    if (server->answer == NULL) {
      assert(zt_response_fail(response, "the server is gone") == ZT_OK);
      return;
    }
    assert(zt_response_set(response, server->status, server->answer, strlen(server->answer),
                           server->retryAfter) == ZT_OK);
    return;
  }
  assert(zt_response_set(response, 200, answer, strlen(answer), 0) == ZT_OK);
}

static void countMessage(void* user, zt_log_level level, const char* module, const char* message) {
  assert(level <= ZT_LOG_ERROR && *module != '\0' && *message != '\0');
  atomic_fetch_add((atomic_int*)user, 1);
}

static zt_decision hideSecret(void* user, const char* pool, const char* name, const char* value,
                              size_t length, zt_replacement* replacement) {
  (void)user;
  if (strcmp(name, "SECRET") != 0) return ZT_KEEP;
  assert(isEqual(pool, "CUSTOM") && isEqual(value, "1234") && length == 4);
  return zt_replacement_set_n(replacement, "****!", 4) == ZT_OK ? ZT_REPLACE : ZT_DROP;
}

static zt_decision dropMarked(void* user, const char* request, size_t length,
                              zt_replacement* replacement) {
  (void)user;
  (void)replacement;
  return memmem(request, length, "DROP_ME", 7) == NULL ? ZT_KEEP : ZT_DROP;
}

static bool keepFirst(void* user, const zt_saved_report* saved) {
  assert(saved->size >= sizeof(zt_saved_report) && saved->bytes > 0 && saved->time > 0);
  assert(*saved->report_id == '{');
  free(*(char**)user);
  *(char**)user = strdup(saved->path);
  return false;
}

static void countTried(void* user, const zt_saved_report* saved, const zt_delivery* delivery) {
  assert(*saved->path == '/' && *delivery->message != '\0');
  ++*(int*)user;
}

static bool isNeverCancelled(void* user) {
  assert(user != NULL);
  return false;
}

static void countReceipt(void* user, const zt_saved_report* saved, const zt_delivery* delivery) {
  assert(*saved->path == '/' && delivery->outcome == ZT_OUTCOME_ACCEPTED);
  ++*(int*)user;
}

// ---- The parts of the interface

static void callOfAnyHost(atomic_int* messages) {
  assert(isEqual(zt_last_error(), ""));
  assert(*zt_version() == '1');
  assert(strstr(zt_schema(), "\"startPoint\"") != NULL);

  const zt_pair info[] = {{"CFBundleName", "Host in C"}, {"CFBundleVersion", "77"}};
  assert(zt_host_set_info(info, 2) == ZT_OK);

  zt_consent consent = ZT_CONSENT_REVOKED;
  assert(zt_host_consent(&consent) == ZT_OK && consent == ZT_CONSENT_UNSET);
  assert(zt_host_set_consent(ZT_CONSENT_GIVEN) == ZT_OK);
  assert(zt_host_consent(&consent) == ZT_OK && consent == ZT_CONSENT_GIVEN);

  assert(zt_host_set_log_handler(countMessage, messages) == ZT_OK);
  assert(zt_host_set_value_filter(hideSecret, NULL) == ZT_OK);
  assert(zt_host_set_request_hook(dropMarked, NULL) == ZT_OK);
  assert(zt_host_set_broadcast_enabled(false) == ZT_OK);
  assert(zt_host_set_value_escaping(true) == ZT_OK);
  assert(zt_host_close_connections() == ZT_OK);
}

static zt_report* newReport(uint32_t flags) {
  zt_report* report = NULL;
  assert(zt_report_create(kUrl, "Kelvane", kApplication, "2.1", flags, &report) == ZT_OK);
  return report;
}

static void fillPools(void) {
  zt_report* report = newReport(ZT_OFFLINE);
  zt_pool* run = NULL;
  zt_pool* step = NULL;
  assert(zt_report_add_pool(report, "execution", ZT_NOW, &run) == ZT_OK);
  assert(zt_pool_set_string(run, "startPoint", "setup") == ZT_OK);
  assert(zt_pool_set_string_n(run, "endPoint", "finished", 6) == ZT_OK);
  assert(zt_pool_set_string(run, "executionType", "<&>") == ZT_OK);
  assert(zt_pool_set_boolean(run, "cancelled", true) == ZT_OK);
  assert(zt_pool_set_integer(run, "successfull", -1) == ZT_OK);
  assert(zt_pool_set_date(run, "startTime", 1795262400123) == ZT_OK);
  assert(zt_pool_set_null(run, "endTime") == ZT_OK);
  assert(zt_pool_add_record(run, "steps", ZT_NOW, &step) == ZT_OK);
  assert(zt_pool_set_string(step, "stepName", "Copy") == ZT_OK);
  assert(zt_pool_set_string(step, "stepType", "ERROR") == ZT_OK);

  const char* text = NULL;
  int64_t number = 0;
  size_t length = 0;
  assert(zt_pool_get_string(run, "endPoint", &text, &length) == ZT_OK);
  assert(isEqual(text, "finish") && length == 6);
  assert(zt_pool_get_integer(run, "successfull", &number) == ZT_OK && number == -1);
  assert(zt_pool_get_integer(run, "startTime", &number) == ZT_OK && number == 1795262400123);
  assert(zt_pool_get_integer(run, "endTime", &number) == ZT_OK && number == ZT_NO_DATE);

  zt_pool* usage = NULL;
  assert(zt_report_add_pool(report, "connectionManager", ZT_NOW, &usage) == ZT_OK);
  assert(zt_pool_set_string(usage, "registeredRoamNetworks", "26201") == ZT_OK);
  assert(zt_pool_set_string_n(usage, "registeredRoamNetworks", "26202", 5) == ZT_OK);

  zt_pool* generic = NULL;
  zt_pool* fields = NULL;
  zt_pool* disk = NULL;
  assert(zt_report_add_pool(report, "generic", ZT_NO_DATE, &generic) == ZT_OK);
  assert(zt_pool_set_string(generic, "poolType", "CUSTOM") == ZT_OK);
  assert(zt_pool_fields(generic, &fields) == ZT_OK);
  assert(zt_pool_set_string(fields, "SECRET", "1234") == ZT_OK);
  assert(zt_pool_set_null(fields, "NONE") == ZT_OK);
  assert(zt_pool_add_record(fields, "DISK", ZT_NOW, &disk) == ZT_OK);
  assert(zt_pool_set_string_n(disk, "DEVICE", "sda1", 3) == ZT_OK);
  assert(zt_pool_set_integer(disk, "FREE_GB", 181) == ZT_OK);
  assert(zt_pool_set_float(disk, "USED", 0.5F) == ZT_OK);
  assert(zt_pool_set_boolean(disk, "IS_FULL", false) == ZT_OK);
  assert(zt_report_add_inventory(report, ZT_NOW, NULL) == ZT_OK);

  assert(zt_report_render(report, false, &text, &length) == ZT_OK && strlen(text) == length);
  const char* const values[] = {"setup", "&lt;&amp;&gt;", "Copy", "ERROR", "****<", ">sda<", "181"};
  for (size_t i = 0; i < sizeof values / sizeof *values; ++i) assert(strstr(text, values[i]));
  assert(strstr(text, "1234") == NULL);

  // What fails changes nothing, and says why.
  assert(zt_pool_set_string(run, "endpoint", "x") == ZT_UNKNOWN_KEY);
  assert(strstr(zt_last_error(), "endpoint") != NULL);
  assert(zt_pool_set_string(run, "startTime", "x") == ZT_WRONG_TYPE);
  assert(zt_pool_set_integer(run, "successfull", 1000) == ZT_OUT_OF_RANGE);
  assert(zt_pool_set_string(NULL, "startPoint", "x") == ZT_BAD_ARGUMENT);
  assert(zt_report_add_pool(report, "unknown", ZT_NOW, NULL) == ZT_UNKNOWN_KEY);
  const char* again = NULL;
  assert(zt_report_render(report, false, &again, NULL) == ZT_OK && strstr(again, ">setup<"));
  zt_report_destroy(report);
  zt_report_destroy(NULL);
}

static void deliverReports(Server* server, const char* folder) {
  const char* text = NULL;
  const zt_delivery* delivery = NULL;
  zt_report* report = newReport(ZT_CACHE_CONFIGURATION);
  assert(zt_report_get(report, "serverVersion", &text) == ZT_OK && isEqual(text, "7.1"));
  assert(zt_report_get(report, "version", &text) == ZT_UNKNOWN_KEY);
  assert(zt_report_add_pool(report, "initialization", ZT_NOW, NULL) == ZT_OK);
  assert(zt_report_send(report) == ZT_OK && atomic_load(&server->reports) == 1);
  assert(zt_report_last_delivery(report, &delivery) == ZT_OK);
  assert(delivery->size >= sizeof(zt_delivery) && delivery->outcome == ZT_OUTCOME_ACCEPTED);
  assert(isEqual(delivery->url, "http://report.test/soap") && delivery->http_status == 200);

  server->answer = NULL;
  assert(zt_report_send(report) == ZT_NOT_ACCEPTED);
  assert(strstr(zt_last_error(), "the server is gone") != NULL);
  assert(zt_report_last_delivery(report, &delivery) == ZT_OK);
  assert(delivery->outcome == ZT_OUTCOME_UNREACHABLE && delivery->error == ZT_ERROR_HOST);
  char* const saved = strdup(delivery->saved_to);
  assert(access(saved, R_OK) == 0);
  assert(zt_report_get(report, "file", &text) == ZT_OK && isEqual(text, saved));

  server->answer = kAccepted;
  assert(zt_report_resend(report, saved) == ZT_OK && access(saved, R_OK) == 0);
  free(saved);

  char* copy = NULL;
  assert(asprintf(&copy, "%s/copy.xml", folder) > 0);
  assert(zt_report_save(report, copy) == ZT_OK && unlink(copy) == 0);
  free(copy);
  assert(zt_report_save(report, "/proc/copy.xml") == ZT_SYSTEM && *zt_last_error());

  // A transport of its own, which the other reports do not use.
  zt_transport_options wrong = {.size = sizeof wrong, .proxy = "no URL"};
  assert(zt_report_set_transport(report, &wrong) == ZT_BAD_ARGUMENT);
  Server refusing = {.answer = "<no/>", .status = 503, .retryAfter = 30};
  zt_transport_options own = {.size = sizeof own, .transport = serve, .transport_user = &refusing};
  assert(zt_report_set_transport(report, &own) == ZT_OK);
  assert(zt_report_send(report) == ZT_NOT_ACCEPTED);
  assert(zt_report_last_delivery(report, &delivery) == ZT_OK && delivery->retry_after_s == 30);
  zt_report_destroy(report);

  const char json[] =
      "{\"customerId\": \"Kelvane\", \"pools\": [{\"kind\": \"generic\", \"poolType\": "
      "\"DROP_ME\"}]}";
  assert(zt_report_from_json(json, sizeof json - 1, ZT_OFFLINE, &report) == ZT_OK);
  assert(zt_report_send(report) == ZT_NOT_ACCEPTED);
  assert(zt_report_last_delivery(report, &delivery) == ZT_OK);
  assert(delivery->outcome == ZT_OUTCOME_DROPPED);
  zt_report_destroy(report);
  assert(zt_report_from_json(json, sizeof json - 2, 0, &report) == ZT_BAD_JSON && report == NULL);
}

static void reportARun(void) {
  zt_report* report = NULL;
  assert(zt_run_create("nobody", NULL, &report) == ZT_UNKNOWN_KEY && report == NULL);
  assert(zt_run_create("Kelvane", NULL, &report) == ZT_OK);
  zt_pool* pool = NULL;
  assert(zt_run_start(report, "setup", &pool) == ZT_OK);
  assert(zt_pool_set_string(pool, "endResultCode", "0") == ZT_OK);
  assert(zt_run_set_string(report, "EDITION", "Home") == ZT_OK);
  assert(zt_run_set_boolean(report, "DESKTOP_ICON", true) == ZT_OK);
  assert(zt_run_stop(report, "finish") == ZT_OK);
  assert(zt_report_save(report, NULL) == ZT_OK);
  const zt_delivery* delivery = NULL;
  assert(zt_report_last_delivery(report, &delivery) == ZT_OK && *delivery->saved_to == '/');
  zt_report_destroy(report);
}

static void workOnTheStore(Server* server) {
  zt_store* store = NULL;
  assert(zt_store_create(&store) == ZT_OK);
  assert(zt_store_set_limits(100, 0, 0) == ZT_OK);
  size_t removed = 0;
  assert(zt_store_remove_all(store, &removed) == ZT_OK && removed == 2);

  zt_report* report = newReport(ZT_OFFLINE);
  assert(zt_report_add_pool(report, "diagnose", ZT_NOW, NULL) == ZT_OK);
  assert(zt_report_save(report, NULL) == ZT_OK);
  const char* text = NULL;
  char* path = NULL;
  assert(zt_store_list(store, ZT_REPORTS, keepFirst, &path) == ZT_OK);
  assert(strstr(path, "/Kelvane/Host in C/reports/") != NULL);
  const char* problem = NULL;
  assert(zt_store_check(store, path, &text, &problem) == ZT_OK);
  assert(isEqual(text, "Kelvane") && isEqual(problem, ""));
  assert(zt_store_move(store, path, ZT_UNSENDABLE) == ZT_OK);
  assert(zt_store_list(store, ZT_UNSENDABLE, keepFirst, &path) == ZT_OK);
  assert(strstr(path, "/unsendable/") != NULL);
  assert(zt_store_move(store, path, ZT_REPORTS) == ZT_OK);
  assert(zt_store_remove(store, path) == ZT_SYSTEM && *zt_last_error() != '\0');
  assert(zt_store_list(store, ZT_REPORTS, keepFirst, &path) == ZT_OK);

  int tried = 0;
  zt_send_options options = {.size = sizeof options,
                             .configuration_url = kUrl,
                             .on_receipt = countTried,
                             .is_cancelled = isNeverCancelled,
                             .user = &tried};
  const zt_send_result* result = NULL;
  server->answer = NULL;
  assert(zt_store_send(store, &options, &result) == ZT_NOT_ACCEPTED);
  assert(result->size >= sizeof(zt_send_result) && result->left == 1 && tried == 1);
  server->answer = kAccepted;
  assert(zt_store_send(store, &options, &result) == ZT_OK);
  assert(result->end == ZT_SEND_DONE && result->accepted == 1 && result->left == 0);
  options.attempts = -7;
  assert(zt_store_send(store, &options, NULL) == ZT_BAD_ARGUMENT);

  assert(zt_report_save(report, NULL) == ZT_OK);
  assert(zt_store_remove(store, path) == ZT_OK);
  free(path);
  zt_report_destroy(report);
  zt_store_destroy(store);
}

static void sendInTheBackground(void) {
  zt_sender* sender = NULL;
  zt_send_options options = {.size = sizeof options, .configuration_url = kUrl};
  assert(zt_sender_create(&options, &sender) == ZT_OK);
  zt_report* report = newReport(ZT_OFFLINE);
  assert(zt_report_add_pool(report, "deinstallation", ZT_NOW, NULL) == ZT_OK);
  assert(zt_sender_send(sender, report) == ZT_OK);
  size_t left = 1;
  assert(zt_sender_flush(sender, 200000, &left) == ZT_OK && left == 0);
  int descriptor = -1;
  assert(zt_sender_descriptor(sender, &descriptor) == ZT_OK);
  struct pollfd readable = {.fd = descriptor, .events = POLLIN};
  assert(poll(&readable, 1, 200000) == 1);
  int receipts = 0;
  assert(zt_sender_receipts(sender, countReceipt, &receipts) == ZT_OK && receipts == 1);

  // In a forked process, a sender only saves, and a report can be used as before.
  const pid_t child = fork();
  if (child == 0) {
    const bool isSaved = zt_sender_send(sender, report) == ZT_OK;
    zt_report_destroy(report);
    // At an exit, valgrind would report the memory of the threads that only the parent has.
    if (isSaved) execl("/bin/true", "true", (char*)NULL);
    _exit(1);
  }
  int status = 1;
  assert(waitpid(child, &status, 0) == child && status == 0);

  // A sender reported no facts.
  zt_report* run = NULL;
  assert(zt_run_create("Kelvane", NULL, &run) == ZT_OK);
  assert(zt_run_start(run, "setup", NULL) == ZT_OK);
  assert(zt_run_set_string(run, "EDITION", "Home") == ZT_OK);
  assert(zt_sender_send(sender, run) == ZT_OK);
  const char* text = NULL;
  assert(zt_report_render(run, false, &text, NULL) == ZT_OK && strstr(text, "EDITION") != NULL);
  zt_report_destroy(run);
  assert(zt_sender_flush(sender, 200000, &left) == ZT_OK && left == 0);
  assert(zt_sender_stop(sender, 200000, &left) == ZT_OK && left == 0);
  zt_sender_destroy(sender);
  zt_report_destroy(report);
}

int main(void) {
  atomic_int messages = 0;
  Server server = {.answer = kAccepted, .status = 200};
  const char* const folder = getenv("XDG_DATA_HOME");
  assert(folder != NULL);
  callOfAnyHost(&messages);
  fillPools();
  const zt_transport_options options = {
      .size = sizeof options, .transport = serve, .transport_user = &server};
  assert(zt_host_set_transport(&options) == ZT_OK);
  deliverReports(&server, folder);
  reportARun();
  workOnTheStore(&server);
  sendInTheBackground();
  assert(atomic_load(&messages) > 0);
  assert(zt_host_set_log_handler(NULL, NULL) == ZT_OK);
  return 0;
}
