// QvnRT: everything an application uses, in one include.
#pragma once

#include <qvnrt/compat.h>
#include <qvnrt/driver.h>
#include <qvnrt/host.h>
#include <qvnrt/LibraryStartup.h>
