// A store file that reaches up into the securities: the layer check must refuse it.
#include "platform/Clock.h"
#include "securities/Planted.h"
