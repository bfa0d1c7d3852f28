#include "kwfileindexmodule.h"
