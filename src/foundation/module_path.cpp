#include "foundation/module_path.h"
