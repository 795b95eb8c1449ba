#include "updater/lumoupdater.h"
