#include "qal/version.h"

// Compiled into the library, so that a program can tell which build it runs against.
const char* qal_version() { return QAL_VERSION_STRING; }
