#include "kwfilefeaturemodule.h"
