# The packages; docs/dependencies.md has the reason for each.
find_package(ICU 67 REQUIRED COMPONENTS uc i18n data)
find_package(EXPAT REQUIRED)
find_package(fmt REQUIRED)

# ICU and expat as our targets link them: shared, but for programs with the property
# TAV_LINKS_STATICALLY, which start in a third of the time. Where a static archive is missing the shared
# library serves.
set(statically "$<BOOL:$<TARGET_PROPERTY:TAV_LINKS_STATICALLY>>")
function(tav_archive name fallback out)
    find_library(TAV_ARCHIVE_${name} NAMES lib${name}.a)
    mark_as_advanced(TAV_ARCHIVE_${name})
    if(TAV_ARCHIVE_${name})
        set(${out} "${TAV_ARCHIVE_${name}}" PARENT_SCOPE)
    else()
        set(${out} "${fallback}" PARENT_SCOPE)
    endif()
endfunction()
tav_archive(icui18n ICU::i18n icui18n)
tav_archive(icuuc ICU::uc icuuc)
tav_archive(icudata ICU::data icudata)
tav_archive(expat EXPAT::EXPAT expat)
add_library(tav_icu INTERFACE)
target_link_libraries(tav_icu INTERFACE
    "$<IF:${statically},${icui18n},ICU::i18n>"
    "$<IF:${statically},${icuuc},ICU::uc>"
    "$<IF:${statically},${icudata},ICU::data>")
add_library(tav_expat INTERFACE)
target_link_libraries(tav_expat INTERFACE "$<IF:${statically},${expat},EXPAT::EXPAT>")

set(TAV_SDBUS_HEADERS FALSE)
if(TAV_WITH_SDBUS)
    include(CheckIncludeFileCXX)
    check_include_file_cxx(systemd/sd-bus.h TAV_HAVE_SDBUS_HEADER)
    if(TAV_HAVE_SDBUS_HEADER)
        set(TAV_SDBUS_HEADERS TRUE)
    else()
        message(STATUS "systemd/sd-bus.h not found: quit requests will answer that there is no bus")
    endif()
endif()

# Linked into nothing that does not import HTML: programs name the library, the linker takes it as needed.
add_library(tav_gumbo INTERFACE)
set(TAV_GUMBO FALSE)
if(TAV_WITH_GUMBO)
    find_path(TAV_GUMBO_HEADERS gumbo.h)
    find_library(TAV_GUMBO_LIBRARY gumbo)
    mark_as_advanced(TAV_GUMBO_HEADERS TAV_GUMBO_LIBRARY)
    if(TAV_GUMBO_HEADERS AND TAV_GUMBO_LIBRARY)
        set(TAV_GUMBO TRUE)
        target_include_directories(tav_gumbo SYSTEM INTERFACE "${TAV_GUMBO_HEADERS}")
        target_link_libraries(tav_gumbo INTERFACE
            "-Wl,--push-state,--as-needed,${TAV_GUMBO_LIBRARY},--pop-state")
    else()
        message(STATUS "gumbo not found: HTML will be read by the plain importer")
    endif()
endif()

set(TAV_PNG_HEADERS FALSE)
if(TAV_WITH_PNG)
    find_path(TAV_PNG_HEADER_FOLDER png.h)
    mark_as_advanced(TAV_PNG_HEADER_FOLDER)
    if(TAV_PNG_HEADER_FOLDER)
        set(TAV_PNG_HEADERS "${TAV_PNG_HEADER_FOLDER}")
    else()
        message(STATUS "png.h not found: there will be no icons from files")
    endif()
endif()

if(TAV_BUILD_TESTS)
    find_package(GTest REQUIRED)
    find_package(nlohmann_json REQUIRED)
    find_package(benchmark REQUIRED)
endif()
