#include "platform/foundation/Version.h"

const char *PFGetVersion(void) { return SEARCHSYSTEM_VERSION; }
