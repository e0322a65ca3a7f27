/*
 * The replay driver's own interface beside the driver contract of <qvnrt/driver.h>: the
 * layout it reads behind the contract's opaque EODDATA pointer (the same as the
 * simulation's, so that an application asks both alike), and a control call for tests and
 * tools, looked up with dlsym.
 */
#ifndef QVNREPLAY_H
#define QVNREPLAY_H

#include <qvnrt/driver.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What the replay reads behind an EODDATA pointer. A null pointer asks for the newest 250
 * days. */
typedef struct QvnReplayEodRequest {
    uint32_t start;     /* Date value: no day before this one; 0 for no bound */
    uint32_t end;       /* Date value: no day after this one; 0 for up to the replay clock */
    int32_t maxRecords; /* the newest this many days; 0 or less: 250 */
    uint32_t reserved;
} QvnReplayEodRequest;

/* Replaces the settings by those of the environment with `settings` applied on top
 * ("key = value" lines or ';'-separated) and forgets the files read so far. Refused while a
 * connection is open. Returns 1, or 0 when refused or when a setting was bad (bad settings
 * are reported and skipped, the good ones taken). */
QVN_DRIVER_EXPORT int qvnreplay_Configure(const char* settings);

/* The replay clock, seconds since 1970. */
QVN_DRIVER_EXPORT long qvnreplay_Now(void);

#ifdef __cplusplus
}
#endif

#endif /* QVNREPLAY_H */
