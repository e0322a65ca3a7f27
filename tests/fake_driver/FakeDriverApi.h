/*
 * The control interface of the fake driver: C functions with a fake_ prefix, exported by the
 * same shared object as the driver's entry points. A test reaches them with dlopen of the
 * driver's path (which yields the instance that the library loaded) and dlsym; FakeDriver.h
 * wraps them for C++ tests.
 *
 * Calls are numbered from 0 in the order the entry points were entered; arguments from 0 in
 * the order of the entry's parameters, each under its parameter name.
 */
#ifndef QVNRT_TESTS_FAKE_DRIVER_API_H
#define QVNRT_TESTS_FAKE_DRIVER_API_H

#include <stddef.h>

#include <qvnrt/driver.h>

#ifdef __cplusplus
extern "C" {
#endif

#define FAKE_API __attribute__((visibility("default")))

/* Kinds of a recorded argument. */
#define FAKE_ARG_NONE 0   /* no such call or argument */
#define FAKE_ARG_NUMBER 1 /* an integer, a handle, or a pointer recorded as its address */
#define FAKE_ARG_BYTES 2  /* a deep copy: a text, a field string, a symbol run, a record */
#define FAKE_ARG_NULL 3   /* a null text or record */

/* ---- The call log ---- */
FAKE_API int fake_call_count(void);
FAKE_API const char* fake_call_name(int call);
/* 1 when the entry returns a value (then fake_call_result gives it), 0 for a void entry. */
FAKE_API int fake_call_has_result(int call);
FAKE_API long long fake_call_result(int call);
FAKE_API int fake_call_arg_count(int call);
FAKE_API const char* fake_call_arg_name(int call, int arg);
FAKE_API int fake_call_arg_kind(int call, int arg);
/* Signed arguments are sign-extended; pointers and unsigned values are zero-extended. */
FAKE_API unsigned long long fake_call_arg_number(int call, int arg);
FAKE_API const char* fake_call_arg_bytes(int call, int arg, size_t* length);
FAKE_API void fake_clear_log(void);

/* ---- Scripted results ----
 * An entry's result is, in order of precedence: the oldest pushed one-shot result, the set
 * result, then the default (clientOpenServer 1; requests a fresh handle; clientModifySecurity
 * 1; property and exchange reads their scripted answers; everything else 0). A scripted
 * request result that is not 0 is registered as the request's handle. */
FAKE_API void fake_set_result(const char* entry, long long result);
FAKE_API void fake_push_result(const char* entry, long long result);
FAKE_API void fake_clear_result(const char* entry);
/* The handle the next request gets by default (1 at start). */
FAKE_API void fake_set_next_handle(unsigned long handle);

FAKE_API void fake_set_property_long(int property, long value);
/* clientGetPropertyString copies the text (cut to the buffer) and returns its copied length. */
FAKE_API void fake_set_property_string(int property, const char* text);
/* Answers of clientGetExchangeLong/String, per exchange and field (field-access shape) or
 * property (plain shape). The error word is written through the error pointer of the
 * field-access shape. Unscripted, the field-access shape answers 0 with error -4, and the
 * plain shape answers its default. */
FAKE_API void fake_set_exchange_long(long exchange, int field, long value, long error);
FAKE_API void fake_set_exchange_string(long exchange, int field, const char* text, long error);
FAKE_API void fake_set_news_source(int source, int what, const char* text);

/* ---- Hooks: run inside an entry point, after it is logged, before it returns ---- */
typedef void (*fake_hook_fn)(void* context, long long result);
typedef void (*fake_release_fn)(void* context);
/* A null fn removes the hook. release (may be null) is called on the context when the hook
 * is replaced, removed or reset, never while it runs. */
FAKE_API void fake_set_hook(const char* entry, fake_hook_fn fn, void* context,
                            fake_release_fn release);

/* ---- Requests and callbacks ---- */
FAKE_API int fake_has_network_callback(void);
/* The entry that started the request with this handle, or null for an unknown handle. */
FAKE_API const char* fake_handle_entry(unsigned long handle);
FAKE_API unsigned long fake_handle_user(unsigned long handle);
/* 1 from the request until clientCloseEvent of its handle. */
FAKE_API int fake_handle_open(unsigned long handle);

/* Each fire function calls the callback stored for the handle, with the stored user value,
 * or with `user` when withUser is non-zero. With withUser and an unknown handle, the latest
 * callback of that kind is used. Returns 1 and sets *result (may be null) when a callback
 * was called; 0 when there was none to call. */
FAKE_API int fake_fire_network(int event, void* data);
FAKE_API int fake_fire_security(unsigned long request, int status, int field, int dataType,
                                void* data, int withUser, unsigned long user, int* result);
FAKE_API int fake_fire_eod(unsigned long request, int count, int flags, RTPRICEREC* records,
                           int withUser, unsigned long user, int* result);
FAKE_API int fake_fire_tick(unsigned long request, int count, int live, int type, void* data,
                            int withUser, unsigned long user, int* result);
FAKE_API int fake_fire_session(unsigned long request, int status, SESSION_INFO* rules,
                               void* holidays, int withUser, unsigned long user, int* result);
FAKE_API int fake_fire_headline(unsigned long request, int count, unsigned long articleID,
                                char* headline, unsigned char sourceId, char* sourceName,
                                long dateTime, int history, int withUser, unsigned long user,
                                int* result);
FAKE_API int fake_fire_story(unsigned long request, int status, unsigned long articleID,
                             char* story, int withUser, unsigned long user, int* result);

/* ---- Deferred delivery (the dispatch variant) ----
 * A queued invocation runs only inside clientDispatch; queueing makes the descriptor that
 * clientGetPollFd returns readable. release (may be null) is called after the run, or when
 * the queue is reset without running it. */
FAKE_API void fake_queue(void (*run)(void* context), fake_release_fn release, void* context);
FAKE_API int fake_pending(void);
FAKE_API int fake_dispatch_count(void);
/* The eventfd of the dispatch pair, made on first use; -1 if it cannot be made. */
FAKE_API int fake_poll_fd(void);

/* Forgets everything: log, scripts, hooks, handles, callbacks, queue. */
FAKE_API void fake_reset(void);

#ifdef __cplusplus
}
#endif

#endif /* QVNRT_TESTS_FAKE_DRIVER_API_H */
