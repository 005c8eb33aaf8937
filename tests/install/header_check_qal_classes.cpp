// Compiles the public class header alone, first in its translation unit.
#include "qal/qal_classes.h"
