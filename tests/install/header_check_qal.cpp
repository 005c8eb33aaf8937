// Compiles the public header alone, first in its translation unit.
#include "qal/qal.h"
