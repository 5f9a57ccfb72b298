// Keeping a page up to date without asking for all of it again.
#pragma once

#include <vector>

#include "host/page/page.h"
#include "host/page/provider.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

// Whether PageInputs() was made from this very build of the provider.
bool IsListed(const Provider& provider);

// The items that may look different after the changes, in the page's order: those which the list of
// dependencies names, and every item where the list does not help: for another provider than the
// one that it was made from, for the menu language (all texts), and for changes of the TV's state
// that it does not know.
std::vector<const Item*> ItemsToAsk(const Provider& provider,
                                    const std::vector<vtv::Change>& changes);

// The page after the changes, which Dispatch() has told since `old` was looked at: only the items
// that they can change are asked again. What nobody tells is not noticed: a fault that was set, the
// route of this machine for a TV whose network is the host's. A host that cannot watch everything
// that PageInputs() names looks at the whole page when it comes to the front again, as after an
// application has ended.
Page Refresh(const Provider& provider, const Page& old, const std::vector<vtv::Change>& changes);

}  // namespace host
