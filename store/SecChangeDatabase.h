// The security change database's calls made by the connection. Until the database itself
// is built, the change stamp is 0 and a batch is dropped, as a build without it must do.
#pragma once

#include <qvnrt/driver.h>

long GetRTSecChangeTimestamp();
bool SetRTSecChangeInfo(long timestamp, int count, RTSecChange* changes);
