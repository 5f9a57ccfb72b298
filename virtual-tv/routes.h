// Whether the kernel's routing tables lead everywhere.
#pragma once

#include <istream>

namespace vtv {

// Whether a route to everywhere is up and goes through a gateway. The tables are read as
// /proc/net/route and /proc/net/ipv6_route print them; one that cannot be read has no routes.
bool HasDefaultGateway(std::istream& ipv4Routes, std::istream& ipv6Routes);

}  // namespace vtv
