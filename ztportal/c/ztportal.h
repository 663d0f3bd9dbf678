/* SPDX-License-Identifier: Apache-2.0 */
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
 * Errors: a function that fails returns a status and leaves a sentence in `zt_last_error`. It has
 * no other effect, unless its comment says so. A function that makes a handle sets it to NULL when
 * it fails, and a call with a NULL handle fails with ZT_BAD_ARGUMENT, so a host may check only the
 * last call of a sequence. Results are passed by pointers, which must not be NULL unless the
 * comment says that they may.
 *
 * Texts are UTF-8, which is not checked. One that is passed in ends with a zero byte or, in
 * functions with a length, has so many bytes and may contain zero bytes; the library copies it.
 * NULL is a missing text, which reports show as "(null)", or ZT_BAD_ARGUMENT where a text is
 * needed. Texts and structures that the library returns belong to it: they are valid until the next
 * call with the same handle, and texts end with a zero byte.
 *
 * Handles: what `_create` made, `_destroy` releases, once; it accepts NULL. The handles of pools
 * belong to their report and are released with it.
 *
 * Threads: different threads may use different handles at the same time. One thread at a time uses
 * a report with its pools, or a store. Any thread may use a sender and the functions of the host at
 * any time. Only `zt_sender_create` starts a thread. Callbacks run on the thread that is named with
 * each, and must return normally: no exception, no longjmp, no pthread_cancel of a thread in a
 * call. The child of fork(2) may use all handles; its copy of a sender only saves. Do not fork
 * while another thread is in a call.
 *
 * Structures begin with their size, and a later library may add members at the end. A host sets the
 * size of those that it passes, as in `zt_send_options options = {.size = sizeof options};`. A
 * member that is 0 or NULL has its default. A structure that is larger than the library knows is
 * accepted if the rest is zero. In one that the library passes, only members within its size exist.
 *
 * Enumerations are 32 bits wide in every language. A later library may return further numbers. The
 * symbols have the version ZTPORTAL_C_1; none is changed or removed in libztportal.so.1. */

/* NOLINTBEGIN(modernize-use-using,modernize-redundant-void-arg,cppcoreguidelines-macro-usage): C */

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

typedef int32_t zt_status;
enum {
  ZT_OK = 0,
  ZT_NOT_ACCEPTED = 1, /* by the server, for the consent, or by a hook of the host */
  ZT_BAD_ARGUMENT = 2, /* a NULL handle or text, an unknown number, a wrong option */
  ZT_UNKNOWN_KEY = 3,  /* no such kind of pool, key or customer */
  ZT_WRONG_TYPE = 4,   /* the key has another type */
  ZT_OUT_OF_RANGE = 5, /* a number or name that the field cannot hold */
  ZT_BAD_JSON = 6,     /* a description that cannot be read; zt_last_error names the place */
  ZT_NO_MEMORY = 7,
  ZT_SYSTEM = 8, /* a file, folder or thread; zt_last_error has the system's reason */
  ZT_FAILED = 9  /* anything else */
};

/* Why the last failed call of this thread failed: one English sentence of at most 2,047 bytes,
 * empty if none has failed. Valid until the next failure on this thread. */
ZT_C_EXPORT const char* zt_last_error(void);
/* The version of the library, such as "1.1.0". Static. */
ZT_C_EXPORT const char* zt_version(void);
/* All kinds of pools and records with their keys, types and names in reports, as JSON (RFC 8259),
 * for generators of bindings:
 *
 *     {"pools": [{"kind": "execution", "type": "EXECUTION", "keys": [
 *        {"key": "startPoint", "type": "string", "inReports": "START_POINT"}, …,
 *        {"key": "steps", "type": "list", "inReports": "INSTALLATIONSTEPS", "of": […]}]}, …],
 *      "enumerations": {"step type": ["ENTER", …], …}}
 *
 * The types are those of docs/report-description.md. Reports do not show a value without
 * "inReports". The place of a name in its enumeration is its number; "" is a number without a name.
 * Static; NULL without memory. */
ZT_C_EXPORT const char* zt_schema(void);

/* ---- The host -------------------------------------------------------------------------------- */

typedef struct zt_pair {
  const char* name;
  const char* value;
} zt_pair;

/* Who the host is, unless it is in a bundle: `count` pairs with the names "CFBundleName",
 * "CFBundleShortVersionString" and "CFBundleVersion". Call it once, before the first report: the
 * name determines the folder of the saved reports. */
ZT_C_EXPORT zt_status zt_host_set_info(const zt_pair* pairs, size_t count);
/* Closes the connections that the calling thread keeps for the next report. */
ZT_C_EXPORT zt_status zt_host_close_connections(void);
/* Whether texts are escaped so that every report is well-formed XML. Off at first: one with `<`
 * or `&` may make a report that the server does not understand and that cannot be sent again. */
ZT_C_EXPORT zt_status zt_host_set_value_escaping(bool is_on);
/* Whether reports are broadcast on the session bus before they are sent. On at first. */
ZT_C_EXPORT zt_status zt_host_set_broadcast_enabled(bool is_enabled);

typedef int32_t zt_consent;
enum {
  ZT_CONSENT_UNSET = 0,  /* nobody has said; the library reports */
  ZT_CONSENT_GIVEN = 1,  /* the same, but the host need not ask */
  ZT_CONSENT_REVOKED = 2 /* nothing is examined, sent, saved or broadcast */
};

/* Keeps what the user has said, in a file for all processes of this host. ZT_SYSTEM if that fails;
 * a revocation is then valid for this process at least. */
ZT_C_EXPORT zt_status zt_host_set_consent(zt_consent consent);
/* What the user has said, read anew. A file that cannot be read or understood is a revocation. */
ZT_C_EXPORT zt_status zt_host_consent(zt_consent* consent);

typedef int32_t zt_log_level;
enum {
  ZT_LOG_DEBUG = 0,   /* what the library does */
  ZT_LOG_INFO = 1,    /* what became of a report */
  ZT_LOG_WARNING = 2, /* something did not work; the report is not lost */
  ZT_LOG_ERROR = 3    /* a report or a part of it is lost */
};

/* Takes a message of the log: one English sentence without a line end, a password or a value of a
 * report, of a `module` such as "transport" or "store". Both end with the call. Runs on the thread
 * of the message; what the library logs meanwhile there is dropped. */
typedef void (*zt_log_handler)(void* user, zt_log_level level, const char* module,
                               const char* message);
/* Passes the log of all threads to `handler`, with `user`. NULL turns it off, as it is at first. A
 * call of the former one may still be running on another thread when this returns. */
ZT_C_EXPORT zt_status zt_host_set_log_handler(zt_log_handler handler, void* user);

typedef int32_t zt_decision;
enum {
  ZT_DROP = 0, /* also what a callback of a binding returns that fails, as a rule */
  ZT_KEEP = 1,
  ZT_REPLACE = 2 /* by the text of zt_replacement_set_n, or else by the empty one */
};
typedef struct zt_replacement zt_replacement;

/* Sets the new text, for a callback that is going to return ZT_REPLACE. */
ZT_C_EXPORT zt_status zt_replacement_set_n(zt_replacement* replacement, const char* text,
                                           size_t length);

/* Decides about one value of a report: the type of its pool, its name in the report, and its text
 * of `length` bytes there, such as "TRUE" or "7". The values of the report itself ("MachineID", …)
 * have the type "". A dropped value is left out with its name; one of the report itself becomes
 * empty. Unknown decisions drop. Runs on the thread that writes the report, which it must not
 * change. The texts and `replacement` end with the call. */
typedef zt_decision (*zt_value_filter)(void* user, const char* pool_type, const char* name,
                                       const char* value, size_t length,
                                       zt_replacement* replacement);
/* Decides about a whole request text, of `length` bytes, each time before it is broadcast, sent or
 * saved. A dropped one is not (ZT_OUTCOME_DROPPED). Runs on the thread that delivers it. */
typedef zt_decision (*zt_request_hook)(void* user, const char* request, size_t length,
                                       zt_replacement* replacement);
/* Asks `filter` or `hook` from now on, for all reports; otherwise like zt_host_set_log_handler. */
ZT_C_EXPORT zt_status zt_host_set_value_filter(zt_value_filter filter, void* user);
ZT_C_EXPORT zt_status zt_host_set_request_hook(zt_request_hook hook, void* user);

/* ---- How requests travel --------------------------------------------------------------------- */

/* For durations and numbers of attempts: no limit. Other negative numbers are ZT_BAD_ARGUMENT. */
#define ZT_NO_LIMIT (-1)

/* A request that the host's own transport sends. Ends with the call. */
typedef struct zt_request {
  size_t size;
  const char* method; /* "GET" or "POST" */
  const char* url;    /* absolute, http or https */
  const zt_pair* headers;
  size_t header_count;
  const char* body; /* empty for a GET */
  size_t body_length;
} zt_request;
/* What it received. Ends with the call. */
typedef struct zt_response zt_response;

/* A complete response arrived, with the status `http_status` and a body of `length` bytes. The
 * server asks to wait so many seconds (Retry-After, RFC 9110), or 0. */
ZT_C_EXPORT zt_status zt_response_set(zt_response* response, int32_t http_status, const char* body,
                                      size_t length, int64_t retry_after_s);
/* No complete response arrived, for the reason `error`, one sentence without passwords. */
ZT_C_EXPORT zt_status zt_response_fail(zt_response* response, const char* error);
/* Sends one request, with redirects, certificates and time limits of its own, and describes the
 * result in `response`. Runs on the thread that sends, perhaps on several at the same time. */
typedef void (*zt_transport)(void* user, const zt_request* request, zt_response* response);

typedef int32_t zt_tls_version;
enum {
  ZT_TLS_SYSTEM_DEFAULT = 0,
  ZT_TLS_1_2 = 1, /* RFC 5246 */
  ZT_TLS_1_3 = 2  /* RFC 8446 */
};

/* How requests travel. All texts and headers are copied. */
typedef struct zt_transport_options {
  size_t size;
  const char* authority_file;     /* certificate authorities (PEM) instead of the system's */
  const char* authority_folder;   /* the same, with hashed names */
  const char* client_certificate; /* PEM file */
  const char* client_key;         /* PEM file; NULL: in the file of the certificate */
  const char* client_key_password;
  zt_tls_version minimum_tls_version;
  const char* proxy;    /* its URL; "" is no proxy; NULL is that of the environment */
  const char* no_proxy; /* hosts, separated by commas; NULL is that of the environment */
  int64_t timeout_ms;   /* the whole exchange; default 2,000; ZT_NO_LIMIT needs the third one */
  int64_t connect_timeout_ms; /* until there is a connection; default: the other two count */
  int64_t idle_timeout_ms;    /* while nothing is transferred; default: only the first counts */
  const zt_pair* headers;     /* added to every request */
  size_t header_count;
  bool compress_requests; /* above 1 KiB with gzip (RFC 1952), which the server must accept */
  zt_transport transport; /* the host's own transport in place of libcurl */
  void* transport_user;
} zt_transport_options;

/* For all reports that are created from now on. NULL: the defaults. ZT_BAD_ARGUMENT for a wrong
 * value, which zt_last_error names; files are looked at. */
ZT_C_EXPORT zt_status zt_host_set_transport(const zt_transport_options* options);

/* ---- Receipts -------------------------------------------------------------------------------- */

typedef int32_t zt_outcome;
enum {
  ZT_OUTCOME_NOT_SENT = 0, /* nobody has tried to send it */
  ZT_OUTCOME_ACCEPTED = 1,
  ZT_OUTCOME_REFUSED = 2,          /* an HTTP status outside 200 to 299 */
  ZT_OUTCOME_INVALID_RESPONSE = 3, /* a response that confirms nothing */
  ZT_OUTCOME_UNREACHABLE = 4,      /* no complete response arrived; see `error` */
  ZT_OUTCOME_TIMED_OUT = 5,
  ZT_OUTCOME_OFFLINE = 6,     /* not sent: no configuration, or no version of the server */
  ZT_OUTCOME_NO_TEST_URL = 7, /* not sent: test mode is on, and there is no URL for it */
  ZT_OUTCOME_NO_CONSENT = 8,  /* not sent: the user has revoked the consent */
  ZT_OUTCOME_DROPPED = 9,     /* not sent: a hook of the host dropped it */
  ZT_OUTCOME_UNREADABLE = 10  /* not sent: the saved report cannot be read */
};

typedef int32_t zt_delivery_error;
enum {
  ZT_ERROR_NONE = 0,
  ZT_ERROR_LIBRARY = 1, /* libcurl cannot be loaded */
  ZT_ERROR_ADDRESS = 2, /* the URL is not one of http or https */
  ZT_ERROR_NAME_LOOKUP = 3,
  ZT_ERROR_PROXY = 4,      /* the proxy refused */
  ZT_ERROR_CONNECTION = 5, /* nobody listens there, or the network is down */
  ZT_ERROR_TLS = 6,
  ZT_ERROR_TIMEOUT = 7,
  ZT_ERROR_TRANSFER = 8, /* the connection ended before the response was complete */
  ZT_ERROR_REDIRECT = 9,
  ZT_ERROR_HTTP_STATUS = 10, /* a status outside 200 to 299 */
  ZT_ERROR_CONTENT = 11,     /* the content of the response */
  ZT_ERROR_FILE = 12,        /* the saved report */
  ZT_ERROR_HOST = 13,        /* the host's own transport */
  ZT_ERROR_MEMORY = 14
};

/* The receipt of one delivery. Durations are in microseconds; texts are never NULL. */
typedef struct zt_delivery {
  size_t size;
  zt_outcome outcome;
  zt_delivery_error error;
  int32_t http_status;       /* 0 if no complete response arrived */
  int32_t save_error_number; /* errno; 0 if it was saved or did not have to be */
  const char* message;       /* one English sentence without passwords */
  const char* url;           /* without user name and password; empty if it was not sent */
  const char* saved_to;      /* the file in the store that has the report now, if any */
  const char* save_error;    /* why it could not be saved */
  uint64_t request_bytes;
  uint64_t response_bytes;
  int64_t lookup_us; /* 0 if the phase was not needed, like the next three */
  int64_t connect_us;
  int64_t tls_us;
  int64_t response_us;
  int64_t total_us;
  int64_t retry_after_s; /* how long the server asks to wait; 0 if it does not */
} zt_delivery;

/* ---- Reports --------------------------------------------------------------------------------- */

typedef struct zt_report zt_report; /* a report document */
/* A pool of a report, a record in a list of a pool, or an array of generic fields. */
typedef struct zt_pool zt_pool;

/* Points in time are milliseconds since 1970-01-01T00:00:00Z. */
#define ZT_NOW INT64_MAX     /* the time of the call */
#define ZT_NO_DATE INT64_MIN /* a missing date */

/* Flags of zt_report_create. */
#define ZT_CACHE_CONFIGURATION 1u /* a configuration that was read before may be reused */
#define ZT_OFFLINE 2u             /* contact no server: for rendering, saving and zt_sender_send */

/* Creates a report with a new ID. Unless ZT_OFFLINE is set, reads the customer's configuration
 * document at `configuration_url` (http or https) and asks the server for its version, in up to two
 * requests of two seconds each; it is no failure if neither gets a response. */
ZT_C_EXPORT zt_status zt_report_create(const char* configuration_url, const char* customer_id,
                                       const char* application_id, const char* application_version,
                                       uint32_t flags, zt_report** report);
/* Creates the report that `json`, of `length` bytes, describes with its pools, as in
 * docs/report-description.md. It may name the URL of the configuration, which is used unless
 * `flags` has ZT_OFFLINE; other flags are ZT_BAD_ARGUMENT. ZT_BAD_JSON: zt_last_error has the
 * place, such as "/pools/0/steps/2/stepType: expected …"; no server was contacted. */
ZT_C_EXPORT zt_status zt_report_from_json(const char* json, size_t length, uint32_t flags,
                                          zt_report** report);
/* Releases a report with its pools. */
ZT_C_EXPORT void zt_report_destroy(zt_report* report);

/* Like zt_host_set_transport, for the later requests of this report alone. */
ZT_C_EXPORT zt_status zt_report_set_transport(zt_report* report,
                                              const zt_transport_options* options);
/* The value of "reportId", "machineId", "customerId", "applicationId", "applicationVersion",
 * "reportUrl", "reportTestUrl", "configurationUrl", "serverVersion" (empty or NULL unless the
 * server returned it) or "file" (its path in the store, whether it is there or not); NULL if it is
 * missing. ZT_UNKNOWN_KEY for another key. */
ZT_C_EXPORT zt_status zt_report_get(zt_report* report, const char* key, const char** value);

/* The request text (SOAP 1.1), or without `soap` its body as plain XML; lines end with CR LF. Empty
 * for a report without pools. `length` is its size in bytes and may be NULL. */
ZT_C_EXPORT zt_status zt_report_render(zt_report* report, bool soap, const char** text,
                                       size_t* length);
/* Broadcasts and posts the report. ZT_NOT_ACCEPTED: the report is in the store, if it could be
 * saved; zt_report_last_delivery tells. */
ZT_C_EXPORT zt_status zt_report_send(zt_report* report);
/* Saves the report without sending it: as the file `path`, whose content it replaces, or for NULL
 * in the store. ZT_SYSTEM if that fails, ZT_NOT_ACCEPTED for a revoked consent or a hook. */
ZT_C_EXPORT zt_status zt_report_save(zt_report* report, const char* path);
/* Sends the saved report `path`; the file stays. ZT_NOT_ACCEPTED also if it cannot be read or is
 * not well-formed XML. */
ZT_C_EXPORT zt_status zt_report_resend(zt_report* report, const char* path);
/* The receipt of what this report sent, resent or saved in the store last. */
ZT_C_EXPORT zt_status zt_report_last_delivery(zt_report* report, const zt_delivery** delivery);

/* ---- Pools ----------------------------------------------------------------------------------- */

/* Adds a pool of `kind`: "generic", "execution", "deinstallation", "initialization", "diagnose",
 * "connectionManager" or "computerSystem". Its values have their defaults;
 * docs/report-pools.md and zt_schema list them. `pool` may be NULL. */
ZT_C_EXPORT zt_status zt_report_add_pool(zt_report* report, const char* kind, int64_t timestamp,
                                         zt_pool** pool);
/* Adds a pool "computerSystem" that is filled from this machine, which runs subprocesses and waits
 * for them. `pool` may be NULL. */
ZT_C_EXPORT zt_status zt_report_add_inventory(zt_report* report, int64_t timestamp, zt_pool** pool);
/* Adds a record to the list `key` of a pool, such as "steps" or "browsers". `timestamp` is that of
 * a step; other records have none. In an array of generic fields, adds a field `key` that is an
 * array itself. `record` may be NULL. */
ZT_C_EXPORT zt_status zt_pool_add_record(zt_pool* pool, const char* key, int64_t timestamp,
                                         zt_pool** record);
/* The generic fields of a pool, which are written after its values. ZT_WRONG_TYPE for a record. */
ZT_C_EXPORT zt_status zt_pool_fields(zt_pool* pool, zt_pool** fields);

/* Each sets the value of a key, which is that of a JSON description:
 *
 *     zt_pool_set_string(pool, "endResultCode", "0");
 *     zt_pool_set_date(pool, "endTime", ZT_NOW);
 *     zt_pool_set_string(step, "stepType", "ERROR");   // an enumeration, by name
 *     zt_pool_set_integer(step, "stepType", 4);        // or by number, which need not have a name
 *
 * In an array of generic fields, each but zt_pool_set_date adds a field with the name `key` at its
 * end instead; names need be neither unique nor present. In a list of texts, a string is added.
 *
 * ZT_UNKNOWN_KEY: the pool has no such key. ZT_WRONG_TYPE: its type is another. ZT_OUT_OF_RANGE:
 * the number does not fit, or the enumeration has no such name. */
ZT_C_EXPORT zt_status zt_pool_set_string(zt_pool* pool, const char* key, const char* value);
ZT_C_EXPORT zt_status zt_pool_set_string_n(zt_pool* pool, const char* key, const char* value,
                                           size_t length);
/* Also sets a boolean, as a byte from -128 to 255; reports show TRUE only for 1. Generic fields
 * have 32 bits. */
ZT_C_EXPORT zt_status zt_pool_set_integer(zt_pool* pool, const char* key, int64_t value);
/* For generic fields, which reports show with two digits after the point; no key has this type. */
ZT_C_EXPORT zt_status zt_pool_set_float(zt_pool* pool, const char* key, float value);
ZT_C_EXPORT zt_status zt_pool_set_boolean(zt_pool* pool, const char* key, bool value);
ZT_C_EXPORT zt_status zt_pool_set_date(zt_pool* pool, const char* key, int64_t value);
/* Makes a string or date missing, or adds a generic field that has only a name. */
ZT_C_EXPORT zt_status zt_pool_set_null(zt_pool* pool, const char* key);

/* A string, or the name of an enumeration's number, "" if it has none. NULL for a missing string.
 * `length` is its size in bytes and may be NULL. Generic fields cannot be read. */
ZT_C_EXPORT zt_status zt_pool_get_string(zt_pool* pool, const char* key, const char** value,
                                         size_t* length);
/* An integer, a date or ZT_NO_DATE, the number of an enumeration (above INT64_MAX: negative), or
 * the byte of a boolean, from -128 to 127. */
ZT_C_EXPORT zt_status zt_pool_get_integer(zt_pool* pool, const char* key, int64_t* value);

/* ---- Runs ------------------------------------------------------------------------------------ */

/* Creates the report of one run of an application of a built-in customer, in which zt_run_start,
 * zt_run_set_string and zt_run_stop say what happens; they fail with ZT_WRONG_TYPE for other
 * reports. It contacts the server as zt_report_create does, and takes the inventory of the
 * computer. `application_id` NULL or "" is the customer's default. ZT_UNKNOWN_KEY for an unknown
 * customer. */
ZT_C_EXPORT zt_status zt_run_create(const char* customer_id, const char* application_id,
                                    zt_report** report);
/* The run starts now, at a point that the host names. The first call adds the pool "execution",
 * which each call returns; `execution` may be NULL. */
ZT_C_EXPORT zt_status zt_run_start(zt_report* report, const char* start_point, zt_pool** execution);
/* The run ends now. No effect before its start. */
ZT_C_EXPORT zt_status zt_run_stop(zt_report* report, const char* end_point);
/* Facts, which become generic fields of the pool "execution" when the report is sent, or saved in
 * the store. A second one of the same name and type replaces the first. Those of a run that was
 * never started are dropped. */
ZT_C_EXPORT zt_status zt_run_set_string(zt_report* report, const char* name, const char* value);
ZT_C_EXPORT zt_status zt_run_set_boolean(zt_report* report, const char* name, bool value);

/* ---- The store ------------------------------------------------------------------------------- */

/* The saved reports of the host, one file each, in the folder `Kelvane/<name of the host>/reports`
 * in the user's application-support folder. Those that failed too often are in the folder
 * "unsendable" beside it. A light handle, so each thread can have its own. */
typedef struct zt_store zt_store;

typedef struct zt_saved_report {
  size_t size;
  const char* path;
  const char* report_id; /* the file's name without its ending */
  uint64_t bytes;
  int64_t time; /* when it was last written */
} zt_saved_report;

typedef int32_t zt_store_part;
enum { ZT_REPORTS = 0, ZT_UNSENDABLE = 1 };
/* Called for each report, which ends with the call, on the calling thread. False ends the list. */
typedef bool (*zt_saved_report_callback)(void* user, const zt_saved_report* report);

/* Opens the store of the host as zt_host_set_info names it now. Creates the folder; ZT_SYSTEM if
 * that fails. */
ZT_C_EXPORT zt_status zt_store_create(zt_store** store);
ZT_C_EXPORT void zt_store_destroy(zt_store* store);
/* Lists the reports, oldest first. The callback may change the store. */
ZT_C_EXPORT zt_status zt_store_list(zt_store* store, zt_store_part part,
                                    zt_saved_report_callback callback, void* user);
/* The customer in a saved report (NULL if it names none), and why it cannot be sent, in one line
 * that may quote it ("" if it can). Either pointer may be NULL. */
ZT_C_EXPORT zt_status zt_store_check(zt_store* store, const char* path, const char** customer_id,
                                     const char** problem);
/* Each works on a report of either part, by its path, and fails with ZT_SYSTEM: removes it, or
 * moves it to the other `part`; one that comes back to ZT_REPORTS has no failures. */
ZT_C_EXPORT zt_status zt_store_remove(zt_store* store, const char* path);
ZT_C_EXPORT zt_status zt_store_move(zt_store* store, const char* path, zt_store_part part);
/* Removes all reports of both parts. `removed` may be NULL. */
ZT_C_EXPORT zt_status zt_store_remove_all(zt_store* store, size_t* removed);
/* How much the stores of this process keep, for each part: so many reports, bytes and seconds; 0 is
 * no limit. Enforced after each save and by sending; the oldest reports go first. */
ZT_C_EXPORT zt_status zt_store_set_limits(size_t reports, uint64_t bytes, int64_t age_s);

/* Takes the receipt of a report that was tried or cannot be sent, on the thread that is named with
 * the function. Both structures end with the call. */
typedef void (*zt_receipt_callback)(void* user, const zt_saved_report* report,
                                    const zt_delivery* delivery);
/* Asked before each report and often during a wait, on the calling thread; true ends sending. */
typedef bool (*zt_is_cancelled)(void* user);

typedef struct zt_send_options {
  size_t size;
  const char* configuration_url;         /* of the customer's configuration document */
  const zt_transport_options* transport; /* NULL: those of the host */
  int32_t attempts;       /* failures until a report is set aside; default 5; ZT_NO_LIMIT: never */
  int64_t retry_delay_ms; /* before trying again; default 1,000; doubles each time, */
  int64_t longest_delay_ms; /* up to this; default 60,000 */
  zt_receipt_callback on_receipt;
  void* user; /* for both callbacks */
  /* Of zt_store_send; a sender always retries. */
  bool retry;        /* wait and try again until nothing is left that can be sent */
  int64_t budget_ms; /* no request and no wait begins after it; default: no limit */
  zt_is_cancelled is_cancelled;
  /* Of zt_sender_create. */
  size_t kept_receipts; /* without `on_receipt`; default 100; the oldest are dropped first */
} zt_send_options;

typedef int32_t zt_send_end;
enum {
  ZT_SEND_DONE = 0,      /* every report was tried */
  ZT_SEND_CANCELLED = 1, /* the callback asked for it */
  ZT_SEND_BUDGET = 2,    /* the time is over */
  ZT_SEND_OFFLINE = 3,   /* no configuration, no version of the server, or the server is gone */
  ZT_SEND_DEFERRED = 4,  /* the server asks to wait */
  ZT_SEND_BUSY = 5,      /* another process or thread is sending from this store */
  ZT_SEND_NO_STORE = 6,  /* the folder or its lock cannot be created */
  ZT_SEND_NO_CONSENT = 7
};

typedef struct zt_send_result {
  size_t size;
  zt_send_end end;
  size_t accepted;       /* and removed */
  size_t set_aside;      /* moved to "unsendable" */
  size_t removed;        /* for the limits */
  size_t left;           /* reports in the store at the end, new ones included */
  int64_t retry_after_s; /* how long the server asks to wait; 0 if it does not */
} zt_send_result;

/* Sends the saved reports, oldest first, and removes those that are accepted; none blocks the
 * others. Calls back on the calling thread. ZT_OK if nothing is left, otherwise ZT_NOT_ACCEPTED,
 * both with a result; `result` may be NULL. */
ZT_C_EXPORT zt_status zt_store_send(zt_store* store, const zt_send_options* options,
                                    const zt_send_result** result);

/* ---- Sending in the background --------------------------------------------------------------- */

/* Sends reports from a thread of its own, so that the host, whose reports are ZT_OFFLINE, never
 * waits for a network. A report is saved before zt_sender_send returns, so it survives a crash. The
 * thread sends what the store holds, reports of earlier runs included. While something is left it
 * tries again with growing delays, and soon after the network of the machine has changed. It blocks
 * all signals, except those that report a fault of its own code. */
typedef struct zt_sender zt_sender;

/* Starts the thread. If the system has none, which is logged, zt_sender_send only saves. The thread
 * calls `on_receipt`, which may pass further reports to the sender, but not destroy it; without it,
 * receipts are kept for zt_sender_receipts. */
ZT_C_EXPORT zt_status zt_sender_create(const zt_send_options* options, zt_sender** sender);
/* Stops the sender with a time limit of five seconds, unless zt_sender_stop was called.
 * `on_receipt` may still be running if that is not enough. */
ZT_C_EXPORT void zt_sender_destroy(zt_sender* sender);
/* Saves the report, which may be changed or destroyed afterwards, and wakes up the thread. Fails
 * like zt_report_save; then nothing sends it. */
ZT_C_EXPORT zt_status zt_sender_send(zt_sender* sender, zt_report* report);
/* Waits at most `timeout_ms` until each report that is in the store now has been tried once more.
 * `left` is how many are there then; it may be NULL. */
ZT_C_EXPORT zt_status zt_sender_flush(zt_sender* sender, int64_t timeout_ms, size_t* left);
/* Ends sending for good, and waits at most `timeout_ms` for the thread, which completes what it is
 * sending. zt_sender_send still saves. `left` may be NULL. */
ZT_C_EXPORT zt_status zt_sender_stop(zt_sender* sender, int64_t timeout_ms, size_t* left);
/* A file descriptor for poll(2) that is readable while there are receipts; -1 if there is
 * `on_receipt` or no descriptor is left. It belongs to the sender. */
ZT_C_EXPORT zt_status zt_sender_descriptor(zt_sender* sender, int* descriptor);
/* Passes the receipts since the last call to `callback`, on the calling thread, oldest first. */
ZT_C_EXPORT zt_status zt_sender_receipts(zt_sender* sender, zt_receipt_callback callback,
                                         void* user);

#ifdef __cplusplus
}
#endif

/* NOLINTEND(modernize-use-using,modernize-redundant-void-arg,cppcoreguidelines-macro-usage) */

#endif
