#include "foundation/json_printer.h"
