#include "foundation/file_sink.h"
