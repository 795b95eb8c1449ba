#include "foundation/lumostring.h"
