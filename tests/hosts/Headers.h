/* All public headers, after what other headers may have said of names that they could use. */
#include <searchsystem/SearchSystem.h>

#include <searchsystem/Content.h>
#include <searchsystem/CoreFoundation.h>
#include <searchsystem/FilePackage.h>
#include <searchsystem/LocalTime.h>
#include <searchsystem/MainLoop.h>
#include <searchsystem/MetadataIndex.h>
#include <searchsystem/ShootingDate.h>
#include <searchsystem/Version.h>

static inline int isEqual(CFStringRef a, CFStringRef b) { return a == b; }
