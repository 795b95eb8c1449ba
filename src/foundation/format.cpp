#include "foundation/format.h"
