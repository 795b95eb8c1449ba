#include "foundation/json_parser.h"
