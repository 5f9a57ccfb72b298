// The header alone comes first: it must need nothing before it.
#include "abi/si_provider.h"

#include "contract.h"
