/* The TV's log. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* logId: 0 is the main log. priority: 4 is info, 6 is error. A null tag is an empty one. Not
 * negative when the record was taken. */
int __dlog_print(int logId, int priority, const char* tag, const char* format, ...)
    __attribute__((format(printf, 4, 5)));

#ifdef __cplusplus
}
#endif
