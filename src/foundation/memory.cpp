#include "foundation/memory.h"
