# Every dependency comes from Debian's packages (scripts/setup.sh installs them).
find_package(ZLIB REQUIRED)
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(SNDFILE REQUIRED IMPORTED_TARGET sndfile)
if(HALVERN_BUILD_TESTS)
    find_package(GTest REQUIRED)
endif()
if(HALVERN_BUILD_BENCH)
    find_package(benchmark REQUIRED)
endif()

# The VST 2.4 ABI: the clean-room header of Debian's fst-dev package.
find_path(FST_INCLUDE_DIR NAMES pluginterfaces/fst/fst.h)
if(NOT FST_INCLUDE_DIR)
    message(FATAL_ERROR "pluginterfaces/fst/fst.h not found: the VST 2.4 plug-in needs the ABI header "
                        "of the package fst-dev (apt-get install fst-dev), or set FST_INCLUDE_DIR to "
                        "the folder that holds pluginterfaces/.")
endif()
add_library(fst::fst INTERFACE IMPORTED)
target_include_directories(fst::fst SYSTEM INTERFACE ${FST_INCLUDE_DIR})
