#include "foundation/files.h"
