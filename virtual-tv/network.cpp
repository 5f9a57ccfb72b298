// The network: as the TV was told, or as this machine's own.
#include "platform/network.h"

#include <fstream>
#include <sstream>

#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

constexpr char kNetwork[] = "network";

// A route to everywhere that is up and goes through a gateway.
bool HasDefaultRoute() {
    constexpr unsigned kUp = 1;
    constexpr unsigned kGateway = 2;
    std::ifstream routes("/proc/net/route");
    std::string line;
    std::getline(routes, line);  // the heading
    while (std::getline(routes, line)) {
        std::istringstream fields(line);
        std::string interface, destination, gateway;
        unsigned flags = 0;
        fields >> interface >> destination >> gateway >> std::hex >> flags;
        if (fields && destination == "00000000" && (flags & kUp) != 0 && (flags & kGateway) != 0) {
            return true;
        }
    }
    return false;
}

bool IsOnline(const Tv::Impl& tv) {
    const std::string network = tv.StateOr<std::string>(kNetwork, "disconnected");
    return network == "connected" || (network == "host" && HasDefaultRoute());
}

}  // namespace

Network Tv::GetNetwork() const {
    return ParseNetwork(impl_->StateOr<std::string>(kNetwork, "disconnected"));
}

void Tv::SetNetwork(Network network) {
    impl_->state.Write(kNetwork, ToText(network));
}

bool Tv::Online() const {
    return IsOnline(*impl_);
}

}  // namespace vtv

extern "C" VTV_EXPORT int connection_profile_check_default_gateway(bool* connected) {
    constexpr char kFunction[] = "connection_profile_check_default_gateway";
    const int result = vtv::Serve(kFunction, [&](vtv::Tv::Impl& tv) {
        if (connected == nullptr) {
            return vtv::kFailed;
        }
        *connected = vtv::IsOnline(tv);
        return 0;
    });
    return vtv::NotedRead(kFunction, nullptr, result, connected);
}
