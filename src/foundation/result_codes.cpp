#include "foundation/result_codes.h"
