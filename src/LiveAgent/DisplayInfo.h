#pragma once
// The output side owns the display record; the agent lists it.
#include "LiveEngine/DisplayInfo.h"
