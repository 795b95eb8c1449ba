#include "engine/reports.h"
