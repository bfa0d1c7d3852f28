#include "trailContainer.h"
