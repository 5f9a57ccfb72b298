/* Network state. */
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/* 0 on success; *connected tells whether the default profile has a gateway. */
int connection_profile_check_default_gateway(bool* connected);

#ifdef __cplusplus
}
#endif
