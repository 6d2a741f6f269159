include("${CMAKE_CURRENT_LIST_DIR}/Rooms.cmake")

# Name of a room's target: tav_base, tav_platform_memory, ...
function(tav_room_target room out)
    string(REPLACE "/" "_" name "tav_${room}")
    set(${out} "${name}" PARENT_SCOPE)
endfunction()

# What every target of ours is compiled with.
function(tav_compile_as_ours target)
    target_compile_features(${target} PUBLIC cxx_std_20)
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}")
    # Single-precision results are part of the behaviour: no fused multiply-add.
    target_compile_options(${target} PRIVATE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Woverloaded-virtual -Werror
        -ffp-contract=off -ffunction-sections -fdata-sections)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # GCC 12 sees overlapping copies in std::string's own operator+ where there are none.
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    foreach(sanitizer IN LISTS TAV_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${sanitizer} -fno-omit-frame-pointer)
        if(NOT sanitizer STREQUAL "fuzzer-no-link")
            target_link_options(${target} PUBLIC -fsanitize=${sanitizer})
        endif()
        if(sanitizer STREQUAL "undefined")
            target_compile_options(${target} PRIVATE -fno-sanitize-recover=undefined)
        endif()
    endforeach()
endfunction()

# tav_room(<folder> [LIBRARIES ...] [WITHOUT file ...]): the static library of a room, linked to the
# rooms below it, and its test program.
#
# Sources are every .cpp of the folder but the tests (X_test.cpp) and the files named WITHOUT.
function(tav_room room)
    cmake_parse_arguments(ARG "" "" "LIBRARIES;WITHOUT" ${ARGN})
    tav_room_target("${room}" target)
    set(folder "${PROJECT_SOURCE_DIR}/${room}")
    file(GLOB sources CONFIGURE_DEPENDS "${folder}/*.cpp")
    file(GLOB tests CONFIGURE_DEPENDS "${folder}/*_test.cpp")
    list(REMOVE_ITEM sources ${tests})
    if(TAV_ONLY_THREADED_TESTS)
        foreach(file IN LISTS tests)
            file(STRINGS "${file}" threaded REGEX "TEST.*(Thread|Concurren)" LIMIT_COUNT 1)
            if(NOT threaded)
                list(REMOVE_ITEM tests "${file}")
            endif()
        endforeach()
    endif()
    foreach(file IN LISTS ARG_WITHOUT)
        list(REMOVE_ITEM sources "${folder}/${file}")
    endforeach()

    add_library(${target} STATIC ${sources})
    tav_compile_as_ours(${target})
    add_dependencies(${target} check_includes)
    foreach(below IN LISTS TAV_BELOW_${room})
        tav_room_target("${below}" below_target)
        target_link_libraries(${target} PUBLIC ${below_target})
    endforeach()
    target_link_libraries(${target} PUBLIC ${ARG_LIBRARIES})

    if(TAV_BUILD_TESTS AND tests)
        add_executable(${target}_tests ${tests})
        tav_compile_as_ours(${target}_tests)
        target_link_libraries(${target}_tests PRIVATE ${target} tav_testing GTest::gtest_main)
        if(NOT room STREQUAL "base")
            target_link_libraries(${target}_tests PRIVATE tav_platform_memory)
        endif()
        gtest_discover_tests(${target}_tests DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
    endif()
endfunction()
