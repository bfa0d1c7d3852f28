#include "kwdataoperationfile.h"
