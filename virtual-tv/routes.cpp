#include "routes.h"

#include <sstream>
#include <string>

namespace vtv {

namespace {

// Of a route's flags; a rejecting route has neither.
constexpr unsigned kUpThroughGateway = 1 | 2;

bool LeadsThroughGateway(const std::string& flags) {
    unsigned value = 0;
    std::istringstream(flags) >> std::hex >> value;
    return (value & kUpThroughGateway) == kUpThroughGateway;
}

bool IsZero(const std::string& hex) {
    return !hex.empty() && hex.find_first_not_of('0') == std::string::npos;
}

bool HasIpv4(std::istream& routes) {
    std::string line;
    std::getline(routes, line);  // the heading
    while (std::getline(routes, line)) {
        std::istringstream fields(line);
        std::string interface, destination, gateway, flags, references, uses, metric, mask;
        fields >> interface >> destination >> gateway >> flags >> references >> uses >> metric >>
            mask;
        if (IsZero(destination) && IsZero(mask) && LeadsThroughGateway(flags)) {
            return true;
        }
    }
    return false;
}

bool HasIpv6(std::istream& routes) {
    for (std::string line; std::getline(routes, line);) {
        std::istringstream fields(line);
        std::string destination, length, source, sourceLength, gateway, metric, references, uses,
            flags;
        fields >> destination >> length >> source >> sourceLength >> gateway >> metric >>
            references >> uses >> flags;
        if (IsZero(destination) && IsZero(length) && LeadsThroughGateway(flags)) {
            return true;
        }
    }
    return false;
}

}  // namespace

bool HasDefaultGateway(std::istream& ipv4Routes, std::istream& ipv6Routes) {
    return HasIpv4(ipv4Routes) || HasIpv6(ipv6Routes);
}

}  // namespace vtv
