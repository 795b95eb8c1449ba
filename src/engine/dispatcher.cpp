#include "engine/dispatcher.h"
