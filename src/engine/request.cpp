#include "engine/request.h"
