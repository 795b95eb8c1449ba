#include "config/lumostate.h"
