#include "kwlayerfeaturemodule.h"
