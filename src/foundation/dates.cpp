#include "foundation/dates.h"
