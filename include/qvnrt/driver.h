/**
 * \file
 * The driver contract of QvnRT: the entry points that a driver plugin exports, the
 * callbacks that the library hands to it, and the records that cross between them.
 *
 * Plain C (C11 and C++20). A driver includes this header alone. On Linux a driver is a
 * shared object loaded with dlopen; its entry points are looked up by the names below and
 * must be exported with C linkage (QVN_DRIVER_EXPORT).
 *
 * Types on LP64: `long` and `unsigned long` stay as they are, 64-bit. A request handle is a
 * 32-bit value carried in an `unsigned long`; 0 means that no request was started. The
 * `user` value of every callback is the address of the asking object.
 */
#ifndef QVNRT_DRIVER_H
#define QVNRT_DRIVER_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#define QVN_STATIC_ASSERT(condition, message) static_assert(condition, message)
#else
#define QVN_STATIC_ASSERT(condition, message) _Static_assert(condition, message)
#endif

#define QVN_DRIVER_EXPORT __attribute__((visibility("default")))

/* ---- Constants ------------------------------------------------------------------------ */

/** Added to a time_t, gives a Date value (seconds since 1900 plus 3000000). */
#define EPOCH_1970 2211988800u

/** A missing number in intraday and daily records. */
#define QVN_MISSING_INT (-32080)
#define QVN_MISSING_FLOAT (-32080.0f)

/** Data type of a SecurityCallback's `data`. */
#define RTDATA_TEXT 2   /**< char*          */
#define RTDATA_DOUBLE 7 /**< double*        */
#define RTDATA_FLOAT 8  /**< float*         */
#define RTDATA_INT 9    /**< 32-bit integer */

/** Record type of a TickCallback's `data`. */
#define RTREC_NONE 0
#define RTREC_TICKREC 1             /**< TICKREC             */
#define RTREC_TICKBARREC 3          /**< TICKBARREC          */
#define RTREC_INTRADAY_PRICEREC 4   /**< RTINTRADAY_PRICEREC */

/** Events of the NetworkCallback, with the shape of their data. */
#define RTNET_CONNECTION_LOST 1 /**< reason carried in the pointer's value: (void*)(intptr_t)reason */
#define RTNET_RIGHTS 2          /**< pointer into driver memory, for the service-rights gate */
#define RTNET_SERVER_TIME 4     /**< long*: server time, seconds since 1970 */
#define RTNET_EOD_PROCESSING 5  /**< int* flag, or null (null counts as finished) */
#define RTNET_CONNECTED 6       /**< RTNetConnectResult* */
#define RTNET_NO_LIMIT 7        /**< no data */
#define RTNET_SECURITY_CHANGE 8 /**< RTNetSecChangeBatch*, or null */

/** Results of clientOpenServer. */
#define RTOPEN_REFUSED 0 /**< the driver refused to open */
#define RTOPEN_REMOTE 1  /**< connected to a remote service */
#define RTOPEN_LOCAL 2   /**< connected to a local service */
#define RTOPEN_PENDING 3 /**< the connection completes later, through event 6 */

/** Field identifiers of a security (1 to 59). A field string is a NUL-terminated run of
 * them, one byte each. Field 0 ends a batch. Only the meanings that the library or its
 * panels read are named; the others are agreed between driver and application. */
#define RTFIELD_END 0
#define RTFIELD_SYMBOL 1          /**< text */
#define RTFIELD_NAME 2            /**< text */
#define RTFIELD_ASSET_TYPE 3      /**< 32-bit, stored as a byte */
#define RTFIELD_LAST 4            /**< double, stored as a float */
#define RTFIELD_PREV_CLOSE 5      /**< float */
#define RTFIELD_BIT_FLAGS 7       /**< byte; bit 0x20: delayed */
#define RTFIELD_EXCHANGE 8        /**< byte */
#define RTFIELD_HIGH 10           /**< float */
#define RTFIELD_LOW 11            /**< float */
#define RTFIELD_BID 13            /**< float */
#define RTFIELD_ASK 14            /**< float */
#define RTFIELD_TOTAL_VOLUME 15   /**< 32-bit */
#define RTFIELD_VOLUME 16         /**< 32-bit */
#define RTFIELD_BID_SIZE 17       /**< unsigned 16-bit */
#define RTFIELD_ASK_SIZE 18       /**< unsigned 16-bit */
#define RTFIELD_BID_EXCHANGE 19   /**< byte */
#define RTFIELD_ASK_EXCHANGE 20   /**< byte */
#define RTFIELD_YEAR_HIGH 27      /**< float */
#define RTFIELD_YEAR_LOW 28       /**< float */
#define RTFIELD_EPS 31            /**< float */
#define RTFIELD_PE_RATIO 32       /**< float */
#define RTFIELD_OPTION_STRIKE 37  /**< float */
#define RTFIELD_OPTION_KIND 44    /**< byte */
#define RTFIELD_OPTION_EXPIRY 47  /**< 32-bit */
#define RTFIELD_QUOTE_TIME 57     /**< 32-bit */
#define RTFIELD_DISPLAY_STYLE 58  /**< byte */
#define RTFIELD_TICK 59           /**< signed 16-bit; its sign is the tick direction */

#define RTFLAG_DELAYED 0x20 /**< bit of field 7 */

/** Exchange field identifiers, read through clientGetExchangeLong/String in their
 * field-access shape. */
#define RTEXFIELD_INDEX 500
#define RTEXFIELD_SUFFIX 501
#define RTEXFIELD_SHORT_NAME 502
#define RTEXFIELD_LONG_NAME 503
#define RTEXFIELD_START_HOUR 504
#define RTEXFIELD_START_MIN 505
#define RTEXFIELD_CLOSE_HOUR 506
#define RTEXFIELD_CLOSE_MIN 507
#define RTEXFIELD_CURRENCY 508

/** Exchange properties read in the plain shape of clientGetExchangeLong/String. */
#define RTEXPROP_NAME 2   /**< text: the exchange's name */
#define RTEXPROP_ZONE 10  /**< long: the exchange's zone id */
#define RTEXPROP_DELAY 11 /**< long: minutes of delay in the low byte */

/* ---- Enumerations and opaque types ----------------------------------------------------- */

/** Opaque usage-class tag carried by every request; the library passes it along unread. */
typedef int32_t ServiceLimit;

#ifdef __cplusplus
/** Driver property numbers. Only 13 is read by the library; the others are agreed between
 * driver and application and pass through as numbers. */
enum RTProperties : int { RTPROP_NEWS_WHOLE_SYMBOL_LIST = 13 };
/** Asset types. 98 is a type not yet known; 0 and 3 are never mapped through the symbol
 * map. Other values are agreed between driver and application. */
enum RTSecurityType : int { RTSECTYPE_NOT_KNOWN = 98 };
#else
typedef enum RTProperties { RTPROP_NEWS_WHOLE_SYMBOL_LIST = 13 } RTProperties;
typedef enum RTSecurityType { RTSECTYPE_NOT_KNOWN = 98 } RTSecurityType;
#endif

/** The end-of-day request and the option-chain filter are agreements between application
 * and driver; the library passes their addresses only. */
typedef struct EODDATA EODDATA;
typedef struct RTSec_OptionFilter RTSec_OptionFilter;

/* ---- Wire records ----------------------------------------------------------------------- */

/** One day of history, 28 bytes. */
typedef struct RTPRICEREC {
    uint32_t date;   /**< two records with equal dates are the same day */
    uint32_t extra;  /**< passed through unread */
    float first;     /**< first price */
    float close;     /**< closing price */
    float second;    /**< second further price */
    float third;     /**< third further price */
    int32_t value;   /**< 0 means missing; stored as QVN_MISSING_INT */
} RTPRICEREC;

/** An intraday request, 32 bytes. Times are Date values. */
typedef struct TICKDATA {
    uint32_t start;       /**<  0: first second wanted */
    uint32_t end;         /**<  4: last second wanted; 0 means open-ended */
    int16_t weight;       /**<  8: negative minutes per bar, positive ticks per bar */
    int16_t live;         /**< 10 */
    uint16_t requestWord; /**< 12: passed on */
    uint8_t route;        /**< 14: bits 0x01 and 0x10 bypass the tick cache */
    uint8_t pad15;
    uint8_t filterMode;   /**< 16 */
    uint8_t pad17;
    int16_t days;         /**< 18: day mask */
    uint8_t timeFilter[4]; /**< 20 */
    uint8_t sessions[4];   /**< 24 */
    uint8_t extra;         /**< 28 */
    uint8_t reserved[3];   /**< 29 */
} TICKDATA;
typedef TICKDATA LOCTICKDATA;

#pragma pack(push, 1)
/** One tick, 13 bytes, packed. `time` is a time_t cut to 32 bits. */
typedef struct TICKREC {
    uint32_t time;
    int32_t volume;
    float price;
    uint8_t flag;
} TICKREC;
#pragma pack(pop)

/** One bar, 24 bytes. `time` is the bar's last second. */
typedef struct RTINTRADAY_PRICEREC {
    uint32_t time;
    int32_t volume;
    float open;
    float close;
    float high;
    float low;
} RTINTRADAY_PRICEREC;

#pragma pack(push, 1)
/** A bar of N ticks, 27 bytes, packed. */
typedef struct TICKBARREC {
    RTINTRADAY_PRICEREC bar;
    uint8_t continued; /**< 1 when this bar goes on from an earlier packet */
    uint8_t complete;  /**< 1 when the bar has its full number of ticks */
    uint8_t flag;      /**< the last tick's flag */
} TICKBARREC;

/** Session rules of a security, 38 bytes, packed. Times hold the hour in the high byte
 * and the minute in the low byte. */
typedef struct SESSION_INFO {
    uint16_t size;              /**<  0: 38 when the record holds rules, 0 for none yet */
    uint8_t bSession[4];        /**<  2: nonzero when the session exists */
    uint16_t tradeDays[4];      /**<  6: day mask in the low byte */
    int16_t sStartTime[4];      /**< 14 */
    int16_t sEndTime[4];        /**< 22: the session ends before this minute */
    int16_t sOpeningSession;    /**< 30 */
    uint8_t chTimeZone;         /**< 32: zone id */
    uint8_t spare;              /**< 33 */
    uint8_t bIsFirstSessionSameDay; /**< 34 */
    uint8_t bSingleSessionStandard; /**< 35 */
    int16_t dailyPeriod;        /**< 36 */
} SESSION_INFO;
#pragma pack(pop)

/** One holiday, 10 bytes. */
typedef struct HOLIDAY_ROW {
    uint16_t reserved;
    uint8_t month;    /**< 1 to 12 */
    uint8_t day;
    int16_t year;     /**< four digits */
    uint16_t session; /**< 0 to 3, or 4 for all sessions */
    uint16_t endTime; /**< new end, hour and minute; 0xFFFF: the session does not take place */
} HOLIDAY_ROW;

/** Holidays of a security: 4 + 10 x sNumHolidays bytes, rows sorted by date and session. */
typedef struct HOLIDAYS_INFO {
    int16_t sNumHolidays;
    uint8_t bAreAllHolidaysFull;
    uint8_t reserved;
    HOLIDAY_ROW rows[];
} HOLIDAYS_INFO;

/** One change to a security, 56 bytes. */
typedef struct RTSecChange {
    char symbol[16];   /**< NUL-terminated, at most 15 characters */
    uint32_t time;     /**< time of the change */
    char kind;         /**< 'S' is the kind that the library acts on */
    uint8_t rest[35];  /**< stored and returned untouched */
} RTSecChange;

/** Data of network event 6. */
typedef struct RTNetConnectResult {
    long value;
    long result;
} RTNetConnectResult;

/** Data of network event 8: a timestamp, a count and the records from offset 12. */
typedef struct RTNetSecChangeBatch {
    long timestamp;
    int count;
    RTSecChange changes[];
} RTNetSecChangeBatch;

QVN_STATIC_ASSERT(sizeof(RTPRICEREC) == 28, "RTPRICEREC is 28 bytes");
QVN_STATIC_ASSERT(offsetof(RTPRICEREC, first) == 8, "RTPRICEREC.first at 8");
QVN_STATIC_ASSERT(offsetof(RTPRICEREC, value) == 24, "RTPRICEREC.value at 24");
QVN_STATIC_ASSERT(sizeof(TICKDATA) == 32, "TICKDATA is 32 bytes");
QVN_STATIC_ASSERT(offsetof(TICKDATA, weight) == 8, "TICKDATA.weight at 8");
QVN_STATIC_ASSERT(offsetof(TICKDATA, live) == 10, "TICKDATA.live at 10");
QVN_STATIC_ASSERT(offsetof(TICKDATA, requestWord) == 12, "TICKDATA.requestWord at 12");
QVN_STATIC_ASSERT(offsetof(TICKDATA, route) == 14, "TICKDATA.route at 14");
QVN_STATIC_ASSERT(offsetof(TICKDATA, filterMode) == 16, "TICKDATA.filterMode at 16");
QVN_STATIC_ASSERT(offsetof(TICKDATA, days) == 18, "TICKDATA.days at 18");
QVN_STATIC_ASSERT(offsetof(TICKDATA, timeFilter) == 20, "TICKDATA.timeFilter at 20");
QVN_STATIC_ASSERT(offsetof(TICKDATA, sessions) == 24, "TICKDATA.sessions at 24");
QVN_STATIC_ASSERT(offsetof(TICKDATA, extra) == 28, "TICKDATA.extra at 28");
QVN_STATIC_ASSERT(sizeof(TICKREC) == 13, "TICKREC is 13 bytes");
QVN_STATIC_ASSERT(offsetof(TICKREC, price) == 8, "TICKREC.price at 8");
QVN_STATIC_ASSERT(offsetof(TICKREC, flag) == 12, "TICKREC.flag at 12");
QVN_STATIC_ASSERT(sizeof(RTINTRADAY_PRICEREC) == 24, "RTINTRADAY_PRICEREC is 24 bytes");
QVN_STATIC_ASSERT(offsetof(RTINTRADAY_PRICEREC, low) == 20, "RTINTRADAY_PRICEREC.low at 20");
QVN_STATIC_ASSERT(sizeof(TICKBARREC) == 27, "TICKBARREC is 27 bytes");
QVN_STATIC_ASSERT(offsetof(TICKBARREC, continued) == 24, "TICKBARREC.continued at 24");
QVN_STATIC_ASSERT(offsetof(TICKBARREC, flag) == 26, "TICKBARREC.flag at 26");
QVN_STATIC_ASSERT(sizeof(SESSION_INFO) == 38, "SESSION_INFO is 38 bytes");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, bSession) == 2, "SESSION_INFO.bSession at 2");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, tradeDays) == 6, "SESSION_INFO.tradeDays at 6");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, sStartTime) == 14, "SESSION_INFO.sStartTime at 14");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, sEndTime) == 22, "SESSION_INFO.sEndTime at 22");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, sOpeningSession) == 30, "sOpeningSession at 30");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, chTimeZone) == 32, "SESSION_INFO.chTimeZone at 32");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, spare) == 33, "SESSION_INFO.spare at 33");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, bIsFirstSessionSameDay) == 34, "same-day flag at 34");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, bSingleSessionStandard) == 35, "single flag at 35");
QVN_STATIC_ASSERT(offsetof(SESSION_INFO, dailyPeriod) == 36, "SESSION_INFO.dailyPeriod at 36");
QVN_STATIC_ASSERT(sizeof(HOLIDAY_ROW) == 10, "HOLIDAY_ROW is 10 bytes");
QVN_STATIC_ASSERT(offsetof(HOLIDAY_ROW, month) == 2, "HOLIDAY_ROW.month at 2");
QVN_STATIC_ASSERT(offsetof(HOLIDAY_ROW, year) == 4, "HOLIDAY_ROW.year at 4");
QVN_STATIC_ASSERT(offsetof(HOLIDAY_ROW, session) == 6, "HOLIDAY_ROW.session at 6");
QVN_STATIC_ASSERT(offsetof(HOLIDAY_ROW, endTime) == 8, "HOLIDAY_ROW.endTime at 8");
QVN_STATIC_ASSERT(offsetof(HOLIDAYS_INFO, rows) == 4, "HOLIDAYS_INFO rows at 4");
QVN_STATIC_ASSERT(sizeof(RTSecChange) == 56, "RTSecChange is 56 bytes");
QVN_STATIC_ASSERT(offsetof(RTSecChange, time) == 16, "RTSecChange.time at 16");
QVN_STATIC_ASSERT(offsetof(RTSecChange, kind) == 20, "RTSecChange.kind at 20");
QVN_STATIC_ASSERT(offsetof(RTNetSecChangeBatch, count) == 8, "event 8 count at 8");
QVN_STATIC_ASSERT(offsetof(RTNetSecChangeBatch, changes) == 12, "event 8 records at 12");

/* ---- Callbacks that the library hands to the driver ------------------------------------ */

typedef void (*NetworkCallback)(int event, void* data);
/** status: 0 or above for data (a row number in a service list), negative when the service
 * closes or rejects the security. field 0 ends a batch. */
typedef int (*SecurityCallback)(unsigned long request, int status, int field, int dataType,
                                void* data, unsigned long user);
typedef int (*EodCallback)(unsigned long request, int count, int flags, RTPRICEREC* records,
                           unsigned long user);
/** History packets hold records newest first and arrive newest first; live packets hold
 * them oldest first. A request ends with a call of count 0, data null and live 0. */
typedef int (*TickCallback)(unsigned long request, int count, int live, int type, void* data,
                            unsigned long user);
typedef int (*SessionCallback)(unsigned long request, int status, SESSION_INFO* rules,
                               void* holidays, unsigned long user);
typedef int (*HeadlineCallback)(unsigned long request, int count, unsigned long articleID,
                                char* headline, unsigned char sourceId, char* sourceName,
                                long dateTime, int history, unsigned long user);
typedef int (*StoryCallback)(unsigned long request, int status, unsigned long articleID,
                             char* story, unsigned long user);

/* ---- Entry points ----------------------------------------------------------------------
 * Every entry point is required, except DisplayPreferencesDialog and the Linux dispatch
 * pair at the end. */

/** connectBuffer is always 65536. Result: one of RTOPEN_*, or a code of the driver's. */
typedef long (*clientOpenServer_t)(const char* firstText, const char* secondText,
                                   NetworkCallback callback, unsigned long connectBuffer,
                                   unsigned long connectNumber, unsigned long changeStamp,
                                   int rights, int connectMode);
typedef void (*clientCloseServer_t)(void);
typedef long (*clientGetPropertyLong_t)(RTProperties property, long argument);
typedef int (*clientGetPropertyString_t)(int property, char* buffer, int length, char* extra);

/** clientGetExchangeLong and clientGetExchangeString are called in two shapes, one name
 * each. The field-access shape passes an exchange field (500 to 508) and an error word
 * pointer; the value of clientGetExchangeLong comes back in the bits of the pointer. The
 * plain shape passes an exchange property (RTEXPROP_*) with a default value (a long for
 * clientGetExchangeLong, a text for clientGetExchangeString) where the field-access shape
 * has its error pointer; in that shape only the low 32 bits of `exchange` are set. A driver
 * tells the shapes apart by the field number. */
typedef void* (*clientGetExchangeFieldAccess_t)(long exchange, int field, long* error);
typedef unsigned long (*clientGetExchangeLong_t)(int exchange, int property, long defaultValue);
typedef unsigned short (*clientGetExchangeStringFieldAccess_t)(long exchange, int field,
                                                               char* buffer,
                                                               unsigned short length,
                                                               long* error);
typedef int (*clientGetExchangeString_t)(int exchange, int property, char* buffer, int length,
                                         char* defaultText);

/** symbols: `count` NUL-terminated symbols back to back. A symbol mapped through the symbol
 * map arrives as the two names on two lines. Each symbol is answered under its own handle:
 * the returned handle plus the symbol's index. */
typedef unsigned long (*clientReqSecurities_t)(const char* symbols, int assetType,
                                               const char* fields, SecurityCallback callback,
                                               unsigned long user, int streaming, int count,
                                               ServiceLimit limit);
typedef unsigned long (*clientReqRankedList_t)(int list, int selector1, int selector2,
                                               SecurityCallback callback, unsigned long user,
                                               ServiceLimit limit);
typedef unsigned long (*clientReqSecurityList_t)(char* symbol, int assetType,
                                                 unsigned char* fields,
                                                 RTSec_OptionFilter* filter,
                                                 SecurityCallback callback, unsigned long user,
                                                 int always1, ServiceLimit limit);
typedef void (*clientCloseEvent_t)(unsigned long request);
typedef int (*clientModifySecurity_t)(unsigned long request, char* fields);
typedef int (*clientChangeEvent_t)(void* event, unsigned long value);
typedef void (*DisplayPreferencesDialog_t)(void* parentWindow);
typedef unsigned long (*clientReqEodRecords_t)(const char* symbol, int assetType,
                                               EODDATA* request, EodCallback callback,
                                               unsigned long user, int streaming,
                                               ServiceLimit limit);
typedef unsigned long (*clientReqTickBars_t)(const char* symbol, int assetType,
                                             TICKDATA* request, TickCallback callback,
                                             unsigned long user, ServiceLimit limit);
typedef unsigned long (*clientReqNewsStory_t)(unsigned long storyKey, unsigned char source,
                                              StoryCallback callback, unsigned long user,
                                              ServiceLimit limit);
typedef unsigned long (*clientReqNewsHeadlines_t)(char* searchText, int byKeyword,
                                                  int caseSensitive, int wholeWords,
                                                  int maxHeadlines, unsigned char* sources,
                                                  int sourceCount, long startTime,
                                                  long endTime, HeadlineCallback callback,
                                                  unsigned long user, int live,
                                                  ServiceLimit limit);
typedef int (*clientGetNewsSource_t)(int source, int what, char* buffer, int length);
typedef unsigned long (*clientReqSessionInfo_t)(char* symbol, int assetType,
                                                SessionCallback callback,
                                                unsigned long user);

/** Linux dispatch extension, optional. When a driver exports both, the library watches the
 * descriptor on its main loop from clientOpenServer's load to clientCloseServer's unload,
 * and calls clientDispatch when it is readable; the driver then makes every callback from
 * inside clientDispatch, so that callbacks arrive on the loop's thread. */
typedef int (*clientGetPollFd_t)(void);
typedef void (*clientDispatch_t)(void);

/** Prototypes for a driver's own definitions. clientGetExchangeLong and
 * clientGetExchangeString are declared in their field-access shape (see above). */
QVN_DRIVER_EXPORT long clientOpenServer(const char* firstText, const char* secondText,
                                        NetworkCallback callback, unsigned long connectBuffer,
                                        unsigned long connectNumber, unsigned long changeStamp,
                                        int rights, int connectMode);
QVN_DRIVER_EXPORT void clientCloseServer(void);
QVN_DRIVER_EXPORT long clientGetPropertyLong(RTProperties property, long argument);
QVN_DRIVER_EXPORT int clientGetPropertyString(int property, char* buffer, int length,
                                              char* extra);
QVN_DRIVER_EXPORT void* clientGetExchangeLong(long exchange, int field, long* error);
QVN_DRIVER_EXPORT unsigned short clientGetExchangeString(long exchange, int field,
                                                         char* buffer, unsigned short length,
                                                         long* error);
QVN_DRIVER_EXPORT unsigned long clientReqSecurities(const char* symbols, int assetType,
                                                    const char* fields,
                                                    SecurityCallback callback,
                                                    unsigned long user, int streaming,
                                                    int count, ServiceLimit limit);
QVN_DRIVER_EXPORT unsigned long clientReqRankedList(int list, int selector1, int selector2,
                                                    SecurityCallback callback,
                                                    unsigned long user, ServiceLimit limit);
QVN_DRIVER_EXPORT unsigned long clientReqSecurityList(char* symbol, int assetType,
                                                      unsigned char* fields,
                                                      RTSec_OptionFilter* filter,
                                                      SecurityCallback callback,
                                                      unsigned long user, int always1,
                                                      ServiceLimit limit);
QVN_DRIVER_EXPORT void clientCloseEvent(unsigned long request);
QVN_DRIVER_EXPORT int clientModifySecurity(unsigned long request, char* fields);
QVN_DRIVER_EXPORT int clientChangeEvent(void* event, unsigned long value);
QVN_DRIVER_EXPORT void DisplayPreferencesDialog(void* parentWindow);
QVN_DRIVER_EXPORT unsigned long clientReqEodRecords(const char* symbol, int assetType,
                                                    EODDATA* request, EodCallback callback,
                                                    unsigned long user, int streaming,
                                                    ServiceLimit limit);
QVN_DRIVER_EXPORT unsigned long clientReqTickBars(const char* symbol, int assetType,
                                                  TICKDATA* request, TickCallback callback,
                                                  unsigned long user, ServiceLimit limit);
QVN_DRIVER_EXPORT unsigned long clientReqNewsStory(unsigned long storyKey, unsigned char source,
                                                   StoryCallback callback, unsigned long user,
                                                   ServiceLimit limit);
QVN_DRIVER_EXPORT unsigned long clientReqNewsHeadlines(char* searchText, int byKeyword,
                                                       int caseSensitive, int wholeWords,
                                                       int maxHeadlines, unsigned char* sources,
                                                       int sourceCount, long startTime,
                                                       long endTime, HeadlineCallback callback,
                                                       unsigned long user, int live,
                                                       ServiceLimit limit);
QVN_DRIVER_EXPORT int clientGetNewsSource(int source, int what, char* buffer, int length);
QVN_DRIVER_EXPORT unsigned long clientReqSessionInfo(char* symbol, int assetType,
                                                     SessionCallback callback,
                                                     unsigned long user);
QVN_DRIVER_EXPORT int clientGetPollFd(void);
QVN_DRIVER_EXPORT void clientDispatch(void);

#ifdef __cplusplus
}
#endif

#endif /* QVNRT_DRIVER_H */
