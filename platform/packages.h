/* Metadata of installed packages. All results are 0 on success. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

typedef void* pkgmgrinfo_appinfo_h;
/* Fails for an application that is not installed. */
int pkgmgrinfo_appinfo_get_appinfo(const char* appId, pkgmgrinfo_appinfo_h* handle);
/* The value belongs to the handle; NULL when the item has no value. Fails for an item that the
 * application does not have. */
int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h handle, const char* key,
                                          char** value);
int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h handle);

#ifdef __cplusplus
}
#endif
