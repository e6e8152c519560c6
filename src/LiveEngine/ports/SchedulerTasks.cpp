// The ports are interfaces; this unit gives the library a body and checks
// that each port header stands on its own.
#include "LiveEngine/ports/Scheduler.h"
