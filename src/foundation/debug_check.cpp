#include "foundation/debug_check.h"
