#include "engine/bill_files.h"
