#include "foundation/md5.h"
