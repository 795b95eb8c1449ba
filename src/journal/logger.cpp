#include "journal/logger.h"
