#include "foundation/lumojson.h"
