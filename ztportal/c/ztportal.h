#ifndef ZTPORTAL_C_ZTPORTAL_H
#define ZTPORTAL_C_ZTPORTAL_H

/* Reports the runs of a desktop application to its customer's reporting server: the interface for
 * hosts in C, and for bindings of other languages. C11 or later, or C++.
 *
 *     zt_report* report = NULL;
 *     zt_pool* pool = NULL;
 *     zt_report_create("http://config.example.com/kelvane.xml", "Kelvane",
 *                      "{7C1B7F6E-5B0B-4F0E-9C53-0D1B9B8F0A11}", "2.1", 0, &report);
 *     zt_report_add_pool(report, "execution", ZT_NOW, &pool);
 *     zt_pool_set_string(pool, "startPoint", "setup");
 *     if (zt_report_send(report) != ZT_OK) fprintf(stderr, "%s\n", zt_last_error());
 *     zt_report_destroy(report);
 *
 * A function that fails changes nothing, returns a status, and leaves a sentence in
 * `zt_last_error`. Calls with a null handle fail with ZT_BAD_ARGUMENT, so a host may check only the
 * last call of a sequence. `_destroy` accepts null.
 *
 * Texts are UTF-8. A text that is passed in ends with a zero byte or, in functions with `_n`, has a
 * length in bytes; the library copies it. NULL is a missing text, which reports show as "(null)".
 * A text or structure that the library returns belongs to the library: it is valid until the next
 * call with the same handle, and for `zt_last_error`, `zt_host_info` and other functions without a
 * handle until the next call on the same thread. Nothing that it returns is to be freed.
 *
 * Handles: what `_create` made, `_destroy` releases. Pools and arrays belong to their report, and
 * `zt_run_report` to its run; they are released with it.
 *
 * Threads: different threads may use different handles at the same time. A report, with its pools,
 * and a run are used by one thread at a time. `zt_store`, `zt_sender` and the functions of the host
 * may be used by any thread at any time. Only `zt_sender_create` starts a thread. Callbacks run on
 * the thread that is named with each; they must return normally (no exception, no longjmp).
 *
 * fork(2): the child may use all handles except that its senders only save. Do not fork while
 * another thread is in a call.
 *
 * Structures begin with their size, so that they can grow. A host fills those that it passes with
 * zeros and sets the size: `zt_send_options options = {.size = sizeof(zt_send_options)};`. A member
 * that is 0 or NULL has its default.
 *
 * The symbols have the version ZTPORTAL_C_1; none is changed or removed while the library is called
 * libztportal.so.1.
 */

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define ZT_C_EXPORT __attribute__((visibility("default")))
#else
#define ZT_C_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Status ---------------------------------------------------------------------------------- */

typedef enum zt_status {
  ZT_OK = 0,
  ZT_NOT_ACCEPTED = 1, /* the server did not accept a report; see zt_report_last_delivery */
  ZT_BAD_ARGUMENT = 2, /* a null handle, a missing text, an unknown flag, a wrong option */
  ZT_UNKNOWN_KEY = 3,  /* no such kind of pool, key or customer */
  ZT_WRONG_TYPE = 4,   /* the key has another type */
  ZT_OUT_OF_RANGE = 5, /* a number that the field cannot hold */
  ZT_BAD_JSON = 6,     /* a description that cannot be read; zt_last_error names the place */
  ZT_NO_MEMORY = 7,
  ZT_SYSTEM = 8, /* a file, folder or thread; zt_last_error has the system's reason */
  ZT_FAILED = 9  /* anything else */
} zt_status;

/* "ZT_OK", …; "unknown status" for other numbers. Static. */
ZT_C_EXPORT const char* zt_status_name(zt_status status);
/* Why the last failed call of this thread failed: one English sentence. Empty if none has. */
ZT_C_EXPORT const char* zt_last_error(void);
/* The version of the library, such as "1.1.0". Static. */
ZT_C_EXPORT const char* zt_version(void);
/* All kinds of pools and records with their keys, types and names of enumerations, as JSON, for
 * generators of bindings:
 *
 *     {"pools": [{"kind": "execution", "type": "EXECUTION", "keys": [
 *        {"key": "startPoint", "type": "string", "inReports": "START_POINT"}, …,
 *        {"key": "steps", "type": "list", "of": [{"key": "stepName", …}, …]}]}, …],
 *      "enumerations": {"step type": ["ENTER", …], …}}
 *
 * Types are those of docs/report-description.md. Static. */
ZT_C_EXPORT const char* zt_schema(void);

/* ---- The host -------------------------------------------------------------------------------- */

typedef struct zt_pair {
  const char* name;
  const char* value;
} zt_pair;

/* Who the host is: "CFBundleName", "CFBundleShortVersionString", "CFBundleVersion". Replaces all
 * earlier information. Call it once, before the first report: the name determines the folder of the
 * saved reports. */
ZT_C_EXPORT zt_status zt_host_set_info(const zt_pair* pairs, size_t count);
/* The value of one of these keys; NULL if it is missing. */
ZT_C_EXPORT zt_status zt_host_info(const char* key, const char** value);
/* Closes the connections that the calling thread keeps for the next report. */
ZT_C_EXPORT zt_status zt_host_close_connections(void);
/* Whether texts are escaped so that every report is well-formed XML. Off at first. */
ZT_C_EXPORT zt_status zt_host_set_value_escaping(bool is_on);
/* Whether reports are broadcast on the session bus. On at first. */
ZT_C_EXPORT zt_status zt_host_set_broadcast_enabled(bool is_enabled);

typedef enum zt_consent {
  ZT_CONSENT_UNSET = 0,
  ZT_CONSENT_GIVEN = 1,
  ZT_CONSENT_REVOKED = 2
} zt_consent;

/* Keeps what the user has said for this host, for all its processes. Once revoked, nothing is
 * examined, sent, saved or broadcast. ZT_SYSTEM if it cannot be kept. */
ZT_C_EXPORT zt_status zt_host_set_consent(zt_consent consent);
/* A file that cannot be read or understood is a revocation. */
ZT_C_EXPORT zt_status zt_host_consent(zt_consent* consent);

typedef enum zt_log_level {
  ZT_LOG_DEBUG = 0,
  ZT_LOG_INFO = 1,
  ZT_LOG_WARNING = 2,
  ZT_LOG_ERROR = 3
} zt_log_level;

/* Takes one message. `module` is one word, `message` one English sentence without a line end. Both
 * end with the call. Runs on the thread on which the message arose. */
typedef void (*zt_log_handler)(void* user, zt_log_level level, const char* module,
                               const char* message);
/* NULL turns the log off, as it is at first. When this returns, the former handler is called no
 * more and may be released. */
ZT_C_EXPORT zt_status zt_host_set_log_handler(zt_log_handler handler, void* user);

typedef enum zt_decision { ZT_KEEP = 0, ZT_REPLACE = 1, ZT_DROP = 2 } zt_decision;
typedef struct zt_replacement zt_replacement;

/* For a callback that returns ZT_REPLACE: the new text. */
ZT_C_EXPORT zt_status zt_replacement_set_n(zt_replacement* replacement, const char* text,
                                           size_t length);

/* Decides about one value of a report. `pool_type` is empty for the values of the report itself.
 * Runs on the thread that writes the report. */
typedef zt_decision (*zt_value_filter)(void* user, const char* pool_type, const char* name,
                                       const char* value, zt_replacement* replacement);
/* Decides about a whole request, of `length` bytes, before it is broadcast, sent or saved. Runs on
 * the thread that delivers it. */
typedef zt_decision (*zt_request_hook)(void* user, const char* request, size_t length,
                                       zt_replacement* replacement);
/* NULL ends filtering. The former function may still run on other threads when this returns. */
ZT_C_EXPORT zt_status zt_host_set_value_filter(zt_value_filter filter, void* user);
ZT_C_EXPORT zt_status zt_host_set_request_hook(zt_request_hook hook, void* user);

/* ---- How requests travel --------------------------------------------------------------------- */

/* For durations: no limit. */
#define ZT_NO_LIMIT (-1)

typedef struct zt_request {
  size_t size;
  const char* method; /* "GET" or "POST" */
  const char* url;
  const zt_pair* headers;
  size_t header_count;
  const char* body;
  size_t body_length;
} zt_request;
typedef struct zt_response zt_response;

/* The result of a request that the host's own transport sent. */
ZT_C_EXPORT zt_status zt_response_set(zt_response* response, int32_t http_status, const char* body,
                                      size_t length);
/* How long the server asks to wait (Retry-After), in seconds. */
ZT_C_EXPORT zt_status zt_response_set_retry_after(zt_response* response, int64_t seconds);
/* No complete response arrived, for the reason `error`, one sentence without passwords. */
ZT_C_EXPORT zt_status zt_response_fail(zt_response* response, const char* error);
/* Runs on the thread that sends; `request` ends with the call. */
typedef void (*zt_transport)(void* user, const zt_request* request, zt_response* response);

typedef enum zt_tls_version {
  ZT_TLS_SYSTEM_DEFAULT = 0,
  ZT_TLS_1_2 = 1,
  ZT_TLS_1_3 = 2
} zt_tls_version;

typedef struct zt_transport_options {
  size_t size;
  const char* authority_file;   /* certificate authorities (PEM) instead of the system's */
  const char* authority_folder; /* the same, with hashed names */
  const char* client_certificate;
  const char* client_key; /* NULL: in the file of the certificate */
  const char* client_key_password;
  zt_tls_version minimum_tls_version;
  const char* proxy;    /* URL; "" is no proxy; NULL is that of the environment */
  const char* no_proxy; /* hosts, separated by commas; NULL is that of the environment */
  int64_t timeout_ms;   /* the whole exchange; default 2,000; ZT_NO_LIMIT asks for an idle one */
  int64_t connect_timeout_ms; /* default: the other two count */
  int64_t idle_timeout_ms;    /* default: only the whole one counts */
  const zt_pair* headers;     /* added to every request */
  size_t header_count;
  bool compress_requests; /* gzip (RFC 1952) above 1 KiB */
  zt_transport transport; /* the host's own transport in place of libcurl */
  void* transport_user;
} zt_transport_options;

/* For all reports that are created from now on. NULL: the defaults. ZT_BAD_ARGUMENT for a wrong
 * value, which zt_last_error names; the options stay as they were. */
ZT_C_EXPORT zt_status zt_host_set_transport(const zt_transport_options* options);

/* ---- Receipts -------------------------------------------------------------------------------- */

typedef enum zt_outcome {
  ZT_OUTCOME_NOT_SENT = 0,
  ZT_OUTCOME_ACCEPTED = 1,
  ZT_OUTCOME_REFUSED = 2,          /* an HTTP status outside 200 to 299 */
  ZT_OUTCOME_INVALID_RESPONSE = 3, /* a response that confirms nothing */
  ZT_OUTCOME_UNREACHABLE = 4,
  ZT_OUTCOME_TIMED_OUT = 5,
  ZT_OUTCOME_OFFLINE = 6,     /* not sent: no configuration, or no version of the server */
  ZT_OUTCOME_NO_TEST_URL = 7, /* not sent: test mode is on, and there is no URL for it */
  ZT_OUTCOME_NO_CONSENT = 8,  /* not sent: the user has revoked the consent */
  ZT_OUTCOME_DROPPED = 9,     /* not sent: a hook of the host dropped it */
  ZT_OUTCOME_UNREADABLE = 10  /* not sent: the saved report cannot be read */
} zt_outcome;

typedef enum zt_delivery_error {
  ZT_ERROR_NONE = 0,
  ZT_ERROR_LIBRARY = 1, /* libcurl cannot be loaded */
  ZT_ERROR_ADDRESS = 2,
  ZT_ERROR_NAME_LOOKUP = 3,
  ZT_ERROR_PROXY = 4,
  ZT_ERROR_CONNECTION = 5,
  ZT_ERROR_TLS = 6,
  ZT_ERROR_TIMEOUT = 7,
  ZT_ERROR_TRANSFER = 8,
  ZT_ERROR_REDIRECT = 9,
  ZT_ERROR_HTTP_STATUS = 10,
  ZT_ERROR_CONTENT = 11,
  ZT_ERROR_FILE = 12,
  ZT_ERROR_HOST = 13, /* the host's own transport */
  ZT_ERROR_MEMORY = 14
} zt_delivery_error;

/* What became of one report. Texts are never NULL. */
typedef struct zt_delivery {
  size_t size;
  zt_outcome outcome;
  zt_delivery_error error;
  int32_t http_status; /* 0 if no complete response arrived */
  const char* message; /* one English sentence without passwords */
  const char* url;     /* without user name and password; empty if it was not sent */
  uint64_t request_bytes;
  uint64_t response_bytes;
  int64_t lookup_us; /* durations in microseconds; 0 if the phase was not needed */
  int64_t connect_us;
  int64_t tls_us;
  int64_t response_us;
  int64_t total_us;
  int64_t retry_after_s; /* how long the server asks to wait; 0 if it does not */
  const char* saved_to;  /* the file in the store that has the report now; empty if none has */
  const char* save_error;
  int32_t save_error_number; /* errno */
} zt_delivery;

/* ---- Reports --------------------------------------------------------------------------------- */

typedef struct zt_report zt_report;
typedef struct zt_pool zt_pool;
typedef struct zt_array zt_array;

/* Points in time are milliseconds since 1970-01-01T00:00:00Z. */
#define ZT_NOW INT64_MAX     /* the time of the call */
#define ZT_NO_DATE INT64_MIN /* a missing date */

/* Flags of zt_report_create and zt_report_from_json. */
#define ZT_CACHE_CONFIGURATION 1u /* a configuration that was read before may be reused */
#define ZT_OFFLINE 2u             /* contact no server: for rendering, saving and zt_sender_send */

/* Creates a report with a new ID. Unless it is offline, reads the customer's configuration document
 * and asks the server for its version, in up to two requests of two seconds each; that neither gets
 * a response is no failure. */
ZT_C_EXPORT zt_status zt_report_create(const char* configuration_url, const char* customer_id,
                                       const char* application_id, const char* application_version,
                                       uint32_t flags, zt_report** report);
/* Creates the report that the description `json` of `length` bytes describes, pools included; see
 * docs/report-description.md. */
ZT_C_EXPORT zt_status zt_report_from_json(const char* json, size_t length, uint32_t flags,
                                          zt_report** report);
ZT_C_EXPORT void zt_report_destroy(zt_report* report);

/* For the later requests of this report alone; like zt_host_set_transport. */
ZT_C_EXPORT zt_status zt_report_set_transport(zt_report* report,
                                              const zt_transport_options* options);
/* The value of "reportId", "machineId", "customerId", "applicationId", "applicationVersion",
 * "reportUrl", "reportTestUrl", "configurationUrl", "serverVersion" or "file" (its path in the
 * store); NULL if it is missing. */
ZT_C_EXPORT zt_status zt_report_get(zt_report* report, const char* key, const char** value);
/* Whether the server returned its version. */
ZT_C_EXPORT zt_status zt_report_is_online(const zt_report* report, bool* is_online);

/* The request text (SOAP 1.1), or without `soap` its body as plain XML; ends with a zero byte that
 * is not counted. Empty for a report without pools. */
ZT_C_EXPORT zt_status zt_report_render(zt_report* report, bool soap, const char** text,
                                       size_t* length);
/* Broadcasts and posts the report. ZT_NOT_ACCEPTED: it is in the store, if it could be saved. */
ZT_C_EXPORT zt_status zt_report_send(zt_report* report);
/* Saves the report in the store without sending it. ZT_SYSTEM if that fails. */
ZT_C_EXPORT zt_status zt_report_save(zt_report* report);
/* Writes the request text to the file `path`. ZT_SYSTEM if that fails. */
ZT_C_EXPORT zt_status zt_report_write(zt_report* report, const char* path);
/* Sends the saved reports in the order of the folder, and stops at the first that is not accepted.
 * Always ZT_OK; zt_report_last_delivery is the receipt of the last one. */
ZT_C_EXPORT zt_status zt_report_resend_all(zt_report* report);
/* Sends the saved report `path`; the file stays. */
ZT_C_EXPORT zt_status zt_report_resend(zt_report* report, const char* path);
/* The receipt of what this report sent or saved last. */
ZT_C_EXPORT zt_status zt_report_last_delivery(zt_report* report, const zt_delivery** delivery);

/* ---- Pools ----------------------------------------------------------------------------------- */

/* Adds a pool of `kind`: "generic", "execution", "deinstallation", "initialization", "diagnose",
 * "connectionManager" or "computerSystem". `pool` may be NULL. */
ZT_C_EXPORT zt_status zt_report_add_pool(zt_report* report, const char* kind, int64_t timestamp,
                                         zt_pool** pool);
/* Adds a pool "computerSystem" that is filled from this machine, which runs subprocesses. */
ZT_C_EXPORT zt_status zt_report_add_inventory(zt_report* report, int64_t timestamp, zt_pool** pool);

/* Each sets the value of a key of the pool's kind, as in a JSON description: an enumeration takes a
 * name as string, or a number; a boolean takes a byte as integer, too. */
ZT_C_EXPORT zt_status zt_pool_set_string(zt_pool* pool, const char* key, const char* value);
ZT_C_EXPORT zt_status zt_pool_set_string_n(zt_pool* pool, const char* key, const char* value,
                                           size_t length);
ZT_C_EXPORT zt_status zt_pool_set_integer(zt_pool* pool, const char* key, int64_t value);
ZT_C_EXPORT zt_status zt_pool_set_boolean(zt_pool* pool, const char* key, bool value);
ZT_C_EXPORT zt_status zt_pool_set_date(zt_pool* pool, const char* key, int64_t value);
/* Makes a string or date missing. */
ZT_C_EXPORT zt_status zt_pool_set_null(zt_pool* pool, const char* key);
/* Adds to a list of strings. */
ZT_C_EXPORT zt_status zt_pool_append_string(zt_pool* pool, const char* key, const char* value);

/* Each returns the value of a key: NULL for a missing string, ZT_NO_DATE for a missing date. An
 * enumeration is a number, a boolean a byte. */
ZT_C_EXPORT zt_status zt_pool_get_string(zt_pool* pool, const char* key, const char** value);
ZT_C_EXPORT zt_status zt_pool_get_integer(zt_pool* pool, const char* key, int64_t* value);
ZT_C_EXPORT zt_status zt_pool_get_date(zt_pool* pool, const char* key, int64_t* value);

/* Adds a record to the list `key`, such as "steps" or "browsers". It has keys of its own, and no
 * fields. `timestamp` counts for steps only. */
ZT_C_EXPORT zt_status zt_pool_add_record(zt_pool* pool, const char* key, int64_t timestamp,
                                         zt_pool** record);

/* The generic fields of a pool, in the order in which they are added. */
ZT_C_EXPORT zt_status zt_pool_fields(zt_pool* pool, zt_array** fields);
ZT_C_EXPORT zt_status zt_array_add_string(zt_array* array, const char* name, const char* value);
ZT_C_EXPORT zt_status zt_array_add_string_n(zt_array* array, const char* name, const char* value,
                                            size_t length);
ZT_C_EXPORT zt_status zt_array_add_integer(zt_array* array, const char* name, int32_t value);
ZT_C_EXPORT zt_status zt_array_add_float(zt_array* array, const char* name, float value);
ZT_C_EXPORT zt_status zt_array_add_boolean(zt_array* array, const char* name, bool value);
/* A field that has only a name. */
ZT_C_EXPORT zt_status zt_array_add_none(zt_array* array, const char* name);
ZT_C_EXPORT zt_status zt_array_add_array(zt_array* array, const char* name, zt_array** child);

/* ---- Runs ------------------------------------------------------------------------------------ */

/* One run of an application of one of the built-in customers, reported as a whole: the inventory of
 * the computer, the steps of the run and its facts. */
typedef struct zt_run zt_run;

/* ZT_UNKNOWN_KEY for an unknown customer. `application_id` NULL or "": the customer's default. */
ZT_C_EXPORT zt_status zt_run_create(const char* customer_id, const char* application_id,
                                    zt_run** run);
ZT_C_EXPORT void zt_run_destroy(zt_run* run);
/* The run starts now. The first call adds its pool "execution". */
ZT_C_EXPORT zt_status zt_run_start(zt_run* run, const char* start_point);
/* The run ends now. No effect before its start. */
ZT_C_EXPORT zt_status zt_run_stop(zt_run* run, const char* end_point);
/* Facts, which become fields of the pool "execution" when the run is sent. */
ZT_C_EXPORT zt_status zt_run_set_string(zt_run* run, const char* name, const char* value);
ZT_C_EXPORT zt_status zt_run_set_boolean(zt_run* run, const char* name, bool value);
/* The report of the run, and its pool "execution", which exists from the start on (until then
 * ZT_FAILED). Both belong to the run. */
ZT_C_EXPORT zt_status zt_run_report(zt_run* run, zt_report** report);
ZT_C_EXPORT zt_status zt_run_pool(zt_run* run, zt_pool** pool);
/* Posts the report: ZT_OK or ZT_NOT_ACCEPTED. With `send` false saves it: always ZT_OK, also if the
 * file could not be written; zt_report_last_delivery tells. */
ZT_C_EXPORT zt_status zt_run_send(zt_run* run, bool send);

/* ---- The store ------------------------------------------------------------------------------- */

/* The saved reports of the host: one file each. */
typedef struct zt_store zt_store;

typedef struct zt_saved_report {
  size_t size;
  const char* path;
  const char* report_id;
  uint64_t bytes;
  int64_t time; /* when it was last written */
} zt_saved_report;

typedef enum zt_store_part { ZT_REPORTS = 0, ZT_UNSENDABLE = 1 } zt_store_part;
/* Called for each report, on the calling thread; false ends the list. */
typedef bool (*zt_saved_report_callback)(void* user, const zt_saved_report* report);

ZT_C_EXPORT zt_status zt_store_create(zt_store** store);
ZT_C_EXPORT void zt_store_destroy(zt_store* store);
/* The folder of the reports. */
ZT_C_EXPORT zt_status zt_store_folder(zt_store* store, const char** folder);
/* Lists the reports, oldest first. */
ZT_C_EXPORT zt_status zt_store_list(zt_store* store, zt_store_part part,
                                    zt_saved_report_callback callback, void* user);
/* The customer in a saved report (NULL if it names none), and why it cannot be sent ("" if it can).
 * Each may be NULL if it is not wanted. */
ZT_C_EXPORT zt_status zt_store_check(zt_store* store, const char* path, const char** customer_id,
                                     const char** problem);
/* Each works on a report of either part, by its path, and fails with ZT_SYSTEM. */
ZT_C_EXPORT zt_status zt_store_remove(zt_store* store, const char* path);
ZT_C_EXPORT zt_status zt_store_set_aside(zt_store* store, const char* path);
ZT_C_EXPORT zt_status zt_store_put_back(zt_store* store, const char* path);
/* Copies it into the folder `target`, or else to the new file `target`. */
ZT_C_EXPORT zt_status zt_store_export(zt_store* store, const char* path, const char* target);
/* Removes all reports of both parts. `removed` may be NULL. */
ZT_C_EXPORT zt_status zt_store_remove_all(zt_store* store, size_t* removed);
/* How much the stores of this process keep, for each part; 0 is no limit. The oldest go first. */
ZT_C_EXPORT zt_status zt_store_set_limits(size_t reports, uint64_t bytes, int64_t age_s);

typedef enum zt_send_end {
  ZT_SEND_DONE = 0, /* every report was tried */
  ZT_SEND_CANCELLED = 1,
  ZT_SEND_BUDGET = 2,
  ZT_SEND_OFFLINE = 3,
  ZT_SEND_DEFERRED = 4, /* the server asks to wait */
  ZT_SEND_BUSY = 5,     /* another process or thread is sending */
  ZT_SEND_NO_STORE = 6,
  ZT_SEND_NO_CONSENT = 7,
  ZT_SEND_WRONG_OPTIONS = 8
} zt_send_end;

typedef struct zt_send_result {
  size_t size;
  zt_send_end end;
  size_t accepted;
  size_t set_aside;
  size_t removed; /* for the limits */
  size_t left;
  int64_t retry_after_s;
} zt_send_result;

/* Called after each report that was tried; false ends sending. On the thread that sends. */
typedef bool (*zt_progress)(void* user, const zt_saved_report* report, const zt_delivery* delivery);
/* Asked before each report and often during a wait; true ends sending. */
typedef bool (*zt_is_cancelled)(void* user);

typedef struct zt_send_options {
  size_t size;
  const char* configuration_url;
  const zt_transport_options* transport; /* NULL: those of the host */
  int32_t attempts;       /* failures until a report is set aside; default 5; ZT_NO_LIMIT: never */
  bool retry;             /* wait and try again until nothing is left that can be sent */
  int64_t retry_delay_ms; /* default 1,000; doubles each time, */
  int64_t longest_delay_ms; /* up to this; default 60,000 */
  int64_t budget_ms;        /* default: no limit */
  zt_progress progress;
  zt_is_cancelled is_cancelled;
  void* user; /* for both */
} zt_send_options;

/* Sends the saved reports, oldest first; none blocks the others. ZT_OK if `end` is ZT_SEND_DONE and
 * nothing is left, ZT_BAD_ARGUMENT for wrong options, otherwise ZT_NOT_ACCEPTED. `result` may be
 * NULL. */
ZT_C_EXPORT zt_status zt_store_send(zt_store* store, const zt_send_options* options,
                                    const zt_send_result** result);

/* ---- Sending in the background --------------------------------------------------------------- */

/* Sends reports from a thread of its own, which also resends what the store holds. */
typedef struct zt_sender zt_sender;

/* On the thread of the sender, or in zt_sender_receipts. */
typedef void (*zt_receipt_callback)(void* user, const zt_saved_report* report,
                                    const zt_delivery* delivery);

typedef struct zt_sender_options {
  size_t size;
  const char* configuration_url;
  const zt_transport_options* transport; /* NULL: those of the host */
  int32_t attempts;                      /* these three as in zt_send_options */
  int64_t retry_delay_ms;
  int64_t longest_delay_ms;
  zt_receipt_callback on_receipt; /* NULL: receipts are kept for zt_sender_receipts */
  void* user;
  size_t kept_receipts; /* default 100; the oldest are dropped first */
} zt_sender_options;

ZT_C_EXPORT zt_status zt_sender_create(const zt_sender_options* options, zt_sender** sender);
/* Stops it with a time limit of five seconds, unless zt_sender_stop was called. */
ZT_C_EXPORT void zt_sender_destroy(zt_sender* sender);
/* Saves the report and wakes up the thread. ZT_SYSTEM if it could not be saved: then nothing sends
 * it. */
ZT_C_EXPORT zt_status zt_sender_send(zt_sender* sender, zt_report* report);
/* Waits at most `timeout_ms` until each saved report has been tried once more. `left` is how many
 * reports are in the store then; it may be NULL. */
ZT_C_EXPORT zt_status zt_sender_flush(zt_sender* sender, int64_t timeout_ms, size_t* left);
/* Ends sending for good, and waits at most `timeout_ms` for the thread. */
ZT_C_EXPORT zt_status zt_sender_stop(zt_sender* sender, int64_t timeout_ms, size_t* left);
/* A file descriptor for poll(2) that is readable while there are receipts; -1 if there is none. It
 * belongs to the sender. */
ZT_C_EXPORT zt_status zt_sender_descriptor(const zt_sender* sender, int* descriptor);
/* Passes the receipts since the last call to `callback`, on the calling thread, oldest first. */
ZT_C_EXPORT zt_status zt_sender_receipts(zt_sender* sender, zt_receipt_callback callback,
                                         void* user);

#ifdef __cplusplus
}
#endif

#endif
