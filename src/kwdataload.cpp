#include "kwdataload.h"
