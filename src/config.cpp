#include "config.h"
