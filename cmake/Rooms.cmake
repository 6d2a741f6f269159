# The slope of rooms: every folder of the library, with the rooms right below it.
#
# Both the links between the targets (Room.cmake) and the check that includes run downhill
# (CheckIncludes.cmake) are read from this table, so they cannot disagree. A room may include itself
# and whatever lies below the rooms named here.
set(TAV_ROOMS
    base
    platform
    platform/linux
    platform/memory
    foundation
    log
    fileinfo
    fileinfo/local
    process
    relaunch
    relaunch/sample
    testing
    bench
    fuzz)

set(TAV_BELOW_base)
set(TAV_BELOW_platform base)
set(TAV_BELOW_platform/linux platform)
set(TAV_BELOW_platform/memory platform)
set(TAV_BELOW_foundation platform)
set(TAV_BELOW_log foundation)
set(TAV_BELOW_fileinfo log)
set(TAV_BELOW_fileinfo/local fileinfo)
set(TAV_BELOW_process platform)
set(TAV_BELOW_relaunch process fileinfo/local)
set(TAV_BELOW_relaunch/sample)
set(TAV_BELOW_testing base)
set(TAV_BELOW_bench relaunch platform/memory testing)
set(TAV_BELOW_fuzz relaunch platform/linux platform/memory)

# What tests may include besides what the code of their room may: the in-memory seams and the
# helpers of the tests.
set(TAV_BELOW_TESTS platform/memory testing)

