/*
 * The simulation driver's own interface, beside the driver contract of <qvnrt/driver.h>:
 * the layouts it gives to the contract's opaque request records, and control calls for
 * tests, demos and the command-line program. Look the calls up with dlsym on the loaded
 * driver; they are exported with C linkage.
 */
#ifndef QVNSIM_H
#define QVNSIM_H

#include <qvnrt/driver.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What the simulation reads behind an EODDATA pointer. A null pointer asks for the
 * defaults: the latest 250 trading days. */
typedef struct QvnSimEodRequest {
    uint32_t start;     /* Date value: no day before this one; 0 for no bound */
    uint32_t end;       /* Date value: no day after this one; 0 for up to today */
    int32_t maxRecords; /* the newest this many days; 0 or less: 250; at most 2500 */
    uint32_t reserved;
} QvnSimEodRequest;

/* What the simulation reads behind an RTSec_OptionFilter pointer. All zero: the whole
 * chain. */
typedef struct QvnSimOptionFilter {
    uint32_t expiry; /* Date value of a day: only options expiring that day; 0 for all */
    float minStrike; /* 0 for no bound */
    float maxStrike; /* 0 for no bound */
    char kind;       /* 'C' calls, 'P' puts, 0 both */
    char reserved[3];
} QvnSimOptionFilter;

/* Replaces the settings by those of the environment with `settings` applied on top
 * ("key = value" lines or ';'-separated), and restarts the simulated market from its start
 * time. Refused while a connection is open. Returns 1, or 0 on a bad setting or when
 * refused; nothing changes then. */
QVN_DRIVER_EXPORT int qvnsim_Configure(const char* settings);

/* Queues a network event for the next clientDispatch. event 1: connection lost with
 * `argument` as the reason (the simulation also ends every request); 2: rights data;
 * 4: server time (`argument`, or the simulated time when 0); 5: end-of-day processing,
 * flag `argument`, or a null pointer when `argument` is negative; 6: connect result
 * `argument`; 7: no limit; 8: `argument` security changes of kind 'S'. Returns 1 when
 * queued, 0 without an open connection or for another event number. */
QVN_DRIVER_EXPORT int qvnsim_RaiseEvent(int event, long argument);

/* Queues event 8 with one change of `kind` for `symbol`, stamped with the simulated time. */
QVN_DRIVER_EXPORT int qvnsim_SecurityChange(const char* symbol, char kind);

/* The simulated clock, seconds since 1970, and the number of steps taken. */
QVN_DRIVER_EXPORT long qvnsim_Now(void);
QVN_DRIVER_EXPORT long qvnsim_Steps(void);

/* The symbols of the configured universe, by index from 0; null past the end. */
QVN_DRIVER_EXPORT const char* qvnsim_Symbol(int index);

#ifdef __cplusplus
}
#endif

#endif /* QVNSIM_H */
