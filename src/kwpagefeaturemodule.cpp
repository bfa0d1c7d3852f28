#include "kwpagefeaturemodule.h"
