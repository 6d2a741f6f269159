# cmake -DTAV_FILE=... -DTAV_LIMIT=... -P CheckFileSize.cmake: fails when the file has more bytes than that.
file(SIZE "${TAV_FILE}" size)
if(size GREATER TAV_LIMIT)
    message(FATAL_ERROR "${TAV_FILE} has ${size} bytes, more than ${TAV_LIMIT}")
endif()
