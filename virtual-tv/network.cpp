// The network: as the TV was told, or as this machine's own.
#include "platform/network.h"

#include <fstream>

#include "routes.h"
#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

bool HostIsOnline() {
    std::ifstream ipv4("/proc/net/route");
    std::ifstream ipv6("/proc/net/ipv6_route");
    return HasDefaultGateway(ipv4, ipv6);
}

bool IsOnline(const Tv::Impl& tv) {
    const std::string network = tv.StateOr<std::string>(kNetworkState, "disconnected");
    return network == "connected" || (network == "host" && HostIsOnline());
}

}  // namespace

Network Tv::GetNetwork() const {
    return ParseNetwork(impl_->StateOr<std::string>(kNetworkState, "disconnected"));
}

void Tv::SetNetwork(Network network) {
    impl_->state.Write(kNetworkState, ToText(network));
}

bool Tv::Online() const {
    return IsOnline(*impl_);
}

}  // namespace vtv

extern "C" VTV_EXPORT int connection_profile_check_default_gateway(bool* connected) {
    constexpr char kFunction[] = "connection_profile_check_default_gateway";
    if (connected == nullptr) {
        return platform::FailureOf(kFunction);
    }
    return vtv::ServeRead(kFunction, nullptr, connected, [&](vtv::Tv::Impl& tv) {
        *connected = vtv::IsOnline(tv);
        return true;
    });
}
