#pragma once

#include <cstdint>

#define FDB_API __attribute__((visibility("default")))

typedef int32_t FdbSessionId_t;
typedef int32_t FdbSocketId_t;
typedef int32_t FdbMsgCode_t;
typedef int32_t FdbEventCode_t;
typedef uint32_t FdbObjectId_t;
typedef uint32_t FdbMsgSn_t;

/// The value of an identifier that names nothing; compare with it.
#define FDB_INVALID_ID (~0)

/// Delivery classes. A unix-domain stream is always reliable, so both mean the same on this host.
enum EFdbQOS { FDB_QOS_RELIABLE, FDB_QOS_BEST_EFFORTS };

/// Error codes that reach onStatus().
enum EFdbStatus {
    FDB_ST_OK = 0,
    /// The reply of an invoke() did not come in time.
    FDB_ST_TIMEOUT = -1,
    /// The service went away before it replied.
    FDB_ST_OFFLINE = -2,
    /// The other side has handled a request to which it gave no answer of its own.
    FDB_ST_AUTO_REPLY_OK = -11
};
