# Writes the build id of a library into a header:
# cmake -DOBJCOPY=... -DLIBRARY=... -DHEADER=... -P BuildId.cmake
set(note ${HEADER}.note)
execute_process(COMMAND ${OBJCOPY} --dump-section .note.gnu.build-id=${note} ${LIBRARY} ${HEADER}.copy
    RESULT_VARIABLE failed OUTPUT_QUIET ERROR_QUIET)
set(id "")
if(NOT failed)
    # Three sizes and "GNU" with its zero come before the id.
    file(READ ${note} id OFFSET 16 HEX)
endif()
file(REMOVE ${note} ${HEADER}.copy)
file(CONFIGURE OUTPUT ${HEADER} CONTENT
    "// Generated: the provider that this program was built with; empty when it has no build id.\n#define PROVIDER_BUILD_ID \"${id}\"\n")
