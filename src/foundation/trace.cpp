#include "foundation/trace.h"
