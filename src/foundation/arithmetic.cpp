#include "foundation/arithmetic.h"
