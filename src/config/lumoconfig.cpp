#include "config/lumoconfig.h"
