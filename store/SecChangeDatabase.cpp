#include "store/SecChangeDatabase.h"

long GetRTSecChangeTimestamp() { return 0; }

bool SetRTSecChangeInfo(long, int, RTSecChange*) { return true; }
