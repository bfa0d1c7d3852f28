#include "kwdatafile.h"
