/* The maker's account and the viewer's consents. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* 0 on success; *state 1 is signed in. */
int sso_get_login_state(int* state);
/* 0 on success; *id is a heap string that the caller frees. */
int sso_get_account_ui_application_package_id(char** id);
/* Greater than 0 when the item ("tnc", "pp") is agreed; fails for one that is not known. */
int GetDisclaimerItemAgreement(const char* item);

#ifdef __cplusplus
}
#endif
