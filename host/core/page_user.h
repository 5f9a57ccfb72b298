// Who uses the page in a scenario: presses its items, and looks at it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/page/provider.h"
#include "host/page/viewer.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

class PageUser {
  public:
    virtual ~PageUser() = default;

    // Throws MeaninglessPress, and vtv::Error for what must not be seen.
    virtual PressResult Press(const host::Press& press) = 0;
    // Hands the provider a value for an item, whether a viewer could or not.
    virtual void Hand(const Item& item, int value) = 0;
    // The page as it is to be seen now. Throws vtv::Error for what must not be.
    virtual Page Look() = 0;
    // What was done for the user, who could not, in words; told once.
    virtual std::vector<std::string> TakeBeside() { return {}; }
};

// The TV is on and runs on the provider; both outlive the user.
using HirePageUser =
    std::function<std::unique_ptr<PageUser>(vtv::Tv& tv, const Provider& provider)>;

}  // namespace host
