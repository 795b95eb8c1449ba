#include "engine/offline_replay.h"
