#include "support/folder.h"
