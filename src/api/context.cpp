#include "api/context.h"
