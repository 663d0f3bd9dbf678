// SPDX-License-Identifier: Apache-2.0
// c-host CONFIGURATION_URL: a setup program in C. It reports its installation, then sends the saved
// reports of earlier runs. Exit status: 0 if the server accepted the report, 1 if it was saved
// instead, 2 if the library failed.

#include <stdio.h>
#include <stdlib.h>
#include <ztportal/c/ztportal.h>

static void check(zt_status status) {
  if (status == ZT_OK) return;
  fprintf(stderr, "c-host: %s (status %d)\n", zt_last_error(), status);
  exit(2);
}

static void print_log(void* user, zt_log_level level, const char* module, const char* message) {
  (void)user;
  if (level >= ZT_LOG_WARNING) fprintf(stderr, "c-host: %s: %s\n", module, message);
}

static void add_step(zt_pool* run, const char* type, const char* name, const char* message) {
  zt_pool* step = NULL;
  check(zt_pool_add_record(run, "steps", ZT_NOW, &step));
  check(zt_pool_set_string(step, "stepType", type));
  check(zt_pool_set_string(step, "stepName", name));
  check(zt_pool_set_string(step, "stepMessageString", message));
}

// Installs nothing, but reports what an installer would.
static void install(zt_report* report) {
  zt_pool* run = NULL;
  zt_pool* fields = NULL;
  check(zt_report_add_inventory(report, ZT_NOW, NULL));
  check(zt_report_add_pool(report, "execution", ZT_NOW, &run));
  check(zt_pool_set_string(run, "startPoint", "setup"));
  add_step(run, "ENTER", "Copy", "");
  add_step(run, "LEAVE", "Copy", "42 files");
  check(zt_pool_set_string(run, "endPoint", "finish"));
  check(zt_pool_set_boolean(run, "successfull", true));
  check(zt_pool_set_date(run, "endTime", ZT_NOW));
  check(zt_pool_fields(run, &fields));
  check(zt_pool_set_string(fields, "EDITION", "Home"));
  check(zt_pool_set_integer(fields, "COPIED", 42));
}

static void print_receipt(void* user, const zt_saved_report* report, const zt_delivery* delivery) {
  (void)user;
  printf("%s: %s\n", report->report_id, delivery->message);
}

static void send_saved_reports(const char* configuration_url) {
  zt_store* store = NULL;
  const zt_send_result* result = NULL;
  const zt_send_options options = {.size = sizeof options,
                                   .configuration_url = configuration_url,
                                   .on_receipt = print_receipt,
                                   .budget_ms = 30000};
  check(zt_store_create(&store));
  if (zt_store_send(store, &options, &result) != ZT_OK) printf("not all could be sent\n");
  printf("Saved reports of earlier runs: %zu sent, %zu left.\n", result->accepted, result->left);
  zt_store_destroy(store);
}

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: c-host CONFIGURATION_URL\n");
    return 2;
  }
  const zt_pair info[] = {{"CFBundleName", "Example C Host"},
                          {"CFBundleShortVersionString", "2.1"},
                          {"CFBundleVersion", "77"}};
  check(zt_host_set_info(info, sizeof info / sizeof *info));
  check(zt_host_set_log_handler(print_log, NULL));

  zt_report* report = NULL;
  const zt_delivery* delivery = NULL;
  check(zt_report_create(argv[1], "Kelvane", "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1.77", 0,
                         &report));
  install(report);
  const zt_status status = zt_report_send(report);
  if (status != ZT_NOT_ACCEPTED) check(status);
  check(zt_report_last_delivery(report, &delivery));
  printf("%s\n", delivery->message);
  if (*delivery->saved_to != '\0') printf("It is saved as\n  %s\n", delivery->saved_to);
  zt_report_destroy(report);

  if (status == ZT_OK) send_saved_reports(argv[1]);
  return status == ZT_OK ? 0 : 1;
}
