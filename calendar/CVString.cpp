#include <qvnrt/CVString.h>

CVString::~CVString() = default;
