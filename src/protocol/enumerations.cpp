#include "protocol/enumerations.h"
