// RTSecList: an ordered array of security objects filled through one driver callback, from
// the application's own symbols, a symbol list on the service, an option chain or a ranked
// list. The list owns its objects.
//
// Threads: every call, and every notification, runs on the thread of the library's timer
// (the driver calls back there); the array must not be changed from another thread.
#pragma once

#include <qvnrt/RTSec_Base.h>
#include <qvnrt/compat/CArray.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/driver.h>
#include <qvnrt/export.h>

class QVNRT_API RTSecList {
public:
    RTSecList();
    // Copies the array's pointers with every other field: the two lists then claim the same
    // objects, and the application must let only one of them destroy them. Kept: applications
    // rely on the shallow copy to hand a list over.
    RTSecList(const RTSecList& other);
    RTSecList& operator=(const RTSecList& other) = default;
    // Runs CloseEvent, then Clear. Not virtual: the class has exactly the six virtual
    // operations below, so an application's subclass overrides the same slots; destroy a
    // list through its own class.
    ~RTSecList();

    // ---- Virtual operations, in slot order ----

    // A service-built list announces `count` rows; the base reserves room for them.
    virtual void OnSecListStart(int count);
    // A service-built list is complete; `data` is the driver's data of the last callback.
    virtual void OnSecListStop(void* data);
    // Makes the object for a new row or symbol; the base allocates an RTSecurity. The list
    // owns what it returns (deleted through RTSec_Base); null adds nothing.
    virtual RTSec_Base* OnSecCreateNew();
    // A batch of fields for the object at `index` is complete. The object's own
    // OnSecChanged is not called by the list.
    virtual void OnSecChanged(int index);
    // The service closed the object at `index`; its handle is then cleared.
    virtual void OnSecClosed(int index);
    // One update from the driver; see ReqSecCallbackHelper. 1 when handled, 0 when the
    // update closed an object.
    virtual int ReqSecCallback(unsigned long request, int status, int field, int dataType,
                               void* data);

    // ---- Requests ----

    // Appends one object per symbol of the list text (NUL-terminated symbols ended by an
    // empty one; null is taken as empty) and requests them. A non-null `fields` becomes
    // m_strFields. Result as SecRequest(first, last).
    int SecRequest(const char* symbols, RTSecurityType type, unsigned char* fields, int stream);
    // Requests the objects from `first` to `last` (clamped into the array) in one driver
    // call, opening each in the local cache with m_strFields (offline, the cached fields are
    // replayed into it at once). Objects with an empty symbol or bit 1 of m_flags set are
    // skipped. Connected, the k-th object taken gets the handle m_request + k; offline, or
    // when the driver refuses, every object gets 0. Result 0 for an empty array, else 1.
    int SecRequest(int first, int last);
    // A symbol list kept by the service (a list name, an exchange, an index's members). The
    // former request is cancelled; the driver is asked even while disconnected. Rows are
    // appended as they arrive. Result: the new m_request.
    unsigned long SecList(const char* symbol, RTSecurityType type, ServiceLimit limit);
    // The option chain of `symbol` (sent in upper case). The former request is not
    // cancelled; offline no request is made and the result is 0. `filter` is passed to the
    // driver by address, unread. Result: the new m_request.
    unsigned long SecOptionChain(const char* symbol, RTSecurityType type,
                                 RTSec_OptionFilter& filter, ServiceLimit limit);
    // A ranked list; its selectors are passed to the driver as they are. The list starts
    // over with each round of the service, appending that round's rows (an application that
    // shows one round at a time clears the list in OnSecListStart). Offline the result is 0.
    unsigned long SecRankedList(int list, int selector1, int selector2, ServiceLimit limit);
    // Clear, then request `symbols` streaming with the current fields.
    void SecSymbolList(const char* symbols);
    // The array's symbols as list text: each followed by a NUL, with one NUL more.
    CString SecSymbolList();
    void SetDefaultFields(CString fields);

    // ---- The array ----

    // Throw std::out_of_range ("invalid vector<T> subscript") outside the array.
    RTSec_Base* At(int index);
    void RemoveAt(int index);  // destroys the object and closes the gap
    // Destroys every object (one-shot objects first lose their handle, so they cancel
    // nothing) and empties the array.
    void Clear();
    // Cancels the ranked list's request, and each object's handle (one-shot objects just
    // forget theirs).
    void CloseEvent();
    // Stable sort: an object goes before another when its compareTo with that other and
    // `key` is negative. Objects above RTSec_Option compare equal unless the application
    // overrides compareTo, so such a list keeps its order.
    void Sort(int key);

    // The driver's SecurityCallback for every request of a list: 1 when `user` is a live
    // list (whatever its ReqSecCallback answered), else 0.
    static int ReqSecCallbackHelper(unsigned long request, int status, int field, int dataType,
                                    void* data, unsigned long user);

    // ---- State ----

    qvnrt::compat::VectorArray<RTSec_Base*> m_secArray;  // owned objects
    unsigned long m_request;  // handle of the list's driver request
    int m_stream;             // 1: objects keep their handles (streaming)
    CString m_strFields;      // field string of the list's requests
    RTSecurityType m_assetType;
    ServiceLimit m_limit;  // the tag of the list's requests; nothing here assigns another
    // Bit 0: a service-built list is under way; bit 1: its first callback is awaited;
    // bit 2: ranked list.
    unsigned int m_listFlags : 3;
    int m_index;    // where the callback starts looking (see ReqSecCallback)
    int m_sortKey;  // the key of the last Sort
};
