// The calls of one library, each of which fails. Defined as platform/calls.h describes them, so
// that the headers of this SDK cannot say anything else.
#include <tv/apps.h>
#include <tv/base.h>
#include <tv/media.h>

#include "../../platform/calls.h"

#define CALL(result, name, parameters, failure, does, object) \
    result name parameters {                                  \
        return failure;                                       \
    }
CALLS(CALL)
