// The maker's account and the viewer's consents.
#include "platform/account.h"

#include <cstring>

#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

std::string ConsentKey(const std::string& item) {
    return kConsentState + item;
}

}  // namespace

bool Tv::SignedIn() const {
    return impl_->StateOr<bool>(kSignedInState, false);
}

void Tv::SetSignedIn(bool signedIn) {
    impl_->state.Write(kSignedInState, signedIn);
}

bool Tv::Consent(const std::string& item) const {
    return impl_->StateOr<bool>(ConsentKey(item), false);
}

void Tv::SetConsent(const std::string& item, bool agreed) {
    if (!IsConsent(item)) {
        throw Error(ErrorKind::kUsage,
                    "\"" + item +
                        "\" is no consent: write \"tnc\" (terms and conditions) or "
                        "\"pp\" (privacy policy).");
    }
    impl_->state.Write(ConsentKey(item), agreed);
}

}  // namespace vtv

extern "C" {

VTV_EXPORT int sso_get_login_state(int* state) {
    constexpr char kFunction[] = "sso_get_login_state";
    if (state == nullptr) {
        return platform::FailureOf(kFunction);
    }
    return vtv::ServeRead(kFunction, nullptr, state, [&](vtv::Tv::Impl& tv) {
        *state = tv.StateOr<bool>(vtv::kSignedInState, false) ? 1 : 0;
        return true;
    });
}

VTV_EXPORT int sso_get_account_ui_application_package_id(char** id) {
    return vtv::Serve("sso_get_account_ui_application_package_id", [&](vtv::Tv::Impl& tv) {
        if (id == nullptr || tv.model.accountUi.empty()) {
            return false;
        }
        *id = strdup(tv.model.accountUi.c_str());
        return *id != nullptr;
    });
}

VTV_EXPORT int GetDisclaimerItemAgreement(const char* item) {
    bool agreed = false;
    const int result =
        vtv::ServeRead("GetDisclaimerItemAgreement", item, &agreed, [&](vtv::Tv::Impl& tv) {
            agreed = item != nullptr && tv.StateOr<bool>(vtv::ConsentKey(item), false);
            return item != nullptr && vtv::IsConsent(item);
        });
    return result == 0 ? (agreed ? 1 : 0) : result;
}

}  // extern "C"
