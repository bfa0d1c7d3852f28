#include "kwfileload.h"
