#include "qal/qal.h"

// The host framework that this entry would register the module with does not exist on
// this platform, and no numerical routine depends on it: the entry stays for hosts that
// call it, and does nothing.
void InitQalLibExtDLL() {}
